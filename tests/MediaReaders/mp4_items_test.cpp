#include <gtest/gtest.h>

#include <string>

#include "support/Mp4Builder.h"
#include "support/Mp4Reading.h"

namespace {

using namespace orx_test;

TEST(MetadataItem, FillsTheTextOfItsName) {
  const Mp4Reading film(Ilst(TextItem("\251nam", "a title") + TextItem("\251ART", "an artist") +
                             TextItem("\251alb", "an album") + TextItem("\251gen", "a genre") +
                             TextItem("\251day", "2026")));
  EXPECT_STREQ(film->Title, "a title");
  EXPECT_STREQ(film->Artist, "an artist");
  EXPECT_STREQ(film->AlbumTitle, "an album");
  EXPECT_STREQ(film->Genre, "a genre");
  EXPECT_STREQ(film->Year, "2026");
}

TEST(MetadataItem, IsAbsentWhenTheFileHasNone) {
  const Mp4Reading film(SmallFilm());
  EXPECT_EQ(film->Title, nullptr);
  EXPECT_EQ(film->Artist, nullptr);
  EXPECT_EQ(film->AlbumTitle, nullptr);
  EXPECT_EQ(film->Genre, nullptr);
  EXPECT_EQ(film->Year, nullptr);
  EXPECT_EQ(film->TrackNumber, 0);
  EXPECT_EQ(film->CoverArtLength, 0);
}

TEST(MetadataItem, ReplacesAnEarlierOneOfTheSameName) {
  const Mp4Reading film(Ilst(TextItem("\251nam", "first") + TextItem("\251nam", "second")));
  EXPECT_STREQ(film->Title, "second");
}

TEST(MetadataItem, GivesUpAnEarlierTextAlsoWhenItHasNone) {
  const Mp4Reading film(Ilst(TextItem("\251nam", "first") + Box("\251nam", "")));
  EXPECT_EQ(film->Title, nullptr);
}

TEST(MetadataItem, MayHoldAnEmptyText) {
  EXPECT_STREQ(Mp4Reading(Ilst(TextItem("\251nam", "")))->Title, "");
}

TEST(MetadataItem, HasNoTextWhenItsDataIsShorterThanTypeAndLocale) {
  for (size_t size = 0; size < 8; ++size) {
    SCOPED_TRACE(size);
    const Mp4Reading film(Ilst(Box("\251nam", Box("data", Zeros(size)))));
    EXPECT_EQ(film->Title, nullptr);
  }
}

TEST(MetadataItem, FindsItsDataBehindOtherBoxes) {
  const Mp4Reading film(
      Ilst(Box("\251nam", Box("mean", "xxxx") + Box("name", "") + DataBox("title"))));
  EXPECT_STREQ(film->Title, "title");
}

TEST(MetadataItem, TakesTheFirstOfSeveralData) {
  const Mp4Reading film(
      Ilst(Box("\251nam", DataBox("one") + DataBox("two")) + TextItem("\251ART", "artist")));
  EXPECT_STREQ(film->Title, "one");
  EXPECT_STREQ(film->Artist, "artist");
}

TEST(MetadataItem, TakesDataThatReachesBehindItWholeAndGoesOnBehindThat) {
  const std::string data = DataBox("a title"), artist = TextItem("\251ART", "artist");
  const Mp4Reading film(Ilst(BoxOfSize(8 + data.size() - 3, "\251nam", data) + artist));
  EXPECT_STREQ(film->Title, "a title");
  EXPECT_STREQ(film->Artist, "artist");
}

TEST(MetadataItem, TakesNoTextThatReachesBehindTheFile) {
  const Mp4Reading film(Ilst(Box("\251nam", BoxOfSize(4000, "data", Zeros(8) + "title")) +
                             TextItem("\251ART", "artist")));
  EXPECT_EQ(film->Title, nullptr);
  EXPECT_STREQ(film->Artist, "artist");
}

TEST(MetadataItem, GoesOnBehindDataThatIsNotReadToItsEnd) {
  const std::string inside = TextItem("\251alb", "album");  // a title too long, and a long number
  const std::string title = BoxOfSize(16 + 70000 + inside.size(), "data", Zeros(8));
  const std::string track = BoxOfSize(20 + inside.size(), "data", Zeros(8) + U32(7));
  const Mp4Reading film(Ilst(Box("\251nam", title) + inside + Zeros(70000) + Box("trkn", track) +
                             inside + TextItem("\251ART", "artist")));
  EXPECT_EQ(film->TrackNumber, 7);
  EXPECT_EQ(film->AlbumTitle, nullptr);
  EXPECT_STREQ(film->Artist, "artist");
}

TEST(CoverArtItem, MayReachBehindItsItem) {
  const std::string data = DataBox(std::string(100, 'p'), 13);
  const std::string film = Ilst(BoxOfSize(8 + 20, "covr", data));
  const Mp4Reading reading(film);
  EXPECT_EQ(reading->CoverArtOffset, static_cast<int>(film.size()) - 16);
  EXPECT_EQ(reading->CoverArtLength, 116);
  EXPECT_EQ(reading->BytesRead, static_cast<long long>(film.size()));
}

TEST(MetadataItem, KeepsALongTextWhole) {
  const std::string title(60000, 't');
  EXPECT_EQ(Mp4Reading(Ilst(TextItem("\251nam", title)))->Title, title);
}

TEST(MetadataItem, RefusesATextThatNoMemoryShouldBeGivenFor) {
  const Mp4Reading film(
      Ilst(TextItem("\251nam", std::string(2 << 20, 't')) + TextItem("\251ART", "artist")));
  EXPECT_EQ(film->Title, nullptr);
  EXPECT_STREQ(film->Artist, "artist");
}

TEST(MetadataItem, EndsAtATerminatorInsideTheText) {
  const Mp4Reading film(Ilst(TextItem("\251nam", std::string("ab\0cd", 5))));
  EXPECT_STREQ(film->Title, "ab");
}

TEST(MetadataItem, CountsOnlyInsideAnItemList) {
  const Mp4Reading film(Box("udta", TextItem("\251nam", "title") +
                                        Box("trkn", DataBox(U32(5) + Zeros(4))) +
                                        Box("covr", DataBox("picture"))));
  EXPECT_EQ(film->Title, nullptr);
  EXPECT_EQ(film->TrackNumber, 0);
  EXPECT_EQ(film->CoverArtLength, 0);
}

TEST(MetadataItem, LeavesANumericGenreAndACompilationMarkUnread) {
  const Mp4Reading film(Ilst(Box("gnre", DataBox(U16(18), 0)) + Box("cpil", DataBox(U8(1), 21)) +
                             TextItem("\251nam", "title")));
  EXPECT_EQ(film->Genre, nullptr);
  EXPECT_STREQ(film->Title, "title");
}

TEST(MetadataItem, DataOutsideItemsChangesNothing) {
  const Mp4Reading film(Ilst(DataBox("stray") + TextItem("\251nam", "title")));
  EXPECT_STREQ(film->Title, "title");
  EXPECT_EQ(film->Artist, nullptr);
}

TEST(TrackNumberItem, IsTheFirstNumberOfItsData) {
  const Mp4Reading film(Ilst(Box("trkn", DataBox(U16(0) + U16(7) + U16(12) + U16(0), 0))));
  EXPECT_EQ(film->TrackNumber, 7);
}

TEST(TrackNumberItem, IsIgnoredWhenItsDataIsTooShort) {
  for (size_t size = 0; size < 4; ++size) {
    SCOPED_TRACE(size);
    const Mp4Reading film(Ilst(Box("trkn", DataBox(std::string(size, '\1'), 0))));
    EXPECT_EQ(film->TrackNumber, 0);
  }
  EXPECT_EQ(Mp4Reading(Ilst(Box("trkn", "")))->TrackNumber, 0);
}

TEST(CoverArtItem, GivesThePlaceWhereItEndsLessSixteenAndTheSizeOfItsData) {
  const std::string picture(100, 'p');
  const std::string film = Ilst(Box("covr", DataBox(picture, 13)));
  const Mp4Reading reading(film);
  EXPECT_EQ(reading->CoverArtOffset, static_cast<int>(film.size()) - 16);
  EXPECT_EQ(reading->CoverArtLength, 116);
}

TEST(CoverArtItem, IsThatOfTheFirstOfSeveralPictures) {
  const std::string second = DataBox("second");
  const std::string film = Ilst(Box("covr", DataBox("first") + second));
  const Mp4Reading reading(film);
  EXPECT_EQ(reading->CoverArtOffset, static_cast<int>(film.size() - second.size()) - 16);
  EXPECT_EQ(reading->CoverArtLength, 21);
}

TEST(CoverArtItem, IsAbsentWithoutData) {
  const Mp4Reading film(Ilst(Box("covr", "") + TextItem("\251nam", "title")));
  EXPECT_EQ(film->CoverArtOffset, 0);
  EXPECT_EQ(film->CoverArtLength, 0);
  EXPECT_STREQ(film->Title, "title");
}

}  // namespace
