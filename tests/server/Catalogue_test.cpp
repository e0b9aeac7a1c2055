#include "Catalogue.h"

#include <fstream>
#include <iterator>

#include "server/ServerTest.h"

namespace orx_test {
namespace {

using namespace orxserve;
using testing::ElementsAre;
using testing::IsEmpty;

using CatalogueTest = ServerTest;

TEST_F(CatalogueTest, HasItsViewsWhenItIsEmpty) {
  Make({});
  EXPECT_THAT(Children(kRootId),
              ElementsAre("Folders", "Pictures", "Films", "Music", "Recently added"));
  EXPECT_THAT(Children(kPicturesId), ElementsAre("By date", "By folder"));
  EXPECT_THAT(Children(kMusicId), ElementsAre("By artist", "By album"));
}
TEST_F(CatalogueTest, ShowsFoldersAsTheyAreOnTheCard) {
  Make({Picture("/card/DCIM/101ORXSC/B.JPG"), Picture("/card/DCIM/100ORXSC/A.JPG"),
        Film("/card/top.mp4")});
  EXPECT_THAT(Children(kFoldersId), ElementsAre("DCIM", "top.mp4"));
  EXPECT_THAT(Children(ContainerTitled("DCIM")->id), ElementsAre("100ORXSC", "101ORXSC"));
}
TEST_F(CatalogueTest, FollowsTheCamerasOrder) {
  Make({Picture("/card/a.JPG"), Picture("/card/A.JPG", "2026-01-01", 1000009),
        Picture("/card/Z.JPG", "2026-01-01", 1000002)});
  EXPECT_THAT(Children(kFoldersId), ElementsAre("Z.JPG", "A.JPG", "a.JPG"));
}
TEST_F(CatalogueTest, LeavesOutWhatIsNotBelowItsFolder) {
  Make({Picture("/etc/passwd"), Picture("/cardinal/A.JPG"), Picture("/card"),
        Picture("/card/A.JPG")});
  EXPECT_EQ(catalogue_->items().size(), 1U);
}
TEST_F(CatalogueTest, SortsPicturesByDayTheNewestFirst) {
  Make({Picture("/card/A.JPG", "2026-01-02"), Picture("/card/B.JPG", "2026-03-04"),
        Picture("/card/C.JPG", "")});
  EXPECT_THAT(Children(kPicturesByDateId), ElementsAre("2026-03-04", "2026-01-02", "Undated"));
}
TEST_F(CatalogueTest, GroupsPicturesByFolder) {
  Make({Picture("/card/DCIM/100ORXSC/A.JPG"), Film("/card/FILMS/B.MP4"), Picture("/card/C.JPG")});
  EXPECT_THAT(Children(kPicturesByFolderId), ElementsAre("card", "DCIM/100ORXSC"));
}
TEST_F(CatalogueTest, GroupsMusicByArtistAndAlbum) {
  Make({Sound("/card/1.M4A", "Gulls", "Coast"), Sound("/card/2.M4A", "gannets", "Coast"),
        Sound("/card/3.M4A", "", "")});
  EXPECT_THAT(Children(kMusicByArtistId), ElementsAre("Unknown artist", "gannets", "Gulls"));
  EXPECT_THAT(Children(kMusicByAlbumId), ElementsAre("Unknown album", "Coast"));
  EXPECT_THAT(Children(ContainerTitled("Coast")->id), ElementsAre("1.M4A", "2.M4A"));
}
TEST_F(CatalogueTest, ShowsTheNewestFirstAmongTheRecent) {
  Make({Picture("/card/A.JPG", "2026-05-01"), Picture("/card/B.JPG", "2026-01-01")});
  Make({Picture("/card/A.JPG", "2026-05-01"), Picture("/card/B.JPG", "2026-01-01"),
        Picture("/card/C.JPG", "2020-01-01")});
  EXPECT_THAT(Children(kRecentId), ElementsAre("C.JPG", "A.JPG", "B.JPG"));
}
TEST_F(CatalogueTest, KeepsIdsWhateverOrderTheRowsComeIn) {
  Make({Picture("/card/A.JPG"), Sound("/card/B.M4A", "x", "y")});
  const uint32_t a = IdOf("A.JPG");
  const uint32_t b = IdOf("B.M4A");
  Make({Sound("/card/B.M4A", "x", "y"), Picture("/card/A.JPG")});
  EXPECT_EQ(IdOf("A.JPG"), a);
  EXPECT_EQ(IdOf("B.M4A"), b);
}
TEST_F(CatalogueTest, KeepsIdsOverARestart) {
  Make({Picture("/card/A.JPG"), Picture("/card/F/B.JPG")});
  const uint32_t id = IdOf("B.JPG");
  const uint32_t folder = ContainerTitled("F")->id;
  const std::string uuid = state_->uuid();
  Restart();
  Make({Picture("/card/F/B.JPG")});
  EXPECT_EQ(IdOf("B.JPG"), id);
  EXPECT_EQ(ContainerTitled("F")->id, folder);
  EXPECT_EQ(state_->uuid(), uuid);
}
TEST_F(CatalogueTest, NeverGivesAnIdToAnotherFile) {
  Make({Picture("/card/A.JPG")});
  const uint32_t a = IdOf("A.JPG");
  Make({});
  Restart();
  MediaRow other = Picture("/card/A.JPG");
  other.size = 2000;
  Make({other, Picture("/card/B.JPG")});
  EXPECT_NE(IdOf("A.JPG"), a);
  EXPECT_NE(IdOf("B.JPG"), a);
}
TEST_F(CatalogueTest, KnowsAFileAgainThatComesBack) {
  Make({Picture("/card/A.JPG")});
  const uint32_t a = IdOf("A.JPG");
  Make({});
  Make({Picture("/card/A.JPG")});
  EXPECT_EQ(IdOf("A.JPG"), a);
}
TEST_F(CatalogueTest, TakesAFileInTwoRowsOnce) {
  Make({Picture("/card/A.JPG"), Picture("/card/A.JPG")});
  EXPECT_EQ(catalogue_->items().size(), 1U);
  EXPECT_THAT(Children(kFoldersId), ElementsAre("A.JPG"));
}
TEST_F(CatalogueTest, CountsRealChangesAlone) {
  const uint32_t first = Make({Picture("/card/A.JPG")})->updateId();
  EXPECT_EQ(Make({Picture("/card/A.JPG")})->updateId(), first);
  EXPECT_THAT(catalogue_->changedContainers(), IsEmpty());
  Restart();
  EXPECT_EQ(Make({Picture("/card/A.JPG")})->updateId(), first);
  EXPECT_EQ(Make({Picture("/card/A.JPG"), Picture("/card/B.JPG")})->updateId(), first + 1);
  EXPECT_EQ(Make({Picture("/card/B.JPG")})->updateId(), first + 2);
}
TEST_F(CatalogueTest, TellsWhichContainersChanged) {
  Make({Picture("/card/X/A.JPG"), Picture("/card/Y/B.JPG")});
  Make({Picture("/card/X/A.JPG"), Picture("/card/Y/B.JPG"), Film("/card/Y/C.MP4")});
  EXPECT_THAT(catalogue_->changedContainers(),
              testing::UnorderedElementsAre(kRootId, kFoldersId, kFilmsId, kRecentId,
                                            ContainerTitled("Y")->id));
  EXPECT_LT(ContainerTitled("X")->updateId, catalogue_->updateId());
}
TEST_F(CatalogueTest, LeavesTheStateAsItWasWhenItIsNotFinished) {
  Make({Picture("/card/A.JPG")});
  const uint32_t update = catalogue_->updateId();
  {
    CatalogueBuilder builder("/card", state_.get(), look_);
    builder.Add(Picture("/card/B.JPG"));
  }
  EXPECT_EQ(Make({Picture("/card/A.JPG")})->updateId(), update);
}
TEST_F(CatalogueTest, OffersOnlyPiecesThatBeginAsAPicture) {
  MediaRow row = Picture("/card/A.JPG");
  row.pieces[0] = {100, 200, 160, 120};
  row.pieces[1] = {0x1234567890, 400, 640, 480};
  look_.sound = 2;
  Make({row});
  EXPECT_EQ(catalogue_->PieceOf(*ItemNamed("A.JPG"), Piece::kThumbnail).length, 0U);
  const PiecePlace screennail = catalogue_->PieceOf(*ItemNamed("A.JPG"), Piece::kScreennail);
  EXPECT_EQ(screennail.offset, 0x1234567890U);
  EXPECT_EQ(screennail.length, 400U);
  EXPECT_EQ(screennail.width, 640U);
}
TEST_F(CatalogueTest, TakesTitlesFromNames) {
  Make({Picture("/card/a.b.JPG"), Picture("/card/none"), Picture("/card/.hidden")});
  EXPECT_EQ(catalogue_->TitleOf(*ItemNamed("a.b.JPG")), "a.b");
  EXPECT_EQ(catalogue_->TitleOf(*ItemNamed("none")), "none");
  EXPECT_EQ(catalogue_->TitleOf(*ItemNamed(".hidden")), ".hidden");
}
TEST_F(CatalogueTest, GivesPathsBackByteForByte) {
  Make({Picture("/card/\xff/b\xfe.JPG")});
  EXPECT_EQ(catalogue_->PathOf(catalogue_->items()[0]), "/card/\xff/b\xfe.JPG");
}
TEST_F(CatalogueTest, TakesLittleMemory) {
  std::vector<MediaRow> rows;
  for (int i = 0; i < 10000; ++i) {
    rows.push_back(Picture("/card/DCIM/" + std::to_string(100 + i / 1000) + "ORXSC/ORXA" +
                           std::to_string(i) + ".JPG"));
    rows.back().pieces[0] = {400, 5000, 160, 120};
    rows.back().pieces[1] = {9000, 5000, 640, 480};
  }
  Make(rows);
  EXPECT_LT(catalogue_->MemoryBytes(), 1200000U);
}
TEST_F(CatalogueTest, WritesNoStateWhereNothingChanged) {
  Make({Picture("/card/A.JPG")});
  const auto content = [&] {
    std::ifstream file(dir_.Path("state/state.db"), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  const std::string before = content();
  Make({Picture("/card/A.JPG")});
  EXPECT_EQ(content(), before);
}
TEST(StateStore, IsUsedByOneServerAlone) {
  const TempDir dir;
  const StateStore first(dir.path());
  EXPECT_THROW(StateStore second(dir.path()), std::runtime_error);
}

}  // namespace
}  // namespace orx_test
