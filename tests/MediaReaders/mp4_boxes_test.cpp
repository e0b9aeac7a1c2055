#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "support/Mp4Builder.h"
#include "support/Mp4Reading.h"

namespace {

using namespace orx_test;

// A handler, so that the reading counts as one of media.
const std::string kSound = Hdlr("soun");

std::string VideoTable(const std::string& boxes) {
  return Box("stbl", Stsd(Avc1(320, 240, 66, 10)) + boxes);
}

// ---- ftyp ----

int ContainerOf(const std::string& brand, const std::string& compatible) {
  return Mp4Reading(Ftyp(brand, compatible))->ContainerCode;
}

TEST(FileTypeBox, TellsTheContainerByTheMajorBrand) {
  EXPECT_EQ(ContainerOf("3gp4", "isom"), 4);
  EXPECT_EQ(ContainerOf("3gp6", "isom"), 6);
  EXPECT_EQ(ContainerOf("mp41", "isom"), 1);
  EXPECT_EQ(ContainerOf("m4a ", "isom"), 1);
  EXPECT_EQ(ContainerOf("mp4\xFF", "isom"), 1);  // three letters are enough
  EXPECT_EQ(ContainerOf("m4ab", "isom"), 1);
}

TEST(FileTypeBox, IgnoresTheCaseOfTheMajorBrand) {
  EXPECT_EQ(ContainerOf("3GP4", "isom"), 4);
  EXPECT_EQ(ContainerOf("3gP6", "isom"), 6);
  EXPECT_EQ(ContainerOf("MP42", "isom"), 1);
  EXPECT_EQ(ContainerOf("M4A ", "isom"), 1);
}

TEST(FileTypeBox, LeavesTheContainerUnknownForOtherBrands) {
  EXPECT_EQ(ContainerOf("isom", "iso2"), 0);
  EXPECT_EQ(ContainerOf("3gp5", "isom"), 0);
  EXPECT_EQ(ContainerOf("M4V ", "isom"), 0);
  EXPECT_EQ(ContainerOf("qt  ", "qt  "), 0);
}

TEST(FileTypeBox, TakesACompatibleBrandForMp4WhateverTheMajorBrand) {
  EXPECT_EQ(ContainerOf("isom", "isomavc1"), 1);
  EXPECT_EQ(ContainerOf("3gp4", "3gp4mp42"), 1);
  EXPECT_EQ(ContainerOf("3gp6", "avc1"), 1);
}

TEST(FileTypeBox, SearchesTheCompatibleBrandsOnlyAndInTheirCase) {
  EXPECT_EQ(ContainerOf("avc1", "isom"), 0);
  EXPECT_EQ(ContainerOf("isom", "MP42"), 0);
  EXPECT_EQ(ContainerOf("isom", "xavc1x00"), 1);  // anywhere in the text
}

TEST(FileTypeBox, KeepsTheCompatibleBrandsAsOneText) {
  EXPECT_STREQ(Mp4Reading(Ftyp("isom", "isomiso2avc1"))->CompatibleBrands, "isomiso2avc1");
  EXPECT_STREQ(Mp4Reading(Ftyp("isom", ""))->CompatibleBrands, "");
}

TEST(FileTypeBox, GivesNoBrandsWhenItIsTooShort) {
  for (const size_t size : {0u, 3u, 4u, 7u}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(Mp4Reading(Box("ftyp", std::string("mp410000").substr(0, size)))->CompatibleBrands,
              nullptr);
  }
  EXPECT_EQ(Mp4Reading(Box("ftyp", "mp4"))->ContainerCode, 0);
  EXPECT_EQ(Mp4Reading(Box("ftyp", "mp41"))->ContainerCode, 1);
}

TEST(FileTypeBox, ReplacesTheBrandsOfAnEarlierOne) {
  const Mp4Reading film(Ftyp("3gp4", "one ") + Ftyp("isom", "two "));
  EXPECT_STREQ(film->CompatibleBrands, "two ");
  EXPECT_EQ(film->ContainerCode, 4);  // "isom" says nothing of the container
}

TEST(FileTypeBox, IsRefusedWhenItIsLargerThanATextMayBe) {
  const Mp4Reading film(Ftyp("mp42", std::string(2 << 20, 'x')) + kSound);
  EXPECT_EQ(film.result(), 1);
  EXPECT_EQ(film->CompatibleBrands, nullptr);
}

// ---- mvhd, mdhd ----

TEST(MovieHeaderBox, AddsHalfAThousandUnitsBeforeTheDivision) {
  const Mp4Reading film(Mvhd(0, 1000, 10000));
  EXPECT_DOUBLE_EQ(film->VideoDurationMs, 10500.0);
  EXPECT_STREQ(film->DurationText, "0:00:10");
}

TEST(MovieHeaderBox, DividesInWholeNumbersForTheText) {
  EXPECT_STREQ(Mp4Reading(Mvhd(0, 1000, 10499))->DurationText, "0:00:10");
  EXPECT_STREQ(Mp4Reading(Mvhd(0, 1000, 10500))->DurationText, "0:00:11");
  EXPECT_STREQ(Mp4Reading(Mvhd(0, 600, 3600u * 600))->DurationText, "1:00:00");
}

TEST(MovieHeaderBox, DividesAsARealNumberForTheMilliseconds) {
  EXPECT_DOUBLE_EQ(Mp4Reading(Mvhd(0, 600, 1000))->VideoDurationMs, 1500.0 / 600 * 1000.0);
}

TEST(MovieHeaderBox, ReadsTheWideLayoutOfVersionOne) {
  const Mp4Reading film(Mvhd(1, 48000, 48000ull * 100000));
  EXPECT_DOUBLE_EQ(film->VideoDurationMs, (48000.0 * 100000 + 500) / 48000 * 1000.0);
  EXPECT_STREQ(film->DurationText, "27:46:40");
}

TEST(MovieHeaderBox, TakesAnyOtherVersionForVersionZero) {
  EXPECT_DOUBLE_EQ(Mp4Reading(Mvhd(2, 1000, 10000))->VideoDurationMs, 10500.0);
}

TEST(MovieHeaderBox, GivesTheTextOfZeroForATimeScaleOfZero) {
  const Mp4Reading film(Mvhd(0, 0, 10000));
  EXPECT_STREQ(film->DurationText, "0:00:00");
  EXPECT_EQ(film->VideoDurationMs, 0.0);
}

TEST(MovieHeaderBox, LimitsADurationThatNoNumberHolds) {
  const Mp4Reading film(Mvhd(1, 1, UINT64_MAX));
  EXPECT_DOUBLE_EQ(film->VideoDurationMs, static_cast<double>(UINT64_MAX) * 1000.0);
  ASSERT_NE(film->DurationText, nullptr);
  EXPECT_NE(film->DurationText[0], '-');
}

TEST(MovieHeaderBox, CutsADurationTooLongForTheFieldToWholeSeconds) {
  constexpr uint64_t kMost = LONG_MAX / 1000;  // seconds
  for (const uint64_t seconds : {kMost, kMost + 1, UINT64_MAX - 500}) {
    SCOPED_TRACE(seconds);
    const Mp4Reading film(Mvhd(1, 1, seconds - 500));
    ASSERT_NE(film->DurationText, nullptr);
    char expected[64];
    snprintf(expected, sizeof expected, "%llu:%02llu:%02llu",
             static_cast<unsigned long long>(kMost / 3600),
             static_cast<unsigned long long>(kMost / 60 % 60),
             static_cast<unsigned long long>(kMost % 60));
    EXPECT_STREQ(film->DurationText, expected);
  }
}

TEST(MovieHeaderBox, TakesADurationOf32BitsAsUnsigned) {
  EXPECT_STREQ(Mp4Reading(Mvhd(0, 1000000, 0xFFFFFFFFu))->DurationText, "1:11:34");
}

TEST(MovieHeaderBox, IsIgnoredWhenItEndsBeforeTheDuration) {
  const std::string narrow = U8(0) + Zeros(11) + U32(1000) + U32(5000);
  for (size_t size = 0; size < narrow.size(); ++size) {
    SCOPED_TRACE(size);
    EXPECT_EQ(Mp4Reading(Box("mvhd", narrow.substr(0, size)))->DurationText, nullptr);
  }
  EXPECT_STREQ(Mp4Reading(Box("mvhd", narrow))->DurationText, "0:00:05");
  const std::string wide = U8(1) + Zeros(19) + U32(1000) + U64(5000);
  for (size_t size = 0; size < wide.size(); ++size) {
    SCOPED_TRACE(size);
    EXPECT_EQ(Mp4Reading(Box("mvhd", wide.substr(0, size)))->DurationText, nullptr);
  }
  EXPECT_STREQ(Mp4Reading(Box("mvhd", wide))->DurationText, "0:00:05");
}

TEST(MediaHeaderBox, ReplacesTheDurationOfTheMovieHeader) {
  const Mp4Reading film(Mvhd(0, 1000, 10000) + Mdhd(1000, 20000));
  EXPECT_DOUBLE_EQ(film->VideoDurationMs, 20500.0);
  EXPECT_STREQ(film->DurationText, "0:00:20");
}

TEST(MediaHeaderBox, KeepsTheMillisecondsWhenItsTimeScaleIsZero) {
  const Mp4Reading film(Mvhd(0, 1000, 10000) + Mdhd(0, 20000));
  EXPECT_DOUBLE_EQ(film->VideoDurationMs, 10500.0);
  EXPECT_STREQ(film->DurationText, "0:00:00");
}

TEST(MediaHeaderBox, IsReadInTheLayoutOfVersionZeroWhateverItsVersion) {
  const std::string fields = U32(7) + U32(1000) + U32(1) + U32(1000) + U32(5000) + U16(0);
  EXPECT_STREQ(
      Mp4Reading(FullBox("mdhd", 1, Zeros(8) + U32(1000) + U32(9000) + fields))->DurationText,
      "0:00:09");
}

TEST(MediaHeaderBox, TellsTheLanguage) {
  const Mp4Reading film(Mdhd(1000, 10000, "eng"));
  EXPECT_EQ(std::string(film->Language, 3), "eng");
  const Mp4Reading none(Mvhd(0, 1000, 10000));
  EXPECT_EQ(std::string(none->Language, 3), Zeros(3));
}

TEST(MediaHeaderBox, GivesItsDurationAlsoWhenTheLanguageIsCutOff) {
  const Mp4Reading film(Box("mdhd", Zeros(12) + U32(1000) + U32(5000) + U8(0x15)));
  EXPECT_STREQ(film->DurationText, "0:00:05");
  EXPECT_EQ(std::string(film->Language, 3), Zeros(3));
}

TEST(MediaHeaderBox, IsIgnoredWhenItEndsBeforeTheDuration) {
  const Mp4Reading film(Box("mdhd", Zeros(12) + U32(1000) + Zeros(3)));
  EXPECT_EQ(film->DurationText, nullptr);
}

// ---- tkhd, hdlr ----

TEST(TrackHeaderBox, GivesTheSizeAsTheFileHasIt) {
  const Mp4Reading film(Tkhd(320, 240));
  EXPECT_EQ(film->TrackWidth, 320 << 16);
  EXPECT_EQ(film->TrackHeight, 240 << 16);
}

TEST(TrackHeaderBox, KeepsAnEarlierSizeWhenEitherIsZero) {
  const Mp4Reading film(Tkhd(320, 240) + Tkhd(0, 0) + Tkhd(7, 0) + Tkhd(0, 7));
  EXPECT_EQ(film->TrackWidth, 320 << 16);
  EXPECT_EQ(film->TrackHeight, 240 << 16);
}

TEST(TrackHeaderBox, IsIgnoredWhenItIsTooShort) {
  const Mp4Reading film(Box("tkhd", Zeros(76) + U32(5) + Zeros(3)));
  EXPECT_EQ(film->TrackWidth, 0);
}

TEST(HandlerBox, SaysThatThereIsVideoOrSound) {
  const Mp4Reading video(Hdlr("vide"));
  EXPECT_EQ(video->HasVideo, 1);
  EXPECT_EQ(video->HasAudio, 0);
  const Mp4Reading sound(Hdlr("soun"));
  EXPECT_EQ(sound->HasVideo, 0);
  EXPECT_EQ(sound->HasAudio, 1);
}

TEST(HandlerBox, SaysNothingForOtherHandlersAndWhenItIsTooShort) {
  const Mp4Reading film(Hdlr("hint") + Box("hdlr", Zeros(8) + "vid"));
  EXPECT_EQ(film.result(), 0);
  EXPECT_EQ(film->HasVideo, 0);
  EXPECT_EQ(film->HasAudio, 0);
}

// ---- stsd ----

TEST(SampleDescriptionBox, HandsAnAvcEntryOn) {
  const Mp4Reading film(Stsd(Avc1(320, 240, 77, 31)));
  EXPECT_EQ(film->Width, 320);
  EXPECT_EQ(film->Height, 240);
  EXPECT_EQ(film->VideoCodec, 2);
  EXPECT_EQ(film->AvcProfile, 5);
  EXPECT_DOUBLE_EQ(film->AvcLevel, 3.1);
}

TEST(SampleDescriptionBox, HandsAnAacEntryOn) {
  const Mp4Reading film(Ftyp("mp42", "mp42") + Stsd(Mp4a()));
  EXPECT_EQ(film->AudioType, 1);
  EXPECT_EQ(film->Channels, 2);
  EXPECT_EQ(film->SampleRate, 44100);
  EXPECT_EQ(film->AudioBitrate, 128500);
}

TEST(SampleDescriptionBox, LooksAtTheFirstEntryOnly) {
  const Mp4Reading film(
      FullBox("stsd", 0, U32(2) + Box("xxxx", Zeros(8)) + Avc1(320, 240, 77, 31)));
  EXPECT_EQ(film->VideoCodec, 0);
}

TEST(SampleDescriptionBox, TakesNothingFromAnAvcEntryThatIsTooShort) {
  const std::string entry = Avc1(320, 240, 66, 10).substr(8, 90);  // ends with the level
  ASSERT_EQ(Mp4Reading(Stsd(Box("avc1", entry)))->AvcProfile, 6);
  for (size_t size = 0; size < entry.size(); ++size) {
    SCOPED_TRACE(size);
    const Mp4Reading film(Stsd(Box("avc1", entry.substr(0, size))));
    EXPECT_EQ(film->VideoCodec, 0);
    EXPECT_EQ(film->Width, 0);
  }
}

TEST(SampleDescriptionBox, TellsNoAudioTypeByAnAacEntryThatIsTooShort) {
  for (const bool longForm : {true, false}) {
    AacEntry sound;
    sound.longDescriptors = longForm;
    const std::string brands = longForm ? "mp42" : "isom";
    const std::string entry = Mp4a(sound).substr(8, longForm ? 72 : 63);  // ends in the config
    ASSERT_EQ(Mp4Reading(Ftyp("isom", brands) + Stsd(Box("mp4a", entry)))->AudioType, 1);
    for (size_t size = 0; size < entry.size(); ++size) {
      SCOPED_TRACE(size);
      const Mp4Reading film(Ftyp("isom", brands) + Stsd(Box("mp4a", entry.substr(0, size))));
      EXPECT_EQ(film->AudioType, 0);
    }
  }
}

TEST(SampleDescriptionBox, TakesEachNumberThatLiesInAShortAacEntry) {
  for (const bool longForm : {true, false}) {
    AacEntry sound;
    sound.longDescriptors = longForm;
    const std::string brands = longForm ? "mp42" : "isom";
    const std::string entry = Mp4a(sound);
    const size_t bitrateEnd = 16 + (longForm ? 54 : 48) + 4;
    for (size_t size = 8; size < 75; ++size) {
      SCOPED_TRACE(size);
      const std::string shortEntry = U32(size) + entry.substr(4, size - 4);
      const Mp4Reading film(Ftyp("isom", brands) + Stsd(shortEntry));
      EXPECT_EQ(film->Channels, size >= 16 + 8 + 2 ? 2 : 0);
      EXPECT_EQ(film->SampleRate, size >= 16 + 16 + 2 ? 44100 : 0);
      EXPECT_EQ(film->AudioBitrate, size >= bitrateEnd ? 128500 : 0);
    }
  }
}

TEST(SampleDescriptionBox, TakesTheNumbersOfTheEntryOf75BytesThatPhonesWrite) {
  const std::string entry = U32(75) + Mp4a().substr(4, 71);
  const Mp4Reading film(Ftyp("mp42", "isommp42") + Stsd(entry));
  EXPECT_EQ(film->AudioType, 0);
  EXPECT_EQ(film->Channels, 2);
  EXPECT_EQ(film->SampleRate, 44100);
  EXPECT_EQ(film->AudioBitrate, 128500);
}

TEST(SampleDescriptionBox, KeepsEarlierNumbersThatAShortAacEntryDoesNotHold) {
  const std::string entry = U32(26) + Mp4a({6, 48000}).substr(4, 22);  // ends with the channels
  const Mp4Reading film(Ftyp("mp42", "mp42") + Stsd(Mp4a()) + Stsd(entry));
  EXPECT_EQ(film->Channels, 6);
  EXPECT_EQ(film->SampleRate, 44100);
  EXPECT_EQ(film->AudioBitrate, 128500);
  EXPECT_EQ(film->AudioType, 1);
}

TEST(SampleDescriptionBox, BelievesTheSmallerOfTheTwoSizesOfAnEntry) {
  const std::string entry = Avc1(320, 240, 66, 10);
  // The entry claims less than it has, then more than its box has.
  EXPECT_EQ(Mp4Reading(Stsd(U32(97) + entry.substr(4)))->VideoCodec, 0);
  EXPECT_EQ(Mp4Reading(Stsd(U32(98) + entry.substr(4)))->VideoCodec, 2);
  EXPECT_EQ(Mp4Reading(Stsd(U32(0xFFFFFFFF) + entry.substr(4)))->VideoCodec, 2);
  EXPECT_EQ(Mp4Reading(Stsd(U32(0xFFFFFFFF) + entry.substr(4, 93)) + Zeros(64))->VideoCodec, 0);
}

TEST(SampleDescriptionBox, MayBeEmpty) {
  for (size_t size = 0; size < 16; ++size) {
    SCOPED_TRACE(size);
    const Mp4Reading film(Box("stsd", Zeros(size)) + kSound);
    EXPECT_EQ(film.result(), 1);
    EXPECT_EQ(film->VideoCodec, 0);
  }
}

// ---- stsz ----

TEST(SampleSizeBox, AddsUpTheSizesOfAVideoTrack) {
  const Mp4Reading film(Mdhd(1000, 9500) + VideoTable(Stsz(0, {100, 200, 4000000000})));
  EXPECT_EQ(film->VideoFrameCount, 3);
  EXPECT_EQ(film->VideoByteTotal, INT_MAX);  // the field's end
  const Mp4Reading small(Mdhd(1000, 9500) + VideoTable(Stsz(0, {100, 200, 300})));
  EXPECT_EQ(small->VideoByteTotal, 600);
  EXPECT_EQ(small->VideoBitrate, 480);  // 600 * 8000 / 10000
}

TEST(SampleSizeBox, AddsUpMoreSizesThanFitIntoOneRead) {
  const Mp4Reading film(VideoTable(Stsz(0, std::vector<uint32_t>(10000, 7))));
  EXPECT_EQ(film->VideoFrameCount, 10000);
  EXPECT_EQ(film->VideoByteTotal, 70000);
}

TEST(SampleSizeBox, TakesACommonSizeForTheTotal) {
  const Mp4Reading film(Mdhd(1000, 9500) + VideoTable(Stsz(5000, {0, 0, 0})));
  EXPECT_EQ(film->VideoByteTotal, 5000);
  EXPECT_EQ(film->VideoFrameCount, 3);
  EXPECT_EQ(film->VideoBitrate, 4000);
}

TEST(SampleSizeBox, GivesNoBitRateWithoutADuration) {
  const Mp4Reading film(VideoTable(Stsz(0, {100, 200, 300})));
  EXPECT_EQ(film->VideoByteTotal, 600);
  EXPECT_EQ(film->VideoBitrate, 0);
}

TEST(SampleSizeBox, DividesByTheDurationAsARealNumber) {
  const Mp4Reading film(Mdhd(600, 100) + VideoTable(Stsz(0, {12345})));  // exactly 1000 ms
  EXPECT_EQ(film->VideoBitrate, 98760);
  const Mp4Reading third(Mdhd(3000, 500) + VideoTable(Stsz(0, {100})));  // 333.3 ms
  EXPECT_EQ(third->VideoBitrate, 2400);
}

TEST(SampleSizeBox, LimitsTheBitRateToTheField) {
  const Mp4Reading film(Mdhd(4000000000u, 1) + VideoTable(Stsz(0, {4000000000u})));
  EXPECT_EQ(film->VideoBitrate, INT_MAX);
}

TEST(SampleSizeBox, CountsAFilmOfMoreThanTwoGigabytesForTheBitRate) {
  const Mp4Reading film(Mdhd(1, 9500) + VideoTable(Stsz(0, {3000000000u, 3000000000u})));
  EXPECT_EQ(film->VideoByteTotal, INT_MAX);
  EXPECT_EQ(film->VideoBitrate, 4800000);  // 6e9 * 8000 / 1e7
}

TEST(SampleSizeBox, ReadsNoFurtherThanItsBox) {
  const std::string claims = U32(0) + U32(0) + U32(0xFFFFFFFF) + U32(10) + U32(20) + U16(30);
  const Mp4Reading film(VideoTable(Box("stsz", claims) + Box("free", U32(1000000))));
  EXPECT_EQ(film->VideoByteTotal, 30);
  EXPECT_EQ(film->VideoFrameCount, INT_MAX);
}

TEST(SampleSizeBox, IsIgnoredWhenItEndsBeforeTheCount) {
  const Mp4Reading film(VideoTable(Box("stsz", U32(0) + U32(9) + Zeros(3))));
  EXPECT_EQ(film->VideoByteTotal, 0);
  EXPECT_EQ(film->VideoFrameCount, 0);
}

// ---- which sample tables are video ----

int FramesOfTable(const std::string& entry) {
  return Mp4Reading(Box("stbl", Stsd(entry) + Stsz(0, {1, 1, 1})))->VideoFrameCount;
}

TEST(SampleTable, IsOneOfVideoByItsEntry) {
  EXPECT_EQ(FramesOfTable(Avc1(320, 240, 66, 10)), 3);
  EXPECT_EQ(FramesOfTable(Box("mp4v", Zeros(70))), 3);
  EXPECT_EQ(FramesOfTable(Box("s263", Zeros(70))), 3);
}

TEST(SampleTable, IsNotOneOfVideoWhenItsEntryIsSoundUnknownOrRefused) {
  EXPECT_EQ(FramesOfTable(Mp4a()), 0);
  EXPECT_EQ(FramesOfTable(Box("samr", Zeros(70))), 0);
  EXPECT_EQ(FramesOfTable(Avc1(320, 240, 100, 10)), 0);  // High profile
  EXPECT_EQ(FramesOfTable(Avc1(320, 240, 66, 14)), 0);   // no such level
}

TEST(SampleTable, StopsBeingOneOfVideoAtASoundEntry) {
  const Mp4Reading film(Box("stbl", Stsd(Avc1(320, 240, 66, 10)) + Stsd(Mp4a()) + Stsz(0, {1})));
  EXPECT_EQ(film->VideoFrameCount, 0);
}

TEST(SampleTable, DoesNotMakeTheNextOneVideo) {
  const Mp4Reading film(VideoTable(Stsz(0, {5, 5})) +
                        Box("stbl", Stsd(Box("samr", Zeros(70))) + Stsz(0, {1, 1, 1})));
  EXPECT_EQ(film->VideoFrameCount, 2);
  EXPECT_EQ(film->VideoByteTotal, 10);
}

TEST(SampleTable, IsNotOneOfVideoBeforeItsEntry) {
  const Mp4Reading film(VideoTable(Stsz(0, {5, 5})) + Box("stbl", Stsz(0, {1, 1, 1})));
  EXPECT_EQ(film->VideoFrameCount, 2);
}

TEST(SampleTable, HoldsAnEntryThatReachesBehindItButNoSizesBehindThat) {
  const std::string entry = Stsd(Avc1(320, 240, 66, 10));
  const Mp4Reading film(BoxOfSize(8 + entry.size() - 4, "stbl", entry) +
                        Box("stbl", Stsz(0, {1, 1, 1})));
  EXPECT_EQ(film->VideoCodec, 2);
  EXPECT_EQ(film->VideoFrameCount, 0);
}

TEST(SampleTable, OfTheLastVideoTrackCounts) {
  const Mp4Reading film(VideoTable(Stsz(0, {5, 5})) + VideoTable(Stsz(0, {7})));
  EXPECT_EQ(film->VideoFrameCount, 1);
  EXPECT_EQ(film->VideoByteTotal, 7);
}

// ---- boxes that hold boxes ----

class Container : public testing::TestWithParam<const char*> {};
TEST_P(Container, IsEntered) {
  EXPECT_EQ(Mp4Reading(Box(GetParam(), kSound)).result(), 1);
  EXPECT_EQ(Mp4Reading(Box(GetParam(), Box(GetParam(), kSound))).result(), 1);
}
INSTANTIATE_TEST_SUITE_P(Boxes, Container,
                         testing::Values("moov", "trak", "edts", "mdia", "minf", "dinf", "mvex",
                                         "moof", "traf", "mfra", "udta", "stbl", "ilst"));

TEST(MetaBox, IsEnteredBehindItsVersionAndFlags) {
  EXPECT_EQ(Mp4Reading(FullBox("meta", 0, kSound)).result(), 1);
  EXPECT_EQ(Mp4Reading(Box("meta", kSound)).result(), 0);
  for (size_t size = 0; size < 8; ++size)
    EXPECT_EQ(Mp4Reading(Box("meta", Zeros(size)) + kSound).result(), 1);
}

class PassedOver : public testing::TestWithParam<const char*> {};
TEST_P(PassedOver, IsNotEntered) {
  const Mp4Reading film(Box(GetParam(), kSound) + Hdlr("vide"));
  EXPECT_EQ(film->HasAudio, 0);
  EXPECT_EQ(film->HasVideo, 1);
}
INSTANTIATE_TEST_SUITE_P(Boxes, PassedOver,
                         testing::Values("mdat", "wide", "uuid", "sgpd", "data", "gnre", "cpil",
                                         "tref", "elst", "hmhd", "nmhd", "url ", "urn ", "dref",
                                         "stts", "ctts", "stsc", "stz2", "pitm", "stco", "co64",
                                         "stss", "stsh", "sbgp", "sdtp", "stdp", "padb", "subs",
                                         "mehd", "trex", "ipmc", "mfhd", "tfhd", "trun", "tfra",
                                         "mfro", "free", "skip", "cprt", "iloc", "ipro", "sinf",
                                         "frma", "imif", "schm", "schi", "iinf", "xml ", "bxml"));

}  // namespace
