#include "MediaReaders/mp4_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "support/Mp4Builder.h"
#include "support/Mp4Reading.h"
#include "support/OpenWatch.h"
#include "support/TempDir.h"
#include "support/TimeZone.h"

namespace {

using namespace orx_test;

bool IsZero(const mp4_metadata_t& meta) {
  const mp4_metadata_t zero = {};
  return memcmp(&meta, &zero, sizeof meta) == 0;
}

// A record that is full of rubbish.
mp4_metadata_t Rubbish() {
  mp4_metadata_t meta;
  memset(&meta, 0x5A, sizeof meta);
  return meta;
}

TEST(M4aGetMetadata, ReadsAFilm) {
  const Mp4Reading film(SmallFilm());
  EXPECT_EQ(film.result(), 1);
  EXPECT_EQ(film->HasVideo, 1);
  EXPECT_EQ(film->HasAudio, 1);
  EXPECT_EQ(film->HasTracks, 1);
  EXPECT_EQ(film->ContainerCode, 1);
  EXPECT_EQ(film->Width, 320);
  EXPECT_EQ(film->Height, 240);
  EXPECT_EQ(film->TrackWidth, 320 << 16);
  EXPECT_EQ(film->VideoFrameCount, 150);
  EXPECT_EQ(film->VideoByteTotal, 150000);
  EXPECT_DOUBLE_EQ(film->VideoDurationMs, 10000.5);
  EXPECT_EQ(film->VideoBitrate, 119994);
  EXPECT_DOUBLE_EQ(film->FrameRate, 150 / 10000.5 * 1000.0);
  EXPECT_STREQ(film->DurationText, "0:00:10");
  EXPECT_EQ(film->VideoId, 17);
  EXPECT_EQ(film->TableAudioCode, 1);
  EXPECT_EQ(film->AudioProfileId, 2);
}

TEST(M4aGetMetadata, ReadsASoundFile) {
  const Mp4Reading song(SmallSong());
  EXPECT_EQ(song.result(), 1);
  EXPECT_EQ(song->HasVideo, 0);
  EXPECT_EQ(song->HasAudio, 1);
  EXPECT_EQ(song->VideoId, 0);
  EXPECT_EQ(song->FrameRate, 0.0);
  EXPECT_EQ(song->AudioProfileId, 2);
}

TEST(M4aGetMetadata, ReadsAnAdtsFile) {
  const Mp4Reading song(Adts(1, 3, 6));
  EXPECT_EQ(song.result(), 1);
  EXPECT_EQ(song->HasTracks, 1);
  EXPECT_EQ(song->AudioType, 20);
  EXPECT_EQ(song->SampleRate, 48000);
  EXPECT_EQ(song->TableAudioCode, 20);
  EXPECT_EQ(song->AudioProfileId, 6);
  EXPECT_EQ(song->BytesRead, 50);
}

TEST(M4aGetMetadata, TakesEveryFileWithTheSyncWordForAdts) {
  const Mp4Reading mpeg4(U16(0xFFF9) + Adts().substr(2));
  EXPECT_EQ(mpeg4.result(), 1);
  const Mp4Reading other(U16(0xFFF1) + Zeros(14) + SmallFilm());
  EXPECT_EQ(other.result(), 0);
  EXPECT_EQ(other->HasVideo, 0);
}

TEST(M4aGetMetadata, FindsNothingInAFileThatIsNeither) {
  for (const std::string& content :
       {std::string(), std::string("\xFF"), std::string("hello"), std::string(4096, '\0'),
        std::string(4096, '\x20'), Ftyp("mp42", "mp42") + Box("mdat", Zeros(64))}) {
    const Mp4Reading reading(content);
    EXPECT_EQ(reading.result(), 0);
    EXPECT_EQ(reading->HasTracks, 0);
    EXPECT_EQ(reading->AudioProfileId, 0);
    EXPECT_EQ(reading->FileSize, static_cast<long long>(content.size()));
  }
}

TEST(M4aGetMetadata, GivesNoFrameRateWithoutFramesOrDuration) {
  Mp4File still;
  still.frames = 0;
  EXPECT_EQ(Mp4Reading(MakeMp4(still))->FrameRate, 0.0);
  Mp4File endless;
  endless.timescale = 0;
  const Mp4Reading film(MakeMp4(endless));
  EXPECT_EQ(film->VideoFrameCount, 150);
  EXPECT_EQ(film->FrameRate, 0.0);
  EXPECT_STREQ(film->DurationText, "0:00:00");
}

TEST(M4aGetMetadata, ConfirmsVideoOnlyWhenThereIsAVideoHandler) {
  const Mp4Reading film(Stsd(Avc1(320, 240, 66, 10)) + Hdlr("soun"));
  EXPECT_EQ(film->VideoCodec, 2);
  EXPECT_EQ(film->VideoId, 0);
}

std::string DateOf(const std::string& path) {
  mp4_metadata_t meta;
  EXPECT_EQ(m4a_get_metadata(path.c_str(), &meta), 1);
  const std::string date = meta.Date != nullptr ? meta.Date : "(null)";
  m4a_free_metadata(&meta);
  return date;
}

TEST(M4aGetMetadata, FollowsTheZoneThatTheHostSetMeanwhile) {
  const orx_test::TimeZone before("UTC0");
  const TempDir directory;
  const std::string path = directory.Write("film.mp4", SmallFilm());
  const utimbuf times = {1700000000, 1700000000};  // 22:13 UTC
  ASSERT_EQ(utime(path.c_str(), &times), 0);
  EXPECT_EQ(DateOf(path), "2023-11-14");
  setenv("TZ", "JST-9", 1);
  EXPECT_EQ(DateOf(path), "2023-11-15");
}

TEST(M4aGetMetadata, RefusesAFifoWithoutOpeningIt) {
  const TempDir directory;
  const std::string path = directory.Path("film.mp4");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const orx_test::OpenWatch watch(path);
  mp4_metadata_t meta;
  EXPECT_EQ(m4a_get_metadata(path.c_str(), &meta), 0);
  EXPECT_FALSE(watch.Opened());
  m4a_free_metadata(&meta);
}

TEST(M4aGetMetadata, DatesTheFileByItsModificationInLocalTime) {
  const TempDir directory;
  const std::string path = directory.Write("film.mp4", SmallFilm());
  const utimbuf times = {1700000000, 1700000000};
  ASSERT_EQ(utime(path.c_str(), &times), 0);
  for (const char* zone : {"UTC", "JST-9", "PST8"}) {
    setenv("TZ", zone, 1);
    tzset();
    mp4_metadata_t meta;
    EXPECT_EQ(m4a_get_metadata(path.c_str(), &meta), 1);
    EXPECT_STREQ(meta.Date, strcmp(zone, "JST-9") == 0 ? "2023-11-15" : "2023-11-14");
    m4a_free_metadata(&meta);
  }
  unsetenv("TZ");
  tzset();
}

TEST(M4aGetMetadata, LeavesTheRecordZeroWhenThereIsNoFile) {
  const TempDir directory;
  mp4_metadata_t meta = Rubbish();
  EXPECT_EQ(m4a_get_metadata(directory.Path("none.mp4").c_str(), &meta), 0);
  EXPECT_TRUE(IsZero(meta));
}

TEST(M4aGetMetadata, LeavesTheRecordZeroForANullPath) {
  mp4_metadata_t meta = Rubbish();
  EXPECT_EQ(m4a_get_metadata(nullptr, &meta), 0);
  EXPECT_TRUE(IsZero(meta));
  EXPECT_EQ(m4a_get_metadata("film.mp4", nullptr), 0);
}

TEST(M4aGetMetadata, RefusesAFifoWithoutWaiting) {
  const TempDir directory;
  const std::string path = directory.Path("film.mp4");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  mp4_metadata_t meta;
  EXPECT_EQ(m4a_get_metadata(path.c_str(), &meta), 0);
  EXPECT_EQ(meta.HasTracks, 0);
  m4a_free_metadata(&meta);
}

TEST(M4aGetMetadata, RefusesADirectory) {
  const TempDir directory;
  mp4_metadata_t meta;
  EXPECT_EQ(m4a_get_metadata(directory.path().c_str(), &meta), 0);
  m4a_free_metadata(&meta);
}

TEST(M4aGetMetadata, KeepsNothingFromOneFileToTheNext) {
  const Mp4Reading first(MakeMp4());
  const Mp4Reading second(Hdlr("soun"));
  EXPECT_EQ(second->HasVideo, 0);
  EXPECT_EQ(second->AudioType, 0);
  EXPECT_EQ(second->CompatibleBrands, nullptr);
}

TEST(M4aGetMetadata, ReadsAMovieBehindALargeBodyOfData) {
  const std::string film =
      Ftyp("mp42", "mp42") + Box("mdat", Zeros(3 << 20)) + Box("moov", Hdlr("vide"));
  EXPECT_EQ(Mp4Reading(film).result(), 1);
}

TEST(M4aFreeMetadata, ReleasesTheTextsAndZeroesTheRecord) {
  const TempDir directory;
  Mp4File file;
  file.title = "title";
  const std::string path = directory.Write("film.mp4", MakeMp4(file));
  mp4_metadata_t meta;
  ASSERT_EQ(m4a_get_metadata(path.c_str(), &meta), 1);
  ASSERT_NE(meta.Title, nullptr);
  m4a_free_metadata(&meta);
  EXPECT_TRUE(IsZero(meta));
  m4a_free_metadata(&meta);
  m4a_free_metadata(nullptr);
}

}  // namespace
