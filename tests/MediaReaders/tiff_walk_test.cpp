#include "MediaReaders/tiff_walk.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/JpegBuilder.h"

namespace {

using namespace orx_test;
using orx::ByteCursor;
using orx::IfdEntry;

using Walk = void (*)(const ByteCursor&, uint64_t, const orx::IfdHandler&);

class TiffWalk : public testing::TestWithParam<TiffOrder> {
 protected:
  TiffBuilder Builder() const { return TiffBuilder(GetParam()); }

  // The entries that `walk` shows in a block of exactly these bytes.
  std::vector<IfdEntry> Entries(Walk walk, const std::string& bytes, uint64_t offset) const {
    const std::vector<uint8_t> block(bytes.begin(), bytes.end());
    const auto order =
        GetParam() == TiffOrder::kBig ? ByteCursor::Order::kBig : ByteCursor::Order::kLittle;
    std::vector<IfdEntry> entries;
    walk(ByteCursor(block.data(), block.size(), order), offset,
         [&](const IfdEntry& entry) { entries.push_back(entry); });
    return entries;
  }
  std::vector<int> TagsShown(Walk walk, const std::string& bytes, uint64_t offset = 8) const {
    std::vector<int> tags;
    for (const IfdEntry& entry : Entries(walk, bytes, offset)) tags.push_back(entry.tag);
    return tags;
  }
};

using Tags = std::vector<int>;

INSTANTIATE_TEST_SUITE_P(BothOrders, TiffWalk, testing::Values(TiffOrder::kLittle, TiffOrder::kBig),
                         [](const auto& order) {
                           return order.param == TiffOrder::kBig ? "Motorola" : "Intel";
                         });

TEST_P(TiffWalk, ShowsEveryFieldOfAnEntry) {
  const auto entries =
      Entries(orx::WalkIfd, Builder().Entry(0x8769, 4, 0x01020304, 0xF1F2F3F4).Build(), 8);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].tag, 0x8769);
  EXPECT_EQ(entries[0].type, 4);
  EXPECT_EQ(entries[0].count, 0x01020304u);
  EXPECT_EQ(entries[0].value, 0xF1F2F3F4u);
}

TEST_P(TiffWalk, ShowsTheEntriesOfOneDirectoryInOrder) {
  const std::string block = Builder().Long(3, 0).Long(1, 0).Long(2, 0).NextIfd().Long(9, 0).Build();
  EXPECT_EQ(TagsShown(orx::WalkIfd, block), (Tags{3, 1, 2}));
}

TEST_P(TiffWalk, HandlesAnEntryOnlyWhenItEndsBeforeTheEndOfTheBlock) {
  const std::string block = Builder().Long(1, 0).Long(2, 0).Long(3, 0).Build();
  // The directory stands at 8, its entries end at 22, 34 and 46.
  for (size_t size = 8; size <= block.size(); ++size) {
    SCOPED_TRACE(size);
    Tags expected;
    for (int i = 0; i < 3; ++i)
      if (size > 22u + 12u * static_cast<size_t>(i)) expected.push_back(i + 1);
    EXPECT_EQ(TagsShown(orx::WalkIfd, block.substr(0, size)), expected);
    EXPECT_EQ(TagsShown(orx::WalkIfdChain, block.substr(0, size)), expected);
  }
}

TEST_P(TiffWalk, StopsAtTheEndOfTheBlockWhenTheCountClaimsMore) {
  const std::string block = Builder().Long(1, 0).Long(2, 0).Count(0xFFFF).Build();
  EXPECT_EQ(TagsShown(orx::WalkIfd, block), (Tags{1, 2}));  // the link's four bytes follow
}

TEST_P(TiffWalk, DoesNothingWhereNoDirectoryFits) {
  const std::string block = Builder().Long(1, 0).Build();
  for (const uint64_t offset :
       {uint64_t{block.size() - 2}, uint64_t{block.size()}, uint64_t{UINT32_MAX}}) {
    EXPECT_EQ(TagsShown(orx::WalkIfd, block, offset), Tags()) << offset;
    EXPECT_EQ(TagsShown(orx::WalkIfdChain, block, offset), Tags()) << offset;
  }
}

TEST_P(TiffWalk, DoesNothingInAnEmptyBlock) {
  EXPECT_EQ(TagsShown(orx::WalkIfd, "", 0), Tags());
  EXPECT_EQ(TagsShown(orx::WalkIfdChain, "", 0), Tags());
  EXPECT_EQ(TagsShown(orx::HandleIfdEntry, "", 0), Tags());
}

