#include "SheetThumbnails.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TempDir.h"

namespace {

using orxscan::kLargestPage;
using orxscan::kLargestThumbnail;
using orxscan::Mark;
using orxscan::SheetFolders;
using orxscan::SheetItem;
using orxscan::SheetThumbnails;

constexpr long long kSmallestThumbnail = 6;  // bytes that tell a picture from anything else

class Thumbnails : public testing::Test {
 protected:
  Thumbnails() {
    dir_.Write("large.jpg", std::string("\xFF\xD8\xFF\xE0\0\x10", 6));
    std::filesystem::resize_file(dir_.Path("large.jpg"), 2 * kLargestThumbnail);
  }
  SheetItem Item(long long length) const {
    SheetItem item;
    item.path = dir_.Path("large.jpg");
    item.thumbnail.length = length;
    return item;
  }
  // With as many of the largest thumbnails as a page holds.
  static void Fill(SheetThumbnails* thumbnails, const SheetItem& largest) {
    for (long long bytes = 0; bytes < kLargestPage; bytes += kLargestThumbnail) {
      SheetItem item = largest;
      ASSERT_TRUE(thumbnails->Examine(&item));
      ASSERT_TRUE(item.marks.empty());
    }
  }

  const orx_test::TempDir dir_;
};

TEST_F(Thumbnails, ArePutIntoAPageUpToItsLimit) {
  SheetThumbnails thumbnails("", "", SheetFolders::Anywhere());
  Fill(&thumbnails, Item(kLargestThumbnail));
  EXPECT_EQ(thumbnails.bytes(), kLargestPage);
  SheetItem another = Item(kSmallestThumbnail);
  EXPECT_FALSE(thumbnails.Examine(&another));
  EXPECT_EQ(another.marks, std::vector<Mark>{Mark::kThumbnailLeftOut});
  EXPECT_EQ(thumbnails.bytes(), kLargestPage);
}

TEST_F(Thumbnails, FillThePageToTheLastByte) {
  SheetThumbnails thumbnails("", "", SheetFolders::Anywhere());
  SheetItem first = Item(kLargestThumbnail - kSmallestThumbnail);
  ASSERT_TRUE(thumbnails.Examine(&first));
  for (long long count = 1; count < kLargestPage / kLargestThumbnail; ++count) {
    SheetItem item = Item(kLargestThumbnail);
    ASSERT_TRUE(thumbnails.Examine(&item));
  }
  SheetItem large = Item(kSmallestThumbnail + 1);
  EXPECT_FALSE(thumbnails.Examine(&large));
  SheetItem last = Item(kSmallestThumbnail);
  EXPECT_TRUE(thumbnails.Examine(&last));
  EXPECT_EQ(thumbnails.bytes(), kLargestPage);
}

TEST_F(Thumbnails, LongerThanTheLimitAreNotRead) {
  SheetThumbnails thumbnails("", "", SheetFolders::Anywhere());
  SheetItem item = Item(kLargestThumbnail + 1);
  EXPECT_FALSE(thumbnails.Examine(&item));
  EXPECT_EQ(item.marks, std::vector<Mark>{Mark::kThumbnailTooLarge});
}

}  // namespace
