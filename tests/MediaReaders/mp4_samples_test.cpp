#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <string>

#include "MediaReaders/mp4_reader.h"
#include "support/Mp4Builder.h"

namespace {

using namespace orx_test;

constexpr size_t kCommonFields = 16;

// ---- avc1 ----

int CheckAvc1(unsigned profileIdc, unsigned levelIdc, mp4_metadata_t* meta) {
  const std::string entry = Avc1(640, 480, profileIdc, levelIdc);
  return mp4_check_avc1_header(entry.data() + kCommonFields, meta);
}

TEST(CheckAvc1Header, TakesSizeProfileAndLevel) {
  mp4_metadata_t meta = {};
  EXPECT_EQ(CheckAvc1(66, 13, &meta), 0);
  EXPECT_EQ(meta.Width, 640);
  EXPECT_EQ(meta.Height, 480);
  EXPECT_EQ(meta.VideoCodec, 2);
  EXPECT_EQ(meta.AvcProfile, 6);
  EXPECT_DOUBLE_EQ(meta.AvcLevel, 1.3);
}

TEST(CheckAvc1Header, AcceptsBaselineAndMain) {
  mp4_metadata_t meta = {};
  EXPECT_EQ(CheckAvc1(77, 40, &meta), 0);
  EXPECT_EQ(meta.AvcProfile, 5);
  EXPECT_DOUBLE_EQ(meta.AvcLevel, 4.0);
}

TEST(CheckAvc1Header, RefusesOtherProfilesButKeepsTheSize) {
  for (const unsigned profile : {0u, 65u, 67u, 76u, 78u, 88u, 100u, 255u}) {
    SCOPED_TRACE(profile);
    mp4_metadata_t meta = {};
    EXPECT_EQ(CheckAvc1(profile, 30, &meta), -1);
    EXPECT_EQ(meta.Width, 640);
    EXPECT_EQ(meta.VideoCodec, 2);
    EXPECT_EQ(meta.AvcProfile, 0);
    EXPECT_EQ(meta.AvcLevel, 0.0);
  }
}

TEST(CheckAvc1Header, AcceptsTheLevelsOfTheStandardOnly) {
  const std::set<unsigned> levels = {10, 11, 12, 13, 20, 21, 22, 30, 31, 32, 40, 41, 42, 50, 51};
  for (unsigned level = 0; level < 256; ++level) {
    SCOPED_TRACE(level);
    mp4_metadata_t meta = {};
    EXPECT_EQ(CheckAvc1(66, level, &meta), levels.count(level) == 1 ? 0 : -1);
    EXPECT_DOUBLE_EQ(meta.AvcLevel, level / 10.0);
  }
}

TEST(CheckAvc1Header, RefusesNull) {
  mp4_metadata_t meta = {};
  const std::string entry = Avc1(640, 480, 66, 10);
  EXPECT_EQ(mp4_check_avc1_header(nullptr, &meta), -1);
  EXPECT_EQ(mp4_check_avc1_header(entry.data(), nullptr), -1);
}

// ---- mp4a ----

struct Sound {
  int result;
  mp4_metadata_t meta;
};
Sound CheckMp4a(const AacEntry& entry) {
  Sound sound = {};
  char brands[] = "isommp42";
  if (entry.longDescriptors) sound.meta.CompatibleBrands = brands;
  const std::string bytes = Mp4a(entry);
  sound.result = mp4_check_mp4a_header(bytes.data() + kCommonFields, &sound.meta);
  sound.meta.CompatibleBrands = nullptr;
  return sound;
}
Sound CheckObjectType(unsigned objectType) {
  AacEntry entry;
  entry.objectType = objectType;
  return CheckMp4a(entry);
}
Sound CheckAudioObject(unsigned audioObject, unsigned configLength = 2) {
  AacEntry entry;
  entry.audioObject = audioObject;
  entry.configLength = configLength;
  return CheckMp4a(entry);
}

TEST(CheckMp4aHeader, ReadsTheLongDescriptorsOfFilesWithBrandMp42) {
  AacEntry entry;
  entry.channels = 6;
  entry.sampleRate = 48000;
  entry.averageBitrate = 384000;
  const Sound sound = CheckMp4a(entry);
  EXPECT_EQ(sound.result, 0);
  EXPECT_EQ(sound.meta.AudioType, 1);
  EXPECT_EQ(sound.meta.Channels, 6);
  EXPECT_EQ(sound.meta.SampleRate, 48000);
  EXPECT_EQ(sound.meta.AudioBitrate, 384500);
}

TEST(CheckMp4aHeader, ReadsTheShortDescriptorsOfOtherFiles) {
  AacEntry entry;
  entry.longDescriptors = false;
  entry.averageBitrate = 96000;
  const Sound sound = CheckMp4a(entry);
  EXPECT_EQ(sound.result, 0);
  EXPECT_EQ(sound.meta.AudioType, 1);
  EXPECT_EQ(sound.meta.AudioBitrate, 96500);
}

TEST(CheckMp4aHeader, LimitsTheBitRateToTheField) {
  for (const uint32_t bitrate : {2147483148u, 4294967295u}) {
    AacEntry entry;
    entry.averageBitrate = bitrate;
    EXPECT_EQ(CheckMp4a(entry).meta.AudioBitrate, INT_MAX);
  }
  AacEntry entry;
  entry.averageBitrate = 2147483146u;
  EXPECT_EQ(CheckMp4a(entry).meta.AudioBitrate, INT_MAX - 1);
}

TEST(CheckMp4aHeader, AcceptsThreeKindsOfMpeg4Audio) {
  for (unsigned object = 0; object < 32; ++object) {
    SCOPED_TRACE(object);
    const Sound sound = CheckAudioObject(object);
    const int type = object == 2 ? 1 : object == 4 ? 15 : object == 5 ? 3 : 0;
    EXPECT_EQ(sound.meta.AudioType, type);
    EXPECT_EQ(sound.result, type != 0 ? 0 : -1);
  }
}

TEST(CheckMp4aHeader, RefusesAConfigurationOfLessThanTwoBytes) {
  for (const unsigned length : {0u, 1u}) {
    const Sound sound = CheckAudioObject(2, length);
    EXPECT_EQ(sound.result, -1);
    EXPECT_EQ(sound.meta.AudioType, 0);
  }
  EXPECT_EQ(CheckAudioObject(2, 2).result, 0);
  EXPECT_EQ(CheckAudioObject(5, 5).result, 0);
}

TEST(CheckMp4aHeader, KeepsTheNumbersOfAnEntryThatItRefuses) {
  const Sound sound = CheckObjectType(0);
  EXPECT_EQ(sound.result, -1);
  EXPECT_EQ(sound.meta.Channels, 2);
  EXPECT_EQ(sound.meta.SampleRate, 44100);
  EXPECT_EQ(sound.meta.AudioBitrate, 128500);
}

TEST(CheckMp4aHeader, AcceptsTheListedObjectTypesAndKnowsMpeg2Aac) {
  const std::set<unsigned> listed = {102, 103, 104, 105, 107, 224, 225, 227, 228, 229, 230};
  for (unsigned type = 0; type < 256; ++type) {
    if (type == 64) continue;
    SCOPED_TRACE(type);
    const Sound sound = CheckObjectType(type);
    EXPECT_EQ(sound.result, listed.count(type) == 1 ? 0 : -1);
    EXPECT_EQ(sound.meta.AudioType, type >= 102 && type <= 104 ? 1 : 0);
  }
}

TEST(CheckMp4aHeader, RefusesNull) {
  mp4_metadata_t meta = {};
  const std::string entry = Mp4a();
  EXPECT_EQ(mp4_check_mp4a_header(nullptr, &meta), -1);
  EXPECT_EQ(mp4_check_mp4a_header(entry.data(), nullptr), -1);
}

}  // namespace