TEST_P(TiffWalk, HandlesASingleEntryThatLiesInTheBlock) {
  const std::string block = Builder().Long(7, 0).Build();
  EXPECT_EQ(TagsShown(orx::HandleIfdEntry, block, 10), (Tags{7}));
  EXPECT_EQ(TagsShown(orx::HandleIfdEntry, block.substr(0, 22), 10), (Tags{7}));
  EXPECT_EQ(TagsShown(orx::HandleIfdEntry, block.substr(0, 21), 10), Tags());
}

TEST_P(TiffWalk, FollowsTheLinksOfAChain) {
  const std::string block = Builder().Long(1, 0).NextIfd().Long(2, 0).Build();
  EXPECT_EQ(TagsShown(orx::WalkIfdChain, block), (Tags{1, 2}));
}

TEST_P(TiffWalk, TakesLinksFromTheSecondDirectoryOnRelativeToTheirDirectory) {
  // Directories at 8, 26, 44 and 62.
  TiffBuilder relative = Builder();
  relative.Long(1, 0).NextIfd().Long(2, 0).Link(18).NextIfd().Long(3, 0).Link(18);
  relative.NextIfd().Long(4, 0);
  EXPECT_EQ(TagsShown(orx::WalkIfdChain, relative.Build()), (Tags{1, 2, 3, 4}));

  TiffBuilder absolute = Builder();
  absolute.Long(1, 0).NextIfd().Long(2, 0).NextIfd().Long(3, 0);
  EXPECT_EQ(TagsShown(orx::WalkIfdChain, absolute.Build()), (Tags{1, 2}));  // 26 + 44 lies outside
}

TEST_P(TiffWalk, FollowsTheLinkOfADirectoryWithoutEntries) {
  const std::string block = Builder().NextIfd().Long(2, 0).Build();
  EXPECT_EQ(TagsShown(orx::WalkIfdChain, block), (Tags{2}));
}

TEST_P(TiffWalk, StopsAtALinkThatLeavesNoRoomForADirectory) {
  // The block ends at 44; the second directory would be at 26.
  const std::string end = Builder().Long(1, 0).Link(42).NextIfd().Long(2, 0).Build();
  ASSERT_EQ(end.size(), 44u);
  EXPECT_EQ(TagsShown(orx::WalkIfdChain, end), (Tags{1}));
  const std::string far = Builder().Long(1, 0).Link(0xFFFFFFFF).NextIfd().Long(2, 0).Build();
  EXPECT_EQ(TagsShown(orx::WalkIfdChain, far), (Tags{1}));
}

TEST_P(TiffWalk, ReadsNoLinkThatIsCutOff) {
  const std::string block = Builder().Long(1, 0).Link(8).Build();
  for (size_t size = 23; size <= block.size(); ++size)
    EXPECT_EQ(TagsShown(orx::WalkIfdChain, block.substr(0, size)), (Tags{1})) << size;
}

TEST_P(TiffWalk, WalksADirectoryOnceWhenTheChainComesBackToIt) {
  const std::string self = Builder().Long(1, 0).Link(8).Build();
  EXPECT_EQ(TagsShown(orx::WalkIfdChain, self), (Tags{1}));
  const std::string pair = Builder().Long(1, 0).Link(18).NextIfd().Long(2, 0).Link(8).Build();
  EXPECT_EQ(TagsShown(orx::WalkIfdChain, pair, 26), (Tags{2, 1}));  // back, then forward to 26
}

TEST_P(TiffWalk, EndsSoonInDirectoriesThatOverlap) {
  // Thousands of directories, each of them with thousands of entries: at 8, 12, 16, ... stands the
  // count, and 12 times as far behind them the links, each leading four bytes on.
  constexpr unsigned kCount = 2730, kSize = 65535;
  std::string block(kSize, '\0');
  const auto put = [&](size_t at, const std::string& bytes) {
    if (at + bytes.size() <= kSize) block.replace(at, bytes.size(), bytes);
  };
  for (size_t at = 8; at < 30000; at += 4) put(at, Bytes16(kCount, GetParam()));
  const size_t links = 8 + 2 + 12 * kCount;
  for (size_t at = links; at < kSize; at += 4) put(at, Bytes32(4, GetParam()));
  put(links, Bytes32(12, GetParam()));
  const size_t handled = Entries(orx::WalkIfdChain, block, 8).size();
  EXPECT_GT(handled, kCount);
  EXPECT_LE(handled, kSize);
}

}  // namespace
