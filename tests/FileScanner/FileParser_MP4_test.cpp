#include "FileScanner/FileParser_MP4.h"

#include <gtest/gtest.h>
#include <utime.h>

#include <cstring>
#include <memory>
#include <string>

#include "FileScanner/AudioMetaData.h"
#include "FileScanner/FileInfomation.h"
#include "FileScanner/FileParserFramework.h"
#include "FileScanner/VideoMetaData.h"
#include "OSAL/TextPtr.h"
#include "support/FakePlatform.h"
#include "support/Mp4Builder.h"
#include "support/TempDir.h"

namespace {

using namespace orx_test;

using RecordPtr = std::unique_ptr<MediaMetaData>;

constexpr char kCertified[] = "AVC_MP4_BL_CIF15_AAC_520";

std::string TextOf(const char* text) { return text != nullptr ? text : "(null)"; }

const VideoMetaData* AsVideo(const RecordPtr& record) {
  return dynamic_cast<const VideoMetaData*>(record.get());
}
const AudioMetaData* AsAudio(const RecordPtr& record) {
  return dynamic_cast<const AudioMetaData*>(record.get());
}

class FileParserMp4 : public testing::Test {
 protected:
  FileParserMp4() : platform_(FakePlatform::Reset()) {
    platform_.videoAttributeSucceeds = true;
    platform_.videoAttribute.nFileSize = 5000000000;
    platform_.videoAttribute.nWidth = 1920;
    platform_.videoAttribute.nHeight = 1080;
    memcpy(platform_.videoAttribute.szDate, "2026-11-21", 11);
    platform_.videoAttribute.nDuration = 61500;
    platform_.videoAttribute.dFrameRate = 29.97;
  }

  RecordPtr Parse(const std::string& path) {
    const FileInfomation file("", path.substr(path.rfind('/') + 1).c_str(), path.c_str());
    return RecordPtr(parser_.ParseFIle(&file));
  }
  RecordPtr Parse2(const std::string& path) {
    const FileInfomation file("", path.substr(path.rfind('/') + 1).c_str(), path.c_str(), 3,
                              1000001, 2);
    return RecordPtr(parser_.ParseFIle2(&file));
  }
  RecordPtr Extract(const std::string& content, const char* ext = "mp4") {
    path_ = directory_.Write("100PHOTO/IMGA0001.MP4", content);
    return RecordPtr(parser_.__ExtractMetadata(path_.c_str(), ext));
  }
  RecordPtr Extract2(const char* ext = "mp4") {
    return RecordPtr(parser_.__ExtractMetadata2("/card/IMGA0001.MP4", ext, 3, 1000001, 2));
  }
  std::string ProfileOf(const Mp4File& file) {
    return TextOf(Extract(MakeMp4(file))->GetDLNAProfile());
  }

  FakePlatform& platform_;
  TempDir directory_;
  FileParser_MP4 parser_;
  std::string path_;
};

// ---- Which files are its own ----

TEST_F(FileParserMp4, TakesFilmsAndSoundByTheirExtension) {
  for (const char* ext :
       {"m4a", "adts", "m4b", "mp4", "3gp", "aac", "ac3", "m4v", "mov", "avi", "MP4", "Mov"}) {
    SCOPED_TRACE(ext);
    const RecordPtr record = Parse(directory_.Write(std::string("a.") + ext, SmallFilm()));
    ASSERT_NE(record, nullptr);
    EXPECT_STREQ(record->GetEXT(), ext);
    const RecordPtr second = Parse2(directory_.Path(std::string("a.") + ext));
    ASSERT_NE(second, nullptr);
    EXPECT_STREQ(second->GetEXT(), ext);
  }
}

TEST_F(FileParserMp4, LeavesOtherSupportedFilesToTheNextParser) {
  for (const char* ext :
       {"jpg", "jpeg", "mp3", "wmv", "wma", "wav", "mpeg", "mpg", "mpo", "krz", "JPG"}) {
    SCOPED_TRACE(ext);
    const std::string path = directory_.Write(std::string("a.") + ext, SmallFilm());
    EXPECT_EQ(Parse(path), nullptr);
    EXPECT_EQ(Parse2(path), nullptr);
  }
  EXPECT_TRUE(platform_.log.empty());
}

TEST_F(FileParserMp4, TakesAFragmentOfAListedExtensionForListed) {
  const RecordPtr record = Parse(directory_.Write("a.4", SmallFilm()));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(record->GetEXT(), "4");
  EXPECT_NE(Parse2(directory_.Path("a.4")), nullptr);
  EXPECT_NE(Parse(directory_.Write("ends.", SmallFilm())), nullptr);  // the empty extension
}

TEST_F(FileParserMp4, TriesAFileWithoutExtension) {
  const RecordPtr record = Parse(directory_.Write("film", SmallFilm()));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->GetEXT(), nullptr);
  EXPECT_STREQ(record->GetMimeType(), "video/mp4");
}

