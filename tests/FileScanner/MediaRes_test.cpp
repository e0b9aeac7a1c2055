#include "FileScanner/MediaRes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

namespace {

// A text as the setters want it: from plain new, of any length.
char* PlainNew(const char* text) {
  const size_t size = strlen(text) + 1;
  return static_cast<char*>(memcpy(::operator new(size), text, size));
}

TEST(MediaRes, TakesTextsOverWithoutCopyingAndReleasesThem) {
  MediaRes res;
  char* path = PlainNew("/a/b.jpg");
  res.setPszFilePath(path);
  res.setPszMajorType(PlainNew("image"));
  res.setPszMinorType(PlainNew("jpeg"));
  res.setPszTitle(new char('\0'));
  res.setPszUniqueId(PlainNew("17"));
  res.setNValid(3);
  EXPECT_EQ(res.getPszFilePath(), path);
  EXPECT_STREQ(res.getPszMajorType(), "image");
  EXPECT_STREQ(res.getPszMinorType(), "jpeg");
  EXPECT_STREQ(res.getPszTitle(), "");
  EXPECT_STREQ(res.getPszUniqueId(), "17");
  EXPECT_EQ(res.getNValid(), 3);
}

TEST(MediaRes, StartsEmpty) {
  const MediaRes res;
  EXPECT_EQ(res.getNValid(), 0);
  for (const char* text : {res.getPszFilePath(), res.getPszMajorType(), res.getPszMinorType(),
                           res.getPszTitle(), res.getPszUniqueId()})
    EXPECT_EQ(text, nullptr);
}

TEST(MediaOptionalRes, TakesTextsOverWithoutCopyingAndReleasesThem) {
  MediaOptionalRes res;
  char* album = PlainNew("album");
  res.setPszAlbum(album);
  res.setPszAuthor(PlainNew("author"));
  res.setPszCreator(PlainNew("creator"));
  res.setPszDate(PlainNew("2026-11-21"));
  EXPECT_EQ(res.getPszAlbum(), album);
  EXPECT_STREQ(res.getPszAuthor(), "author");
  EXPECT_STREQ(res.getPszCreator(), "creator");
  EXPECT_STREQ(res.getPszDate(), "2026-11-21");
}

}  // namespace
