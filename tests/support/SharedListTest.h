// The fixture of the two lists of a card's shared files, which have accessors of the same names.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "support/SharedFiles.h"

namespace orx_test {

inline int ReadSharedFiles(DataBaseMgr* list) { return list->addFileUriToTable(); }
inline int ReadSharedFiles(DcfFileInfoVector* list) { return list->addToDCFInfoVector(); }
inline int IndexCount(DataBaseMgr* list) { return list->getDBndexVectorSize(); }
inline int IndexCount(DcfFileInfoVector* list) { return list->getDcfIndexVectorSize(); }
inline int IndexAt(DataBaseMgr* list, int at) { return list->getDBIndexVectorAt(at); }
inline int IndexAt(DcfFileInfoVector* list, int at) { return list->getDcfIndexVectorAt(at); }

// What happens when the platform is asked for its n-th URI of a call, counted from 0.
struct Script {
  int cancelAt = -1;
  int modeChangeAt = -1;
  int newMode = 0;
};

template <typename SharedList>
class SharedListTest : public testing::Test {
 protected:
  SharedListTest() {
    SharedList::DestroyInstance();
    FakePlatform::Reset().onUri = OnUri;
    Forget();
  }
  ~SharedListTest() override { SharedList::DestroyInstance(); }

  static SharedList* List() { return SharedList::GetInstance(); }
  static FakePlatform& Platform() { return FakePlatform::Get(); }
  static void Forget() {
    script = Script();
    indexesRead.clear();
    Platform().log.clear();
  }
  static int Add() {
    Forget();
    return ReadSharedFiles(List());
  }
  static std::vector<int> Indexes() {
    std::vector<int> all;
    for (int i = 0; i < IndexCount(List()); ++i) all.push_back(IndexAt(List(), i));
    return all;
  }
  static std::vector<int> SortNumbers() {
    std::vector<int> all;
    for (int i = 0; i < List()->getDirFileNumVectorSize(); ++i)
      all.push_back(List()->getDirFileNumVectorAt(i));
    return all;
  }
  static std::vector<int> Types() {
    std::vector<int> all;
    for (int i = 0; i < List()->getFileTypeVectorSize(); ++i)
      all.push_back(List()->getFileTypeVectorAt(i));
    return all;
  }
  static std::vector<std::string> DirNames() {
    std::vector<std::string> all;
    for (int i = 0; i < List()->getDirNameVectorSize(); ++i)
      all.push_back(List()->getDirNameVectorAt(i));
    return all;
  }
  static std::vector<std::string> Paths() {
    std::vector<std::string> all;
    for (int i = 0; i < List()->getFilePathVectorSize(); ++i)
      all.push_back(List()->getFilePathVectorAt(i));
    return all;
  }
  static std::vector<int> Down(int from, int to) {
    std::vector<int> all;
    for (int i = from; i >= to; --i) all.push_back(i);
    return all;
  }

  inline static Script script;
  inline static std::vector<int> indexesRead;

 private:
  static void OnUri(int index) {
    const int call = static_cast<int>(indexesRead.size());
    indexesRead.push_back(index);
    if (call == script.cancelAt) List()->CancelInvalidateAllItems();
    if (call == script.modeChangeAt) Platform().sharingMode = script.newMode;
  }
};

// What both say when a walk is cancelled.
constexpr char kWalkCancelled[] =
    "[DataBaseMgr::addFileUriToTable] bInvalidateAllItemsCancelFlag is TRUE..";

// Draws for comparisons with a model.
class Draws {
 public:
  void Seed(unsigned seed) { random_.seed(seed); }
  int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
  bool OneIn(int n) { return Pick(1, n) == 1; }
  template <typename Value>
  Value OneOf(std::initializer_list<Value> values) {
    return *(values.begin() + Pick(0, static_cast<int>(values.size()) - 1));
  }

 private:
  std::mt19937 random_;
};

}  // namespace orx_test