TEST_F(FileParserMp4, TriesAFileWithAnUnknownExtensionAsOneWithoutAny) {
  const RecordPtr record = Parse(directory_.Write("film.xyz", SmallFilm()));
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(record->GetEXT(), "xyz");
  EXPECT_STREQ(record->GetMimeType(), "video/mp4");
}

TEST_F(FileParserMp4, RefusesNoAndUnknownExtensionsOnThePlatformPath) {
  const char kMessage[] = "[ParseFIle2]!!!! Error !!!! Extension is NULL ";
  testing::internal::CaptureStderr();
  EXPECT_EQ(Parse2("/card/film"), nullptr);
  EXPECT_EQ(platform_.CountLogged(kMessage), 1);
  EXPECT_EQ(Parse2("/card/film.xyz"), nullptr);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(platform_.CountLogged(kMessage), 2);
  ASSERT_NE(platform_.Find(kMessage), nullptr);
  EXPECT_EQ(platform_.Find(kMessage)->priority, 6);
  EXPECT_TRUE(platform_.videoPaths.empty());
}

TEST_F(FileParserMp4, DeclinesNull) {
  EXPECT_EQ(parser_.ParseFIle(nullptr), nullptr);
  EXPECT_EQ(parser_.ParseFIle2(nullptr), nullptr);
  EXPECT_EQ(parser_.__ExtractMetadata(nullptr, "mp4"), nullptr);
  EXPECT_EQ(parser_.__ExtractMetadata2(nullptr, "mp4", 1, 2, 3), nullptr);
  const FileInfomation nameless(nullptr, "film.mp4", nullptr);
  EXPECT_EQ(parser_.ParseFIle(&nameless), nullptr);
  EXPECT_EQ(parser_.ParseFIle2(&nameless), nullptr);
  EXPECT_TRUE(platform_.log.empty());
}

TEST_F(FileParserMp4, AnswersFirstInTheChain) {
  FileParserFramework framework;
  const std::string path = directory_.Write("film.mp4", SmallFilm());
  const FileInfomation file("", "film.mp4", path.c_str());
  const RecordPtr record(framework.HandleFile(&file));
  EXPECT_NE(AsVideo(record), nullptr);
}

// ---- A film, read from the file ----

TEST_F(FileParserMp4, DescribesAFilm) {
  Mp4File file;
  file.artist = "artist";
  file.album = "album";
  file.title = "another title";
  file.track = 7;
  file.cover = "picture";
  const std::string content = MakeMp4(file);
  const RecordPtr record = Extract(content);
  const VideoMetaData* video = AsVideo(record);
  ASSERT_NE(video, nullptr);
  EXPECT_EQ(video->GetType(), 3u);
  EXPECT_EQ(video->GetFullPath(), path_);
  EXPECT_STREQ(video->GetTitle(), "IMGA0001");
  EXPECT_STREQ(video->GetSortIndex(), "1000001");
  EXPECT_STREQ(video->GetMimeType(), "video/mp4");
  EXPECT_STREQ(video->GetDLNAProfile(), kCertified);
  EXPECT_EQ(video->GetSize(), static_cast<long long>(content.size()));
  EXPECT_EQ(video->GetWidth(), 320);
  EXPECT_EQ(video->GetHeight(), 240);
  EXPECT_DOUBLE_EQ(video->GetVideoFrameRate(), 150 / 10000.5 * 1000.0);
  EXPECT_DOUBLE_EQ(video->GetVideoLevel(), 1.0);
  EXPECT_EQ(video->GetVideoBitrate(), 119994);
  EXPECT_STREQ(video->GetDuration(), "0:00:10");
  EXPECT_EQ(video->GetAlbumArtLength(), 7 + 16);
  EXPECT_EQ(video->GetAlbumArtOffset(), static_cast<int>(content.find("picture")) + 7 - 16);
  EXPECT_EQ(video->GetURI(), nullptr);
  EXPECT_EQ(video->GetThumbnailLength(), 0);

  const AudioMetaData* sound = video->GetAudioData();
  ASSERT_NE(sound, nullptr);
  EXPECT_STREQ(sound->GetArtist(), "artist");
  EXPECT_STREQ(sound->GetAlbumTitle(), "album");
  EXPECT_EQ(sound->GetTrackNumber(), 7);
  EXPECT_EQ(sound->GetNumChannel(), 2);
  EXPECT_EQ(sound->GetBitrate(), 128500);
  EXPECT_EQ(sound->GetFrequency(), 44100);
}

