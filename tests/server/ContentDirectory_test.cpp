#include "ContentDirectory.h"

#include "server/ServerTest.h"

namespace orx_test {
namespace {

using namespace orxserve;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ContentDirectoryTest : public ServerTest {
 protected:
  void SetUp() override {
    MediaRow harbour = Picture("/card/DCIM/Harbour.JPG", "2026-03-14", 1);
    harbour.description = "Dawn & <dusk>";
    harbour.pieces[0] = {100, 615, 160, 120};
    harbour.pieces[1] = {9000, 3233, 640, 480};
    MediaRow bay = Picture("/card/DCIM/Bay.JPG", "2026-03-15", 2);
    bay.profile = "";
    bay.pieces[0] = {100, 615, 320, 240};
    MediaRow song = Sound("/card/MUSIC/Song.M4A", "Gulls", "Coast");
    song.pieces[2] = {50, 60, 0, 0};
    Make({harbour, bay, Film("/card/DCIM/Waves titled.MP4"), song});
  }
};

TEST_F(ContentDirectoryTest, ListsChildrenWithTheirCounts) {
  const std::string answer = Browse("0");
  EXPECT_THAT(Titles(answer),
              ElementsAre("Folders", "Pictures", "Films", "Music", "Recently added"));
  EXPECT_EQ(Argument(answer, "NumberReturned"), "5");
  EXPECT_EQ(Argument(answer, "TotalMatches"), "5");
  EXPECT_EQ(Argument(answer, "UpdateID"), std::to_string(catalogue_->updateId()));
  EXPECT_THAT(answer, HasSubstr("id=\"1\" parentID=\"0\" restricted=\"1\" searchable=\"1\""
                                " childCount=\"2\""));
}
TEST_F(ContentDirectoryTest, DescribesTheRoot) {
  const std::string answer = Browse("0", "BrowseMetadata");
  EXPECT_THAT(answer, HasSubstr("id=\"0\" parentID=\"-1\""));
  EXPECT_EQ(Argument(answer, "NumberReturned"), "1");
  EXPECT_EQ(Argument(answer, "TotalMatches"), "1");
}
TEST_F(ContentDirectoryTest, OffersOriginalThenScreennailThenThumbnail) {
  const std::string answer = Browse(std::to_string(IdOf("Harbour.JPG")), "BrowseMetadata");
  const std::string id = std::to_string(IdOf("Harbour.JPG"));
  const size_t original = answer.find("http://10.0.0.1:8200/o/" + id + ".jpg");
  const size_t screennail = answer.find("/s/" + id + ".jpg");
  const size_t thumbnail = answer.rfind("/t/" + id + ".jpg");
  EXPECT_LT(original, screennail);
  EXPECT_LT(screennail, thumbnail);
  EXPECT_THAT(answer, HasSubstr("res protocolInfo=\"http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG;"
                                "DLNA.ORG_OP=01;DLNA.ORG_CI=0;DLNA.ORG_FLAGS=00F0000000000000"
                                "0000000000000000\" size=\"1000\" resolution=\"1600x1200\""));
  EXPECT_THAT(answer, HasSubstr("DLNA.ORG_PN=JPEG_TN;DLNA.ORG_OP=01;DLNA.ORG_CI=1;"));
  EXPECT_THAT(answer, HasSubstr("albumArtURI dlna:profileID=\"JPEG_TN\""));
}
TEST_F(ContentDirectoryTest, CallsOnlySmallPicturesThumbnails) {
  const std::string answer = Browse(std::to_string(IdOf("Bay.JPG")), "BrowseMetadata");
  EXPECT_THAT(answer, Not(HasSubstr("JPEG_TN")));
  EXPECT_THAT(answer, HasSubstr("DLNA.ORG_PN=JPEG_SM;DLNA.ORG_OP=01;DLNA.ORG_CI=1;"));
  EXPECT_THAT(answer, HasSubstr("http-get:*:image/jpeg:DLNA.ORG_OP=01;DLNA.ORG_CI=0;"));
}
TEST_F(ContentDirectoryTest, DescribesFilms) {
  const std::string id = std::to_string(IdOf("Waves titled.MP4"));
  const std::string answer = Browse(id, "BrowseMetadata");
  EXPECT_THAT(answer, HasSubstr("DLNA.ORG_FLAGS=01700000000000000000000000000000\" size=\"1000\""
                                " duration=\"1:02:03.004\" bitrate=\"100000\""
                                " sampleFrequency=\"48000\" nrAudioChannels=\"2\""));
  EXPECT_THAT(answer, HasSubstr("sec:CaptionInfoEx sec:type=\"srt\"&gt;http://10.0.0.1:8200/c/" +
                                id + ".srt&lt;"));
}
TEST_F(ContentDirectoryTest, DescribesSounds) {
  const std::string answer = Browse(std::to_string(IdOf("Song.M4A")), "BrowseMetadata");
  EXPECT_THAT(answer, HasSubstr("object.item.audioItem.musicTrack"));
  EXPECT_THAT(answer, HasSubstr("upnp:artist&gt;Gulls&lt;"));
  EXPECT_THAT(answer, HasSubstr("upnp:album&gt;Coast&lt;"));
  EXPECT_THAT(answer, HasSubstr("upnp:albumArtURI&gt;http://10.0.0.1:8200/a/"));
}
TEST_F(ContentDirectoryTest, EscapesTextsTwice) {
  EXPECT_THAT(Browse(std::to_string(IdOf("Harbour.JPG")), "BrowseMetadata"),
              HasSubstr("Dawn &amp;amp; &amp;lt;dusk&amp;gt;"));
}
TEST_F(ContentDirectoryTest, NamesReferencesInOtherViews) {
  const std::string id = std::to_string(IdOf("Waves titled.MP4"));
  EXPECT_THAT(Browse("5"), HasSubstr("item id=\"5$" + id + "\" parentID=\"5\" refID=\"" + id));
  const std::string answer = Browse("5$" + id, "BrowseMetadata");
  EXPECT_THAT(answer, HasSubstr("item id=\"5$" + id + "\" parentID=\"5\""));
}
TEST_F(ContentDirectoryTest, TellsOnlyWhatTheFilterNames) {
  const std::string answer = Browse("5", "BrowseDirectChildren", "dc:date,res@size");
  EXPECT_THAT(answer, HasSubstr("dc:date"));
  EXPECT_THAT(answer, HasSubstr(" size="));
  EXPECT_THAT(answer, Not(HasSubstr("duration=")));
  EXPECT_THAT(answer, Not(HasSubstr("refID=")));
  EXPECT_THAT(Browse("5", "BrowseDirectChildren", ""), Not(HasSubstr("&lt;res")));
}
TEST_F(ContentDirectoryTest, TellsPagesAndTheWholeNumber) {
  const std::string answer = Browse("0", "BrowseDirectChildren", "*", "1", "2");
  EXPECT_THAT(Titles(answer), ElementsAre("Pictures", "Films"));
  EXPECT_EQ(Argument(answer, "NumberReturned"), "2");
  EXPECT_EQ(Argument(answer, "TotalMatches"), "5");
}
TEST_F(ContentDirectoryTest, TellsNothingPastTheEnd) {
  const std::string answer = Browse("0", "BrowseDirectChildren", "*", "4000000000", "10");
  EXPECT_THAT(Titles(answer), IsEmpty());
  EXPECT_EQ(Argument(answer, "NumberReturned"), "0");
  EXPECT_EQ(Argument(answer, "TotalMatches"), "5");
}
TEST_F(ContentDirectoryTest, SortsAsAsked) {
  const std::string folder = std::to_string(ContainerTitled("DCIM")->id);
  const auto sorted = [&](const char* sort) {
    return Titles(Browse(folder, "BrowseDirectChildren", "*", "0", "0", sort));
  };
  EXPECT_THAT(sorted(""), ElementsAre("Harbour", "Bay", "Waves titled"));
  EXPECT_THAT(sorted("+dc:title"), ElementsAre("Bay", "Harbour", "Waves titled"));
  EXPECT_THAT(sorted("+upnp:class,-dc:title"), ElementsAre("Harbour", "Bay", "Waves titled"));
  EXPECT_THAT(sorted("-dc:date"), ElementsAre("Waves titled", "Bay", "Harbour"));
}
TEST_F(ContentDirectoryTest, FindsEachFileOnceBelowTheRoot) {
  EXPECT_THAT(Titles(Search("upnp:class derivedfrom \"object.item.imageItem\"")),
              ElementsAre("Harbour", "Bay"));
  EXPECT_THAT(Titles(Search("upnp:class derivedfrom \"object.item\" and @refID exists false")),
              ElementsAre("Harbour", "Bay", "Waves titled", "Song"));
}
TEST_F(ContentDirectoryTest, FindsBelowAContainerWhatStandsThere) {
  const std::string answer = Search("*", "5");
  EXPECT_THAT(Titles(answer), ElementsAre("Waves titled"));
  EXPECT_THAT(answer, HasSubstr("id=\"5$"));
}
TEST_F(ContentDirectoryTest, FindsContainers) {
  EXPECT_THAT(Titles(Search("upnp:class = \"object.container.album.musicAlbum\"")),
              ElementsAre("Coast"));
}
TEST_F(ContentDirectoryTest, AnswersErrorsByTheirNumbers) {
  EXPECT_EQ(Perform("Format", {}), "error 401");
  EXPECT_EQ(Perform("Browse", {}), "error 402");
  EXPECT_EQ(Browse("0", "BrowseAll"), "error 402");
  EXPECT_EQ(Browse("0", "BrowseDirectChildren", "*", "-1"), "error 402");
  EXPECT_EQ(Browse("0", "BrowseDirectChildren", "*", "0", "99999999999"), "error 402");
  EXPECT_EQ(Browse("0", "BrowseDirectChildren", "*", "0", "0", "dc:title"), "error 709");
  EXPECT_EQ(Browse("0", "BrowseDirectChildren", "*", "0", "0", "+dc:subject"), "error 709");
  for (const char* id : {"", "999999", "x", "00", "-1", "5$1", "5$", "$5", "0$0", "4294967297"})
    EXPECT_EQ(Browse(id), "error 701") << id;
  EXPECT_EQ(Browse(std::to_string(IdOf("Song.M4A"))), "error 710");
  EXPECT_EQ(Search("dc:title like \"x\""), "error 708");
  EXPECT_EQ(Search("*", "999999"), "error 710");
}
TEST_F(ContentDirectoryTest, TellsCapabilities) {
  EXPECT_THAT(Perform("GetSearchCapabilities", {}), HasSubstr("upnp:class"));
  EXPECT_THAT(Perform("GetSortCapabilities", {}), HasSubstr("dc:date"));
  EXPECT_EQ(Argument(Perform("GetSystemUpdateID", {}), "Id"),
            std::to_string(catalogue_->updateId()));
  EXPECT_THAT(Perform("X_GetFeatureList", {}), HasSubstr("&lt;Feature name="));
}
TEST_F(ContentDirectoryTest, WritesLongAnswersInPieces) {
  std::vector<MediaRow> rows;
  for (int i = 0; i < 3000; ++i) rows.push_back(Picture("/card/" + std::to_string(i) + ".JPG"));
  Make(rows);
  SoapAction request{kContentDirectory,
                     "Browse",
                     {{"ObjectID", "1"},
                      {"BrowseFlag", "BrowseDirectChildren"},
                      {"Filter", "*"},
                      {"StartingIndex", "0"},
                      {"RequestedCount", "0"},
                      {"SortCriteria", ""}}};
  std::unique_ptr<Answer> answer;
  ASSERT_EQ(directory_.Perform(request, "http://10.0.0.1:8200", &answer), 0);
  std::string whole;
  std::string piece;
  bool more = true;
  while (more) {
    piece.clear();
    more = answer->Write(&piece, 32768);
    EXPECT_LT(piece.size(), 40000U);
    whole += piece;
  }
  EXPECT_EQ(Titles(whole).size(), 3000U);
  EXPECT_EQ(Argument(whole, "NumberReturned"), "3000");
}
TEST_F(ContentDirectoryTest, KeepsAskedListsApart) {
  EXPECT_THAT(Titles(Search("dc:title = \"Bay\"")), ElementsAre("Bay"));
  EXPECT_THAT(Titles(Search("dc:title = \"Song\"")), ElementsAre("Song"));
  EXPECT_THAT(Titles(Search("dc:title = \"Bay\"")), ElementsAre("Bay"));
  Make({});
  EXPECT_THAT(Titles(Search("dc:title = \"Bay\"")), IsEmpty());
}

}  // namespace
}  // namespace orx_test
