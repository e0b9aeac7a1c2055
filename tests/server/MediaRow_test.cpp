#include "MediaRow.h"

#include <gmock/gmock.h>

namespace {

using namespace orxserve;

TEST(ParseDate, ReadsDaysAndNothingElse) {
  EXPECT_EQ(ParseDate("2026-11-21"), 20261121U);
  for (const char* text : {"", " ", "0000-00-00", "2026-13-01", "2026-00-01", "17Nov2008"})
    EXPECT_EQ(ParseDate(text), 0U) << text;
}
TEST(ParseDuration, ReadsClocksAndMilliseconds) {
  EXPECT_EQ(ParseDuration("1:02:03"), 3723000U);
  EXPECT_EQ(ParseDuration("0:00:01.5"), 1500U);
  EXPECT_EQ(ParseDuration("3723004"), 3723004U);
  for (const char* text : {"", " ", "0:00:00", "x", "1:x:2"}) EXPECT_EQ(ParseDuration(text), 0U);
}
TEST(KnownText, DropsTheDatabasesBlankAndCutsLongTexts) {
  EXPECT_EQ(KnownText(" "), "");
  EXPECT_EQ(KnownText(std::string(2000, 'a')).size(), 1024U);
}
TEST(CorrectedMimeType, CorrectsWhatTheDatabaseSimplifies) {
  EXPECT_EQ(CorrectedMimeType(Kind::kSound, "/a/V.AAC", "audio/mp4"), "audio/vnd.dlna.adts");
  EXPECT_EQ(CorrectedMimeType(Kind::kFilm, "/a/V.3GP", "video/mp4"), "video/3gpp");
  EXPECT_EQ(CorrectedMimeType(Kind::kPicture, "/a/P.KRZ", "image/jpeg"), "image/x-krz");
}
TEST(CorrectedMimeType, FillsInWhatIsMissing) {
  EXPECT_EQ(CorrectedMimeType(Kind::kFilm, "/a.b/V", " "), "video/mp4");
  EXPECT_EQ(CorrectedMimeType(Kind::kPicture, "/a/P.JPG", ""), "image/jpeg");
}
TEST(CorrectedMimeType, DropsWhatIsNoMimeType) {
  EXPECT_EQ(CorrectedMimeType(Kind::kSound, "/a/S.M4A", "audio/\"><x"), "audio/mp4");
}
TEST(CertainProfile, ClaimsOnlyWhatIsCertain) {
  EXPECT_EQ(CertainProfile("image/jpeg", "JPEG_SM"), "JPEG_SM");
  EXPECT_EQ(CertainProfile("image/jpeg", "*"), "");
  EXPECT_EQ(CertainProfile("image/x-krz", "JPEG_LRG"), "");
  EXPECT_EQ(CertainProfile("audio/vnd.dlna.adts", "AAC_ADTS_320"), "AAC_ADTS_320");
  EXPECT_EQ(CertainProfile("audio/vnd.dlna.adts", "AAC_ISO_320"), "");
  EXPECT_EQ(CertainProfile("image/jpeg", "A;DLNA.ORG_OP=00"), "");
}
TEST(CoverPlace, IsCountedFromTheEndOfItsBox) {
  const PiecePlace place = CoverPlace(1000, 116);
  EXPECT_EQ(place.offset, 916U);
  EXPECT_EQ(place.length, 100U);
  EXPECT_EQ(CoverPlace(0, 0).length, 0U);
  EXPECT_EQ(CoverPlace(10, 100).length, 0U);
}

}  // namespace