TEST_F(FileParserMp4, DatesAFilmByItsFile) {
  const std::string path = directory_.Write("film.mp4", SmallFilm());
  const utimbuf times = {1700000000, 1700000000};
  ASSERT_EQ(utime(path.c_str(), &times), 0);
  const time_t moment = times.modtime;
  char expected[15];
  strftime(expected, sizeof expected, "%Y-%m-%d", localtime(&moment));
  EXPECT_STREQ(Parse(path)->GetDate(), expected);
}

TEST_F(FileParserMp4, GivesAFilmWithoutSoundAnEmptySoundTrack) {
  Mp4File file;
  file.audio = false;
  const RecordPtr record = Extract(MakeMp4(file));
  ASSERT_NE(AsVideo(record), nullptr);
  const AudioMetaData* sound = AsVideo(record)->GetAudioData();
  ASSERT_NE(sound, nullptr);
  EXPECT_EQ(sound->GetArtist(), nullptr);
  EXPECT_EQ(sound->GetNumChannel(), 0);
}

TEST_F(FileParserMp4, LogsWhatItParses) {
  const RecordPtr record = Extract(SmallFilm());
  EXPECT_EQ(platform_.Messages("DLNA"),
            (std::vector<std::string>{"[FileParser_MP4::__ExtractMetadata] Parsing [" + path_ + "]",
                                      "[" + path_ + "] Parse Success"}));
  for (const LogLine& line : platform_.log) EXPECT_EQ(line.priority, 4);
}

TEST_F(FileParserMp4, LogsAFileThatItCannotRead) {
  EXPECT_EQ(Extract("no film"), nullptr);
  EXPECT_EQ(platform_.Messages("DLNA"),
            (std::vector<std::string>{
                "[FileParser_MP4::__ExtractMetadata] Parsing [" + path_ + "]",
                "[FileParser_MP4::__ExtractMetadata] Parsing [" + path_ + "] failed"}));
  EXPECT_EQ(Parse(directory_.Path("none.mp4")), nullptr);
}

// ---- A sound file, read from the file ----

TEST_F(FileParserMp4, DescribesASoundFile) {
  Mp4File file;
  file.video = false;
  file.artist = "artist";
  file.album = "album";
  file.track = 7;
  file.cover = "picture";
  const std::string content = MakeMp4(file);
  const RecordPtr record = Extract(content, "m4a");
  const AudioMetaData* audio = AsAudio(record);
  ASSERT_NE(audio, nullptr);
  EXPECT_EQ(audio->GetType(), 2u);
  EXPECT_EQ(audio->GetFullPath(), path_);
  EXPECT_STREQ(audio->GetTitle(), "IMGA0001");
  EXPECT_EQ(audio->GetSortIndex(), nullptr);
  EXPECT_STREQ(audio->GetMimeType(), "audio/mp4");
  EXPECT_STREQ(audio->GetDLNAProfile(), "AAC_ISO_320");
  EXPECT_NE(audio->GetDate(), nullptr);
  EXPECT_EQ(audio->GetSize(), static_cast<long long>(content.size()));
  EXPECT_STREQ(audio->GetDuration(), "0:00:10");
  EXPECT_STREQ(audio->GetArtist(), "artist");
  EXPECT_STREQ(audio->GetAlbumTitle(), "album");
  EXPECT_EQ(audio->GetTrackNumber(), 7);
  EXPECT_EQ(audio->GetNumChannel(), 2);
  EXPECT_EQ(audio->GetBitrate(), 128500);
  EXPECT_EQ(audio->GetFrequency(), 44100);
  EXPECT_EQ(audio->GetAlbumArtLength(), 7 + 16);
  EXPECT_EQ(audio->GetAlbumArtOffset(), static_cast<int>(content.find("picture")) + 7 - 16);
}

