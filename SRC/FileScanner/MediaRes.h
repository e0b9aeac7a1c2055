// Resource records that a host may keep with an item.
//
// The setters take the pointer over without copying it and without releasing the one they
// supersede.  The destructor releases the texts with plain `delete`, so they must come from plain
// `new` (`new char`, `::operator new(size)`), not from ORXMemory and not from `new[]`.
#pragma once

#include "Platform/Export.h"

class ORX_API MediaRes {
 public:
  MediaRes() = default;
  ~MediaRes();
  MediaRes(const MediaRes&) = delete;
  MediaRes& operator=(const MediaRes&) = delete;

  int getNValid() const { return NValid_; }
  void setNValid(int value) { NValid_ = value; }
  char* getPszFilePath() const { return PszFilePath_; }
  void setPszFilePath(char* text) { PszFilePath_ = text; }
  char* getPszMajorType() const { return PszMajorType_; }
  void setPszMajorType(char* text) { PszMajorType_ = text; }
  char* getPszMinorType() const { return PszMinorType_; }
  void setPszMinorType(char* text) { PszMinorType_ = text; }
  char* getPszTitle() const { return PszTitle_; }
  void setPszTitle(char* text) { PszTitle_ = text; }
  char* getPszUniqueId() const { return PszUniqueId_; }
  void setPszUniqueId(char* text) { PszUniqueId_ = text; }

 private:
  int NValid_ = 0;
  char* PszFilePath_ = nullptr;
  char* PszMajorType_ = nullptr;
  char* PszMinorType_ = nullptr;
  char* PszTitle_ = nullptr;
  char* PszUniqueId_ = nullptr;
};

class ORX_API MediaOptionalRes {
 public:
  MediaOptionalRes() = default;
  ~MediaOptionalRes();
  MediaOptionalRes(const MediaOptionalRes&) = delete;
  MediaOptionalRes& operator=(const MediaOptionalRes&) = delete;

  char* getPszAlbum() const { return PszAlbum_; }
  void setPszAlbum(char* text) { PszAlbum_ = text; }
  char* getPszAuthor() const { return PszAuthor_; }
  void setPszAuthor(char* text) { PszAuthor_ = text; }
  char* getPszCreator() const { return PszCreator_; }
  void setPszCreator(char* text) { PszCreator_ = text; }
  char* getPszDate() const { return PszDate_; }
  void setPszDate(char* text) { PszDate_ = text; }

 private:
  char* PszAlbum_ = nullptr;
  char* PszAuthor_ = nullptr;
  char* PszCreator_ = nullptr;
  char* PszDate_ = nullptr;
};
