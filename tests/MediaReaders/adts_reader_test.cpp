#include <gtest/gtest.h>

#include <string>

#include "support/Mp4Builder.h"
#include "support/Mp4Reading.h"

namespace {

using namespace orx_test;

int Read(const std::string& content, mp4_metadata_t* meta) {
  const OpenedFile file(content);
  return aac_adts_get_metadata(file.get(), static_cast<long long>(content.size()), meta);
}

TEST(AdtsReader, TakesSamplingRateAndChannels) {
  mp4_metadata_t meta = {};
  EXPECT_EQ(Read(Adts(1, 4, 2), &meta), 1);
  EXPECT_EQ(meta.AudioType, 20);
  EXPECT_EQ(meta.SampleRate, 44100);
  EXPECT_EQ(meta.Channels, 2);
  EXPECT_EQ(meta.HasAudio, 1);
  EXPECT_EQ(meta.AudioBitrate, 0);
  EXPECT_EQ(meta.DurationText, nullptr);
}

TEST(AdtsReader, KnowsTwelveSamplingRates) {
  const int rates[] = {96000, 88200, 64000, 48000, 44100, 32000,
                       24000, 22500, 16000, 11250, 8000,  7350};
  for (unsigned index = 0; index < 16; ++index) {
    SCOPED_TRACE(index);
    mp4_metadata_t meta = {};
    EXPECT_EQ(Read(Adts(1, index, 2), &meta), index < 12 ? 1 : 0);
    EXPECT_EQ(meta.SampleRate, index < 12 ? rates[index] : 0);
    EXPECT_EQ(meta.HasAudio, index < 12 ? 1 : 0);
    EXPECT_EQ(meta.AudioType, 20);
  }
}

TEST(AdtsReader, KnowsEightChannelConfigurations) {
  for (unsigned channels = 0; channels < 8; ++channels) {
    mp4_metadata_t meta = {};
    EXPECT_EQ(Read(Adts(1, 4, channels), &meta), 1);
    EXPECT_EQ(meta.Channels, static_cast<int>(channels));
  }
}

TEST(AdtsReader, RefusesOtherProfilesThanLc) {
  for (const unsigned profile : {0u, 2u, 3u}) {
    mp4_metadata_t meta = {};
    meta.AudioType = 7;
    EXPECT_EQ(Read(Adts(profile), &meta), 0);
    EXPECT_EQ(meta.AudioType, 0);
    EXPECT_EQ(meta.HasAudio, 0);
  }
}

TEST(AdtsReader, WantsTheSyncWord) {
  mp4_metadata_t meta = {};
  EXPECT_EQ(Read(U16(0xFFE1) + U16(0x5080) + Zeros(60), &meta), 0);
  EXPECT_EQ(Read(U16(0x7FF1) + U16(0x5080) + Zeros(60), &meta), 0);
  EXPECT_EQ(Read("", &meta), 0);
  EXPECT_EQ(Read("\xFF", &meta), 0);
}

TEST(AdtsReader, CountsTheBytesThatItRead) {
  mp4_metadata_t meta = {};
  meta.BytesRead = 1000;
  EXPECT_EQ(Read(Adts(), &meta), 1);
  EXPECT_EQ(meta.BytesRead, 1050);
  mp4_metadata_t brief = {};
  EXPECT_EQ(Read(Adts().substr(0, 7), &brief), 1);
  EXPECT_EQ(brief.BytesRead, 7);
}

TEST(AdtsReader, TakesMissingBytesForZero) {
  mp4_metadata_t meta = {};
  EXPECT_EQ(Read(Adts(1, 4, 2).substr(0, 3), &meta), 1);
  EXPECT_EQ(meta.SampleRate, 44100);
  EXPECT_EQ(meta.Channels, 0);
  EXPECT_EQ(Read(Adts().substr(0, 2), &meta), 0);
}

TEST(AdtsReader, EndsWhenTheCounterIsBelowMinusOne) {
  mp4_metadata_t meta = {};
  meta.BytesRead = -52;
  EXPECT_EQ(Read(Adts(), &meta), 0);
  EXPECT_EQ(meta.BytesRead, -2);
  EXPECT_EQ(meta.AudioType, 0);
  meta.BytesRead = -51;
  EXPECT_EQ(Read(Adts(), &meta), 1);
}

TEST(AdtsReader, AnswersZeroWithoutFileOrRecord) {
  const OpenedFile file(Adts());
  mp4_metadata_t meta = {};
  EXPECT_EQ(aac_adts_get_metadata(nullptr, 64, &meta), 0);
  EXPECT_EQ(aac_adts_get_metadata(file.get(), 64, nullptr), 0);
}

}  // namespace