TEST_F(FileParserMp4, DescribesAnAdtsFile) {
  const RecordPtr record = Extract(Adts(1, 3, 2), "adts");
  const AudioMetaData* audio = AsAudio(record);
  ASSERT_NE(audio, nullptr);
  EXPECT_STREQ(audio->GetMimeType(), "audio/vnd.dlna.adts");
  EXPECT_STREQ(audio->GetDLNAProfile(), "AAC_ADTS_320");
  EXPECT_EQ(audio->GetFrequency(), 48000);
  EXPECT_EQ(audio->GetNumChannel(), 2);
  EXPECT_EQ(audio->GetBitrate(), 0);
  EXPECT_EQ(audio->GetDuration(), nullptr);
}

// ---- MIME types ----

TEST_F(FileParserMp4, GivesAFilmItsMimeTypeByExtension) {
  const struct {
    const char* ext;
    const char* type;
  } rows[] = {{nullptr, "video/mp4"}, {"mp4", "video/mp4"},   {"3gp", "video/mp4"},
              {"mov", "video/mp4"},   {"m4v", "video/x-m4v"}, {"avi", "video/x-avi"},
              {"m4a", "video/mp4"},   {"aac", "video/mp4"},   {"xyz", "video/mp4"},
              {"", "video/mp4"},      {"v", "video/mp4"},     {"m4", "video/x-m4v"},
              {"M4V", "video/mp4"}};  // the case counts
  for (const auto& row : rows) {
    SCOPED_TRACE(TextOf(row.ext));
    EXPECT_STREQ(Extract(SmallFilm(), row.ext)->GetMimeType(), row.type);
  }
}

