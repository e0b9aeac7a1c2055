// Scans of a database with damaged pages: whatever page it is, the process survives, what the
// damage allows is recorded, and the rest is said.
#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "robustness/Card.h"
#include "robustness/Observed.h"
#include "support/CardMount.h"
#include "support/JpegBuilder.h"

namespace orx_test {
namespace {

using testing::IsEmpty;
using testing::Not;

constexpr size_t kPage = 4096;
constexpr char kNewFile[] = "300PHOTO/IMGA0001.JPG";
constexpr char kNewFileInOldFolder[] = "101PHOTO/IMGA9999.JPG";

enum class Garbage { kZeros, kOnes, kRandom };

class DamagedPageTest : public CardTest, public testing::WithParamInterface<ScanKind> {
 protected:
  DamagedPageTest() : CardTest(GetParam()) {}
  void SetUp() override {
    if (card_.empty()) GTEST_SKIP() << CardMount::Problem();
    for (int folder = 100; folder < 104; ++folder)
      for (int file = 0; file < 60; ++file)
        Write(std::to_string(folder) + "PHOTO/IMGA" + std::to_string(1000 + file) + ".JPG",
              MakeJpeg());
    ScanAnew();
    whole_ = DatabaseBytes();
    Write(kNewFile, MakeJpeg());
    Write(kNewFileInOldFolder, MakeJpeg());
  }
  int ScanAnew() const {
    const auto onLine = QuietPlatform::Get().onLine;
    ForgetList();
    ResetPlatform().onLine = onLine;
    return Scan();
  }
  size_t pages() const { return whole_.size() / kPage; }
  void Damage(std::string* bytes, size_t page, Garbage garbage) {
    for (size_t i = 0; i < kPage; ++i) {
      char byte = '\0';
      if (garbage == Garbage::kOnes) byte = '\xFF';
      if (garbage == Garbage::kRandom) byte = static_cast<char>(random_());
      bytes->at(page * kPage + i) = byte;
    }
  }
  bool hasMediaTables() const { return kind_ == ScanKind::kFolder || kind_ == ScanKind::kFull; }

  // Whether a plain statement gets through, and finds something.
  static bool Works(const OtherConnection& other, const std::string& sql, bool finds = false) {
    int rows = 0;
    const int code = sqlite3_exec(
        other.get(), sql.c_str(),
        [](void* count, int, char**, char**) {
          ++*static_cast<int*>(count);
          return 0;
        },
        &rows, nullptr);
    return code == SQLITE_OK && (!finds || rows > 0);
  }
  // Whether the rows of a new file in a new folder can be written and found again, by anybody.
  bool AllowsNewRows(const std::string& bytes) const {
    RestoreDatabase(bytes);
    const OtherConnection other(db_);
    const std::string columns = "ObjectTable where FullPath = '";
    const std::string size = hasMediaTables() ? "" : ", size";
    const std::string sizeValue = hasMediaTables() ? "" : ", 5";
    for (const std::string& path :
         {std::string("300PHOTO"), std::string(kNewFile), std::string("300PHOTO/IMGA0001.JPGx")}) {
      const std::string full = InCard(path);
      if (!Works(other, "select * from " + columns + full + "'") ||
          !Works(other, "insert into ObjectTable (class, date, parentID, FullPath" + size +
                            ") values (0, '17Nov2008', '1', '" + full + "'" + sizeValue + ")") ||
          !Works(other, "select id from " + columns + full + "'", true))
        return false;
    }
    return Works(other, "select id from " + columns + card_ + "'", true) &&
           Works(other, "select FullPath from ObjectTable where parentID = '9999'") &&
           (!hasMediaTables() ||
            Works(other,
                  "insert into ImageTable (id, class, date, size, FullPath) values "
                  "('9999', 1, '2026-11-21', 5, '" +
                      InCard(kNewFile) + "')"));
  }
  bool IsRecorded(const std::string& name) const {
    const OtherConnection other(db_);
    const std::string where = " where FullPath = '" + InCard(name) + "'";
    return Works(other, "select id from ObjectTable" + where, true) &&
           (!hasMediaTables() || Works(other, "select id from ImageTable" + where, true));
  }
  // Whether the new file was recorded, which it has to be where it can.
  bool ScanDamaged(const std::string& bytes) {
    const bool allowed = AllowsNewRows(bytes);
    RestoreDatabase(bytes);
    const ObservedLog log;
    ScanAnew();
    const bool recorded = IsRecorded(kNewFile);
    EXPECT_TRUE(recorded || !allowed);
    if (!recorded || !IsRecorded(kNewFileInOldFolder)) {
      EXPECT_THAT(log.Errors(), Not(IsEmpty()));
    }
    if (HasFailure())
      for (const std::string& line : log.lines()) printf("%s", line.c_str());
    return recorded;
  }

  std::string whole_;
  std::minstd_rand random_{20261121};
};

TEST_P(DamagedPageTest, KeepsNothingOutButWhatBelongsThere) {
  size_t recorded = 0, tried = 0;
  for (const Garbage garbage : {Garbage::kOnes, Garbage::kZeros, Garbage::kRandom}) {
    if (garbage != Garbage::kOnes && !IsSoak()) break;
    for (size_t page = 0; page < pages(); ++page) {
      SCOPED_TRACE("page " + std::to_string(page + 1));
      std::string bytes = whole_;
      Damage(&bytes, page, garbage);
      recorded += ScanDamaged(bytes) ? 1 : 0;
      ++tried;
      if (HasFailure()) return;
    }
  }
  RecordProperty("recorded", static_cast<int>(recorded));
  RecordProperty("tried", static_cast<int>(tried));
  EXPECT_GT(recorded * 3, tried);
}

TEST_P(DamagedPageTest, KeepsNothingElseOutWhenThereAreTwo) {
  for (int i = 0; i < (IsSoak() ? 400 : 20); ++i) {
    const size_t first = 1 + random_() % (pages() - 1), second = 1 + random_() % (pages() - 1);
    SCOPED_TRACE("pages " + std::to_string(first + 1) + " and " + std::to_string(second + 1));
    std::string bytes = whole_;
    Damage(&bytes, first, Garbage::kOnes);
    Damage(&bytes, second, Garbage::kRandom);
    ScanDamaged(bytes);
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Scans, DamagedPageTest, testing::ValuesIn(kScanKinds),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

}  // namespace
}  // namespace orx_test
