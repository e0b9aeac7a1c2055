#include "MediaReaders/dlna_profiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace {

using orx::VideoProfile;

// ---- a second derivation of the keys, from the words of the names ----

using Words = std::vector<std::string>;

Words WordsOf(const std::string& name) {
  Words words;
  size_t begin = 0;
  while (begin <= name.size()) {
    const size_t end = std::min(name.find('_', begin), name.size());
    words.push_back(name.substr(begin, end - begin));
    begin = end + 1;
  }
  return words;
}

bool Has(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

int ContainerByWords(const Words& words) {
  if (Has(words, "MP4")) return 1;
  if (Has(words, "ASF")) return 5;
  if (Has(words, "3GPP")) return 6;
  return words.back() == "T" ? 3 : words.back() == "ISO" ? 4 : 2;
}

int VideoByWords(const Words& words) {
  if (words[0] == "MPEG4") {
    if (Has(words, "H263")) return 8;
    if (Has(words, "CO")) return 10;
    if (Has(words, "ASP")) return Has(words, "L5") ? 6 : Has(words, "L4") ? 7 : 5;
    if (Has(words, "L0B")) return 1;
    if (words[3] == "SP" && words[4] == "L2") return 2;
    return Has(words, "VGA") ? 4 : 3;
  }
  if (Has(words, "MP")) return Has(words, "HD") ? 11 : 12;
  if (Has(words, "L3L")) return 13;
  if (Has(words, "SD")) return 14;
  if (Has(words, "CIF30")) return words[3] == "L2" ? 16 : 15;
  if (Has(words, "CIF15")) return Has(words, "L12") ? 18 : 17;
  return Has(words, "L1B") ? 19 : 0;
}

int AudioByWords(const Words& words) {
  const bool part2 = words[0] == "MPEG4";
  const bool five = Has(words, "MULT5"), seven = Has(words, "MULT7") || Has(words, "MULT57");
  if (Has(words, "BSAC")) return five ? 19 : 18;
  if (Has(words, "LTP")) return part2 ? 6 : seven ? 17 : five ? 16 : 15;
  if (Has(words, "HEAAC") || Has(words, "HEACC")) {
    if (five) return 4;
    return words.back() == "L2" || (Has(words, "TS") && Has(words, "L2")) ? 14 : 3;
  }
  if (Has(words, "AAC") || Has(words, "ACC")) return five ? 2 : 1;
  const std::map<std::string, int> single = {{"ATRAC3plus", 5}, {"MPEG1", 7}, {"MPEG", 7},
                                             {"MPEG2", 8},      {"AC3", 9},   {"G726", 10},
                                             {"WBplus", 12}};
  for (const auto& [word, code] : single)
    if (Has(words, word)) return code;
  return Has(words, "AMR") ? 11 : -1;
}

// What the words alone do not tell: the name, which of the rows of that name, and the keys.
struct Exception {
  const char* name;
  int occurrence;
  int video, container, audio;
};
constexpr Exception kExceptions[] = {
    {"AVC_MP4_BL_L2_CIF30_AAC", 2, 15, 1, 1},
    {"AVC_MP4_BL_CIF30_HEACC_L2", 2, 15, 1, 3},
    {"AVC_MP4_BL_L12_CIF15_HEAAC", 1, 18, 1, 14},
    {"AVC_MP4_BL_L1B_QCIF15_HEACC", 1, 19, 1, 14},
};

TEST(VideoProfileTable, Has169RowsOf164Names) {
  std::set<std::string> names;
  for (const VideoProfile& row : orx::VideoProfiles()) names.insert(row.name);
  EXPECT_EQ(orx::VideoProfiles().count, 169u);
  EXPECT_EQ(names.size(), 164u);
}

TEST(VideoProfileTable, HasTheKeysThatTheWordsOfEachNameSay) {
  std::map<std::string, int> seen;
  for (const VideoProfile& row : orx::VideoProfiles()) {
    SCOPED_TRACE(row.name);
    const int occurrence = ++seen[row.name];
    const Words words = WordsOf(row.name);
    std::tuple<int, int, int> expected = {VideoByWords(words), ContainerByWords(words),
                                          AudioByWords(words)};
    for (const Exception& exception : kExceptions)
      if (exception.name == std::string(row.name) && exception.occurrence == occurrence)
        expected = {exception.video, exception.container, exception.audio};
    EXPECT_EQ(std::make_tuple(row.videoId, row.container, row.audioCode), expected);
  }
}

std::vector<std::tuple<int, int, int>> KeysOf(const std::string& name) {
  std::vector<std::tuple<int, int, int>> keys;
  for (const VideoProfile& row : orx::VideoProfiles())
    if (name == row.name) keys.emplace_back(row.videoId, row.container, row.audioCode);
  return keys;
}

using Keys = std::vector<std::tuple<int, int, int>>;

TEST(VideoProfileTable, HasTheseKeysForTheNamesThatLeaveThemOpen) {
  EXPECT_EQ(KeysOf("MPEG4_H263_MP4_P0_L10_AAC_LTP"), (Keys{{8, 1, 6}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_AAC_LTP_MULT5"), (Keys{{12, 2, 16}, {12, 2, 16}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_AAC_LTP_MULT5_T"), (Keys{{12, 3, 16}, {12, 3, 16}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_AAC_LTP_MULT5_ISO"), (Keys{{12, 4, 16}, {12, 4, 16}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_HEAAC_L2_MULT5"), (Keys{{12, 2, 4}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_HEAAC_L2_MULT5_T"), (Keys{{12, 3, 4}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_HEAAC_L2_MULT5_ISO"), (Keys{{12, 4, 4}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_HEAAC_L2_BSAC"), (Keys{{12, 2, 18}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_HEAAC_L2_BSAC_T"), (Keys{{12, 3, 18}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_HEAAC_L2_BSAC_ISO"), (Keys{{12, 4, 18}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_AAC_LTP_MULT57"), (Keys{{12, 2, 17}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_SD_AAC_LTP_MULT7_T"), (Keys{{12, 3, 17}}));
  EXPECT_EQ(KeysOf("AVC_MP4_BL_L3L_SD_HEAAC"), (Keys{{13, 1, 3}}));
  EXPECT_EQ(KeysOf("AVC_MP4_BL_CIF15_HEAAC"), (Keys{{17, 1, 3}}));
  EXPECT_EQ(KeysOf("AVC_3GPP_BL_QCIF15_HEAAC"), (Keys{{0, 6, 3}}));
  EXPECT_EQ(KeysOf("AVC_MP4_BL_L2_CIF30_AAC"), (Keys{{16, 1, 1}, {15, 1, 1}}));
  EXPECT_EQ(KeysOf("AVC_MP4_BL_CIF30_HEACC_L2"), (Keys{{15, 1, 14}, {15, 1, 3}}));
  EXPECT_EQ(KeysOf("AVC_MP4_BL_L12_CIF15_HEACC"), (Keys{{18, 1, 3}}));
}

TEST(VideoProfileTable, HasTheseTellingRows) {
  EXPECT_EQ(KeysOf("AVC_MP4_BL_CIF15_AAC_520"), (Keys{{17, 1, 1}}));
  EXPECT_EQ(KeysOf("AVC_MP4_BL_CIF15_AAC"), (Keys{{17, 1, 1}}));
  EXPECT_EQ(KeysOf("AVC_MP4_BL_L3_SD_ACC"), (Keys{{14, 1, 1}}));
  EXPECT_EQ(KeysOf("AVC_MP4_BL_L12_CIF15_HEAAC"), (Keys{{18, 1, 14}}));
  EXPECT_EQ(KeysOf("AVC_MP4_BL_L1B_QCIF15_HEACC"), (Keys{{19, 1, 14}}));
  EXPECT_EQ(KeysOf("AVC_3GPP_BL_QCIF15_AAC"), (Keys{{0, 6, 1}}));
  EXPECT_EQ(KeysOf("AVC_MP4_MP_SD_AAC_MULT5"), (Keys{{12, 1, 2}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_HD_AAC_MULT5"), (Keys{{11, 2, 2}}));
  EXPECT_EQ(KeysOf("AVC_TS_BL_CIF30_AAC_940_T"), (Keys{{15, 3, 1}}));
  EXPECT_EQ(KeysOf("AVC_TS_MP_HD_MPEG_L3_ISO"), (Keys{{11, 4, 7}}));
  EXPECT_EQ(KeysOf("MPEG4_P2_3GPP_SP_L0B_AMR"), (Keys{{1, 6, 11}}));
  EXPECT_EQ(KeysOf("MPEG4_H263_3GPP_P0_L10_AMR_WBplus"), (Keys{{8, 6, 12}}));
}

TEST(VideoProfileTable, BeginsAndEndsInItsOrder) {
  const auto table = orx::VideoProfiles();
  EXPECT_STREQ(table.rows[0].name, "MPEG4_P2_3GPP_SP_L0B_AAC");
  EXPECT_STREQ(table.rows[54].name, "AVC_TS_MP_HD_AAC_MULT5");
  EXPECT_STREQ(table.rows[168].name, "AVC_3GPP_BL_CIF30_AMR_WBplus");
}

// ---- the look-ups ----

std::string FindVideo(int video, int container, int audio) {
  const char* name = orx::FindVideoProfile({video, audio, container, 0});
  return name == nullptr ? "" : name;
}

TEST(FindVideoProfile, FindsEveryRowByItsKeysUnlessAnEarlierOneHasThem) {
  std::map<std::tuple<int, int, int>, std::string> first;
  for (const VideoProfile& row : orx::VideoProfiles())
    first.emplace(std::make_tuple(row.videoId, row.container, row.audioCode), row.name);
  for (const auto& [keys, name] : first) {
    const auto [video, container, audio] = keys;
    if (video == 14 || video == 16 || video == 18) continue;  // these take other rows as well
    EXPECT_EQ(FindVideo(video, container, audio), name);
  }
}

TEST(FindVideoProfile, TakesTheFirstOfTwoRows) {
  EXPECT_EQ(FindVideo(17, 1, 1), "AVC_MP4_BL_CIF15_AAC_520");
  EXPECT_EQ(FindVideo(17, 1, 15), "AVC_MP4_BL_CIF15_AAC_LTP_520");
}

TEST(FindVideoProfile, TakesRowsOfTheClassBelowForThreeClasses) {
  EXPECT_EQ(FindVideo(14, 1, 1), "AVC_MP4_BL_L3_SD_ACC");  // stands before that of class 13
  EXPECT_EQ(FindVideo(14, 1, 3), "AVC_MP4_BL_L3L_SD_HEAAC");
  EXPECT_EQ(FindVideo(16, 1, 1), "AVC_MP4_BL_L2_CIF30_AAC");
  EXPECT_EQ(FindVideo(16, 1, 2), "AVC_MP4_BL_CIF30_AAC_MULT5");
  EXPECT_EQ(FindVideo(16, 1, 3), "AVC_MP4_BL_CIF30_HEACC_L2");
  EXPECT_EQ(FindVideo(16, 2, 9), "AVC_TS_BL_CIF30_AC3");
  EXPECT_EQ(FindVideo(18, 1, 1), "AVC_MP4_BL_CIF15_AAC_520");
  EXPECT_EQ(FindVideo(18, 1, 3), "AVC_MP4_BL_CIF15_HEAAC");
  EXPECT_EQ(FindVideo(18, 1, 14), "AVC_MP4_BL_L12_CIF15_HEAAC");
}

TEST(FindVideoProfile, TakesNoRowOfTheClassBelowForOthers) {
  EXPECT_EQ(FindVideo(19, 1, 1), "");
  EXPECT_EQ(FindVideo(12, 2, 2), "");
  EXPECT_EQ(FindVideo(13, 1, 18), "");
}

TEST(FindVideoProfile, FindsNothingForOtherKeys) {
  EXPECT_EQ(FindVideo(11, 1, 2), "");  // no HD in MP4
  EXPECT_EQ(FindVideo(0, 1, 1), "");
  EXPECT_EQ(FindVideo(17, 0, 1), "");
  EXPECT_EQ(FindVideo(17, 1, 13), "");
  EXPECT_EQ(FindVideo(9, 1, 1), "");
  EXPECT_EQ(FindVideo(-1, -1, -1), "");
}

TEST(FindAudioProfile, FindsEachOfTheNineteenRows) {
  const char* names[] = {
      "AAC_ISO",           "AAC_ISO_320",       "AAC_ADTS",      "AAC_ADTS_320",
      "AAC_MULT5_ISO",     "AAC_MULT5_ADTS",    "HEAAC_L2_ISO",  "HEAAC_L2_ISO_320",
      "HEAAC_L2_ADTS",     "HEAAC_L2_ADTS_320", "HEAAC_L3_ISO",  "HEAAC_L3_ADTS",
      "HEAAC_MULT5_ISO",   "HEAAC_MULT5_ADTS",  "AAC_LTP_ISO",   "AAC_LTP_MULT5_ISO",
      "AAC_LTP_MULT7_ISO", "BSAC_ISO",          "BSAC_MULT5_ISO"};
  ASSERT_EQ(orx::AudioProfiles().count, 19u);
  for (int id = 1; id <= 19; ++id) {
    EXPECT_STREQ(orx::FindAudioProfile({0, 0, 0, id}), names[id - 1]);
    EXPECT_EQ(orx::AudioProfiles().rows[id - 1].id, id);
  }
}

TEST(FindAudioProfile, FindsNothingForOtherIds) {
  for (const int id : {0, -1, 20, 21, INT_MAX})
    EXPECT_EQ(orx::FindAudioProfile({0, 0, 0, id}), nullptr);
}

// ---- confirming video ----

struct Confirmed {
  int result, videoId;
};
Confirmed Baseline(double level, double frameRate = 30, int width = 320, int height = 240) {
  mp4_metadata_t meta = {};
  meta.VideoCodec = 2;
  meta.AvcProfile = 6;
  meta.AvcLevel = level;
  meta.FrameRate = frameRate;
  meta.Width = width;
  meta.Height = height;
  meta.VideoId = 99;
  const int result = mp4_confirm_mpeg4_video(&meta);
  return {result, meta.VideoId};
}
Confirmed Main(int bitrate) {
  mp4_metadata_t meta = {};
  meta.VideoCodec = 2;
  meta.AvcProfile = 5;
  meta.AvcLevel = 3.1;
  meta.VideoBitrate = bitrate;
  meta.VideoId = 99;
  const int result = mp4_confirm_mpeg4_video(&meta);
  return {result, meta.VideoId};
}

TEST(ConfirmVideo, GivesBaselineItsClassByLevel) {
  const struct {
    double level;
    int videoId;
  } rows[] = {{0.0, 17}, {0.9, 17}, {1.0, 17}, {1.1, 17}, {1.2, 16}, {1.3, 15},
              {1.9, 15}, {2.0, 16}, {2.1, 13}, {2.2, 13}, {2.9, 13}, {3.0, 14}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.level);
    EXPECT_EQ(Baseline(row.level).videoId, row.videoId);
    EXPECT_EQ(Baseline(row.level).result, 0);
  }
}

TEST(ConfirmVideo, GivesEveryLevelThatTheReaderTakesAClass) {
  const std::map<int, int> classes = {{10, 17}, {11, 17}, {12, 16}, {13, 15}, {20, 16},
                                      {21, 13}, {22, 13}, {30, 14}, {31, 0},  {32, 0},
                                      {40, 0},  {41, 0},  {42, 0},  {50, 0},  {51, 0}};
  for (const auto& [idc, videoId] : classes) {
    SCOPED_TRACE(idc);
    EXPECT_EQ(Baseline(idc / 10.0).videoId, videoId);
  }
}

TEST(ConfirmVideo, GivesTheSmallestPictureItsOwnClass) {
  EXPECT_EQ(Baseline(1.0, 30, 176, 144).videoId, 19);
  EXPECT_EQ(Baseline(1.1, 30, 176, 144).videoId, 19);
  EXPECT_EQ(Baseline(1.0, 30, 176, 145).videoId, 17);
  EXPECT_EQ(Baseline(1.0, 30, 175, 144).videoId, 17);
  EXPECT_EQ(Baseline(1.0, 30, 144, 176).videoId, 17);
  EXPECT_EQ(Baseline(1.3, 30, 176, 144).videoId, 15);
}

TEST(ConfirmVideo, TellsSlowFilmsOfTwoLevelsByTheirFrameRate) {
  for (const double level : {1.2, 2.0}) {
    EXPECT_EQ(Baseline(level, 14.99).videoId, 18);
    EXPECT_EQ(Baseline(level, 0.0).videoId, 18);
    EXPECT_EQ(Baseline(level, 15.0).videoId, 16);
    EXPECT_EQ(Baseline(level, 30.0).videoId, 16);
  }
}

TEST(ConfirmVideo, RefusesBaselineAboveLevelThreeAndBelowZero) {
  for (const double level : {3.1, 4.0, 5.1, -0.1}) {
    EXPECT_EQ(Baseline(level).result, -1);
    EXPECT_EQ(Baseline(level).videoId, 0);
  }
}

TEST(ConfirmVideo, GivesMainItsClassByBitRate) {
  EXPECT_EQ(Main(10001000).videoId, 11);
  EXPECT_EQ(Main(10000999).videoId, 12);
  EXPECT_EQ(Main(1000).videoId, 12);
  EXPECT_EQ(Main(999).videoId, 0);
  EXPECT_EQ(Main(0).videoId, 0);
  EXPECT_EQ(Main(INT_MAX).videoId, 11);
  EXPECT_EQ(Main(999).result, 0);
}

TEST(ConfirmVideo, RefusesOtherProfilesAndCodecs) {
  mp4_metadata_t meta = {};
  meta.VideoCodec = 2;
  meta.VideoId = 99;
  EXPECT_EQ(mp4_confirm_mpeg4_video(&meta), -1);
  EXPECT_EQ(meta.VideoId, 0);
  meta.VideoCodec = 1;
  meta.AvcProfile = 6;
  meta.AvcLevel = 1.0;
  meta.VideoId = 99;
  EXPECT_EQ(mp4_confirm_mpeg4_video(&meta), -1);
  EXPECT_EQ(meta.VideoId, 0);
  EXPECT_EQ(mp4_confirm_mpeg4_video(nullptr), -1);
}

// ---- confirming sound ----

using Confirm = int (*)(mp4_metadata_t*);
std::pair<int, int> Sound(Confirm confirm, int type, int channels, int bitrate = 128000) {
  mp4_metadata_t meta = {};
  meta.AudioType = type;
  meta.Channels = channels;
  meta.AudioBitrate = bitrate;
  EXPECT_EQ(confirm(&meta), 0);
  return {meta.TableAudioCode, meta.AudioProfileId};
}
std::pair<int, int> InMp4(int type, int channels, int bitrate = 128000) {
  return Sound(mp4_confirm_mpeg4_audio, type, channels, bitrate);
}
std::pair<int, int> InAdts(int type, int channels, int bitrate = 128000) {
  return Sound(mp4_confirm_mpeg2_audio, type, channels, bitrate);
}
using Codes = std::pair<int, int>;

TEST(ConfirmMpeg4Audio, TakesUnknownSoundForAac) {
  EXPECT_EQ(InMp4(0, 2), Codes(1, 2));
  EXPECT_EQ(InMp4(0, 6, 500000), Codes(1, 2));
}

TEST(ConfirmMpeg4Audio, GivesAacLcTheNameWith320UpToThatBitRate) {
  EXPECT_EQ(InMp4(1, 2, 0), Codes(1, 2));
  EXPECT_EQ(InMp4(1, 2, 320999), Codes(1, 2));
  EXPECT_EQ(InMp4(1, 2, 321000), Codes(1, 1));
  EXPECT_EQ(InMp4(1, 0, 321000), Codes(1, 1));
}

TEST(ConfirmMpeg4Audio, TellsAacOfMoreThanTwoChannels) {
  EXPECT_EQ(InMp4(1, 3), Codes(2, 5));
  EXPECT_EQ(InMp4(1, 6, 500000), Codes(2, 5));
  EXPECT_EQ(InMp4(4, 2), Codes(2, 5));
  EXPECT_EQ(InMp4(4, 6, 500000), Codes(2, 5));
}

TEST(ConfirmMpeg4Audio, TellsHeAacOfThreeChannelsAndMore) {
  EXPECT_EQ(InMp4(3, 2, 500000), Codes(3, 7));
  EXPECT_EQ(InMp4(3, 3), Codes(4, 13));
  EXPECT_EQ(InMp4(3, 8), Codes(4, 13));
}

TEST(ConfirmMpeg4Audio, TellsThreeKindsOfAacLtp) {
  EXPECT_EQ(InMp4(15, 0), Codes(15, 15));
  EXPECT_EQ(InMp4(15, 2), Codes(15, 15));
  EXPECT_EQ(InMp4(15, 3), Codes(16, 16));
  EXPECT_EQ(InMp4(15, 6), Codes(16, 16));
  EXPECT_EQ(InMp4(15, 7), Codes(17, 17));
  EXPECT_EQ(InMp4(15, 8), Codes(17, 17));
}

TEST(ConfirmMpeg4Audio, TellsBsacOfThreeChannelsAndMore) {
  EXPECT_EQ(InMp4(18, 2), Codes(18, 18));
  EXPECT_EQ(InMp4(18, 3), Codes(19, 19));
}

TEST(ConfirmMpeg4Audio, RefusesOtherKindsAndNull) {
  for (const int type : {2, 5, 20, 21, -1}) {
    mp4_metadata_t meta = {};
    meta.AudioType = type;
    EXPECT_EQ(mp4_confirm_mpeg4_audio(&meta), -1);
    EXPECT_EQ(meta.TableAudioCode, 0);
    EXPECT_EQ(meta.AudioProfileId, 0);
  }
  EXPECT_EQ(mp4_confirm_mpeg4_audio(nullptr), -1);
}

TEST(ConfirmMpeg2Audio, GivesAacTheNameWith320UpToThatBitRate) {
  EXPECT_EQ(InAdts(20, 2, 0), Codes(20, 4));
  EXPECT_EQ(InAdts(20, 2, 320999), Codes(20, 4));
  EXPECT_EQ(InAdts(20, 2, 321000), Codes(20, 3));
}

TEST(ConfirmMpeg2Audio, GivesHeAacTheNameWith320AboveThatBitRate) {
  EXPECT_EQ(InAdts(21, 2, 0), Codes(21, 9));
  EXPECT_EQ(InAdts(21, 2, 320999), Codes(21, 9));
  EXPECT_EQ(InAdts(21, 2, 321000), Codes(21, 10));
}

TEST(ConfirmMpeg2Audio, TellsSoundOfThreeChannelsAndMore) {
  EXPECT_EQ(InAdts(20, 3), Codes(20, 6));
  EXPECT_EQ(InAdts(20, 7, 500000), Codes(20, 6));
  EXPECT_EQ(InAdts(21, 3), Codes(21, 14));
  EXPECT_EQ(InAdts(21, 7, 500000), Codes(21, 14));
}

TEST(ConfirmMpeg2Audio, TakesUnknownSoundForAac) { EXPECT_EQ(InAdts(0, 6), Codes(1, 2)); }

TEST(ConfirmMpeg2Audio, RefusesOtherKindsAndNull) {
  for (const int type : {1, 3, 18, 22}) {
    mp4_metadata_t meta = {};
    meta.AudioType = type;
    EXPECT_EQ(mp4_confirm_mpeg2_audio(&meta), -1);
    EXPECT_EQ(meta.AudioProfileId, 0);
  }
  EXPECT_EQ(mp4_confirm_mpeg2_audio(nullptr), -1);
}

}  // namespace