TEST_F(FileParserMp4, GivesSoundItsMimeTypeByExtension) {
  const struct {
    const char* ext;
    const char* type;
  } rows[] = {{nullptr, "audio/mp4"},         {"aac", "audio/mp4"},
              {"3gp", "audio/mp4"},           {"3gp.a", "audio/mp4"},
              {"ac3", "audio/x-ac3"},         {"m4a", "audio/mp4"},
              {"mp4", "audio/mp4"},           {"mp4.a", "audio/mp4"},
              {"m4b", "audio/mp4"},           {"adts", "audio/vnd.dlna.adts"},
              {"mov", "audio/mp4"},           {"m4v", "audio/mp4"},
              {"xyz", "audio/mp4"},           {"", "audio/mp4"},
              {"dts", "audio/vnd.dlna.adts"}, {"AC3", "audio/mp4"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(TextOf(row.ext));
    EXPECT_STREQ(Extract(SmallSong(), row.ext)->GetMimeType(), row.type);
  }
}

TEST_F(FileParserMp4, LowerCasesTheExtensionForTheMimeType) {
  EXPECT_STREQ(Parse(directory_.Write("a.M4V", SmallFilm()))->GetMimeType(), "video/x-m4v");
  EXPECT_STREQ(Parse(directory_.Write("a.ADTS", Adts()))->GetMimeType(), "audio/vnd.dlna.adts");
}

// ---- DLNA profiles ----

TEST_F(FileParserMp4, FindsTheProfilesOfBaselineFilms) {
  Mp4File file;
  EXPECT_EQ(ProfileOf(file), "AVC_MP4_BL_CIF15_AAC_520");
  file.width = 176;
  file.height = 144;
  EXPECT_EQ(ProfileOf(file), "*");
  file.levelIdc = 30;
  EXPECT_EQ(ProfileOf(file), "AVC_MP4_BL_L3_SD_ACC");
  file.levelIdc = 13;
  EXPECT_EQ(ProfileOf(file), "AVC_MP4_BL_L2_CIF30_AAC");
  file.levelIdc = 21;
  EXPECT_EQ(ProfileOf(file), "AVC_MP4_BL_L3L_SD_AAC");
  file.levelIdc = 31;
  EXPECT_EQ(ProfileOf(file), "*");
}

TEST_F(FileParserMp4, TellsSlowFilmsOfLevelTwoByTheirFrameRate) {
  Mp4File file;
  file.levelIdc = 20;
  file.frames = 140;
  EXPECT_EQ(ProfileOf(file), "AVC_MP4_BL_CIF15_AAC_520");
  file.frames = 160;
  EXPECT_EQ(ProfileOf(file), "AVC_MP4_BL_L2_CIF30_AAC");
}

TEST_F(FileParserMp4, FindsTheProfilesOfMainFilmsByBitRate) {
  Mp4File file;
  file.profileIdc = 77;
  file.levelIdc = 31;
  file.sound.channels = 6;
  file.frameSize = 10000;
  EXPECT_EQ(ProfileOf(file), "AVC_MP4_MP_SD_AAC_MULT5");
  file.frameSize = 100000;  // 12 Mbit/s
  EXPECT_EQ(ProfileOf(file), "*");
}

TEST_F(FileParserMp4, FindsTheProfileOfAPlainHeAacFilm) {
  Mp4File file;
  file.sound.audioObject = 5;
  EXPECT_EQ(ProfileOf(file), "AVC_MP4_BL_CIF15_HEAAC");
}

TEST_F(FileParserMp4, FindsTheProfilesOf3gppFilms) {
  Mp4File file;
  file.brand = "3gp6";
  file.compatible = "isom3gp6";
  file.sound.longDescriptors = false;
  file.profileIdc = 100;  // no class of its own
  EXPECT_EQ(ProfileOf(file), "AVC_3GPP_BL_QCIF15_AAC");
  file.brand = "3gp4";
  EXPECT_EQ(ProfileOf(file), "*");
}

TEST_F(FileParserMp4, GivesAFilmOfAnUnknownContainerNoProfile) {
  Mp4File file;
  file.brand = "isom";
  file.compatible = "isomiso2";
  file.sound.longDescriptors = false;
  EXPECT_EQ(ProfileOf(file), "*");
}

TEST_F(FileParserMp4, ChangesTheNameOfAacAbove320Kilobits) {
  Mp4File song;
  song.video = false;
  song.sound.averageBitrate = 320499;  // counts as 320,999
  EXPECT_EQ(ProfileOf(song), "AAC_ISO_320");
  song.sound.averageBitrate = 320500;
  EXPECT_EQ(ProfileOf(song), "AAC_ISO");
  song.sound.channels = 6;
  EXPECT_EQ(ProfileOf(song), "AAC_MULT5_ISO");
}

TEST_F(FileParserMp4, GivesEveryFilmOneProfileInCertification) {
  platform_.certificationState = 1;
  Mp4File file;
  file.profileIdc = 100;
  EXPECT_EQ(ProfileOf(file), kCertified);
  file.brand = "isom";
  EXPECT_EQ(ProfileOf(file), kCertified);
  EXPECT_STREQ(Extract2()->GetDLNAProfile(), kCertified);
}

TEST_F(FileParserMp4, LeavesSoundItsProfileInCertification) {
  platform_.certificationState = 1;
  EXPECT_STREQ(Extract(SmallSong())->GetDLNAProfile(), "AAC_ISO_320");
}

TEST_F(FileParserMp4, HandsOutCopiesOfProfileNames) {
  const orx::TextPtr film(parser_.__GetMp4Profile({17, 1, 1, 0}));
  EXPECT_STREQ(film.get(), "AVC_MP4_BL_CIF15_AAC_520");
  EXPECT_EQ(parser_.__GetMp4Profile({19, 1, 1, 0}), nullptr);
  const orx::TextPtr song(parser_.__GetMp4aProfile({0, 0, 0, 1}));
  EXPECT_STREQ(song.get(), "AAC_ISO");
  const orx::TextPtr last(parser_.__GetMp4aProfile({0, 0, 0, 19}));
  EXPECT_STREQ(last.get(), "BSAC_MULT5_ISO");
  EXPECT_EQ(parser_.__GetMp4aProfile({0, 0, 0, 0}), nullptr);
}

// ---- A film, described by the platform ----

TEST_F(FileParserMp4, TakesTheAttributesOfThePlatform) {
  const RecordPtr record = Extract2();
  const VideoMetaData* video = AsVideo(record);
  ASSERT_NE(video, nullptr);
  EXPECT_EQ(platform_.videoPaths, std::vector<std::string>{"/card/IMGA0001.MP4"});
  EXPECT_EQ(video->GetType(), 3u);
  EXPECT_STREQ(video->GetFullPath(), "/card/IMGA0001.MP4");
  EXPECT_STREQ(video->GetTitle(), "IMGA0001");
  EXPECT_STREQ(video->GetSortIndex(), "1000001");
  EXPECT_STREQ(video->GetDate(), "2026-11-21");
  EXPECT_EQ(video->GetSize(), 5000000000);
  EXPECT_EQ(video->GetWidth(), 1920);
  EXPECT_EQ(video->GetHeight(), 1080);
  EXPECT_STREQ(video->GetDuration(), "61500");
  EXPECT_DOUBLE_EQ(video->GetVideoFrameRate(), 29.97);
  EXPECT_STREQ(video->GetDLNAProfile(), "*");
  EXPECT_EQ(video->GetAudioData(), nullptr);
}

TEST_F(FileParserMp4, HandsTheSortIndexOfTheFileRecordOn) {
  const RecordPtr record = Parse2("/card/film.MP4");
  ASSERT_NE(record, nullptr);
  EXPECT_STREQ(record->GetSortIndex(), "1000001");
  EXPECT_STREQ(record->GetEXT(), "MP4");
  EXPECT_STREQ(record->GetFullPath(), "/card/film.MP4");
}

TEST_F(FileParserMp4, KnowsOneOtherMimeTypeOnThePlatformPath) {
  EXPECT_STREQ(Extract2("avi")->GetMimeType(), "video/x-avi");
  for (const char* ext : {"mp4", "3gp", "mov", "m4v", "xyz"})
    EXPECT_STREQ(Extract2(ext)->GetMimeType(), "video/mp4");
  EXPECT_STREQ(Extract2(nullptr)->GetMimeType(), "video/mp4");
}

TEST_F(FileParserMp4, ReadsADateThatFillsItsField) {
  memset(platform_.videoAttribute.szDate, 'd', sizeof platform_.videoAttribute.szDate);
  EXPECT_EQ(TextOf(Extract2()->GetDate()), std::string(16, 'd'));
}

TEST_F(FileParserMp4, DescribesAFilmThatThePlatformDoesNotKnow) {
  platform_.videoAttributeSucceeds = false;
  testing::internal::CaptureStderr();
  const RecordPtr record = Extract2();
  testing::internal::GetCapturedStderr();
  const VideoMetaData* video = AsVideo(record);
  ASSERT_NE(video, nullptr);
  EXPECT_EQ(video->GetSize(), 0);
  EXPECT_EQ(video->GetWidth(), 0);
  EXPECT_EQ(video->GetHeight(), 0);
  EXPECT_STREQ(video->GetDuration(), "0");
  EXPECT_EQ(video->GetVideoFrameRate(), 0.0);
  EXPECT_STREQ(video->GetTitle(), "IMGA0001");
  EXPECT_TRUE(
      platform_.Logged("[FileParser_MP4::__ExtractMetadata2] QUILWifi_getVideoAttribute Error!!!"));
}

TEST_F(FileParserMp4, LogsWhatItTakesFromThePlatform) {
  const RecordPtr record = Extract2();
  EXPECT_EQ(
      platform_.Messages("DLNA"),
      (std::vector<std::string>{"[FileParser_MP4::__ExtractMetadata] Parsing [/card/IMGA0001.MP4]",
                                "[/card/IMGA0001.MP4] Parse Success"}));
}

}  // namespace
