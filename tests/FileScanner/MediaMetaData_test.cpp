#include "FileScanner/MediaMetaData.h"

#include <gtest/gtest.h>

#include <string>

#include "FileScanner/AudioMetaData.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/VideoMetaData.h"
#include "OSAL/TextPtr.h"

namespace {

std::string Title(const char* path) {
  const orx::TextPtr title(MediaMetaData::GetTitleFromFullPath(path));
  return title != nullptr ? title.get() : "(null)";
}

std::string SortIndex(const char* path) {
  const orx::TextPtr key(MediaMetaData::GetSortIndexFromFullPath(path));
  return key != nullptr ? key.get() : "(null)";
}

TEST(GetTitleFromFullPath, IsTheFileNameWithoutItsExtension) {
  EXPECT_EQ(Title("/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG"), "IMGA0001");
}

TEST(GetTitleFromFullPath, CutsAtTheLastDotOnly) { EXPECT_EQ(Title("/a/b.c.jpg"), "b.c"); }

TEST(GetTitleFromFullPath, KeepsANameWithoutDot) { EXPECT_EQ(Title("/a/b"), "b"); }

TEST(GetTitleFromFullPath, IsNoTitleWhenNothingStandsBeforeTheDot) {
  EXPECT_EQ(Title("/a/b/.jpg"), "No Title");
}

TEST(GetTitleFromFullPath, IsNoTitleForAPathThatEndsInASlash) {
  EXPECT_EQ(Title("/a/b/"), "No Title");
}

TEST(GetTitleFromFullPath, ReturnsAPathWithoutSlashUnchanged) {
  EXPECT_EQ(Title("IMGA0001.JPG"), "IMGA0001.JPG");
}

TEST(GetTitleFromFullPath, IsNullForNull) { EXPECT_EQ(Title(nullptr), "(null)"); }

TEST(GetSortIndexFromFullPath, JoinsFolderNumberAndFileNumber) {
  EXPECT_EQ(SortIndex("/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG"), "1000001");
  EXPECT_EQ(SortIndex("/DCIM/100PHOTO/IMGA0001.JPG"), "1000001");
}

TEST(GetSortIndexFromFullPath, TakesFileNumbersOfFiveCharacters) {
  EXPECT_EQ(SortIndex("/mnt/mmc/DCIM/101PHOTO/IMGA12345.JPG"), "10112345");
}

TEST(GetSortIndexFromFullPath, IsNullForAFileNumberOfSixCharacters) {
  EXPECT_EQ(SortIndex("/mnt/mmc/DCIM/101PHOTO/IMGA123456.JPG"), "(null)");
}

TEST(GetSortIndexFromFullPath, IsNullWhenTheNameEndsAfterFourCharacters) {
  EXPECT_EQ(SortIndex("/DCIM/100PHOTO/IMGX.JPG"), "(null)");
}

TEST(GetSortIndexFromFullPath, IsNullWhenTheNameIsShorterThanFourCharacters) {
  EXPECT_EQ(SortIndex("/DCIM/100PHOTO/I.JPG"), "(null)");
}

TEST(GetSortIndexFromFullPath, TakesFileNumber0000WhenNothingStandsBeforeTheDot) {
  EXPECT_EQ(SortIndex("/DCIM/100PHOTO/.JPG"), "1000000");
}

TEST(GetSortIndexFromFullPath, CutsTheFileNameAtItsLastDot) {
  EXPECT_EQ(SortIndex("/DCIM/100PHOTO/IMGA1.2.JPG"), "1001.2");
}

TEST(GetSortIndexFromFullPath, KeepsFolderNamesShorterThanThreeCharacters) {
  EXPECT_EQ(SortIndex("/x/ab/IMGA0001.JPG"), "ab0001");
}

TEST(GetSortIndexFromFullPath, IsNullWhenTheFolderNameIsEmpty) {
  EXPECT_EQ(SortIndex("/x//IMGA0001.JPG"), "(null)");
}

TEST(GetSortIndexFromFullPath, ReturnsAPathWithoutSlashUnchanged) {
  EXPECT_EQ(SortIndex("IMGA0001.JPG"), "IMGA0001.JPG");
}

TEST(GetSortIndexFromFullPath, ReturnsWhatStandsBeforeTheOnlySlash) {
  EXPECT_EQ(SortIndex("/IMGA0001.JPG"), "");
  EXPECT_EQ(SortIndex("dir/IMGX.JPG"), "dir");
}

TEST(GetSortIndexFromFullPath, IsNullForNull) { EXPECT_EQ(SortIndex(nullptr), "(null)"); }

TEST(MediaMetaData, StartsEmpty) {
  const MediaMetaData record;
  EXPECT_EQ(record.GetType(), 0u);
  EXPECT_EQ(record.GetSize(), 0);
  for (const char* text :
       {record.GetUniqueID(), record.GetFullPath(), record.GetURI(), record.GetEXT(),
        record.GetTitle(), record.GetMimeType(), record.GetDate(), record.GetDirectoryID(),
        record.GetDLNAProfile(), record.GetSortIndex()})
    EXPECT_EQ(text, nullptr);
}

TEST(MediaMetaData, KeepsCopiesOfItsTexts) {
  MediaMetaData record;
  char text[] = "one";
  record.SetUniqueID(text);
  record.SetFullPath(text);
  record.SetURI(text);
  record.SetEXT(text);
  record.SetTitle(text);
  record.SetMimeType(text);
  record.SetDate(text);
  record.SetDirectoryID(text);
  record.SetDLNAProfile(text);
  record.SetSortIndex(text);
  text[0] = 'X';
  for (const char* kept :
       {record.GetUniqueID(), record.GetFullPath(), record.GetURI(), record.GetEXT(),
        record.GetTitle(), record.GetMimeType(), record.GetDate(), record.GetDirectoryID(),
        record.GetDLNAProfile(), record.GetSortIndex()})
    EXPECT_STREQ(kept, "one");
}

TEST(MediaMetaData, IgnoresNullTexts) {
  MediaMetaData record;
  record.SetTitle("kept");
  record.SetTitle(nullptr);
  record.SetDate("2026-11-21");
  record.SetDate(nullptr);
  EXPECT_STREQ(record.GetTitle(), "kept");
  EXPECT_STREQ(record.GetDate(), "2026-11-21");
}

TEST(MediaMetaData, KeepsTheLaterOfTwoDates) {
  MediaMetaData record;
  record.SetDate("2026-11-21");
  record.SetDate("2026-11-22");
  EXPECT_STREQ(record.GetDate(), "2026-11-22");
}

TEST(MediaMetaData, KeepsASupersededTextReadableUntilItsEnd) {
  MediaMetaData record;
  record.SetTitle("earlier");
  const char* earlier = record.GetTitle();
  record.SetTitle("later");
  EXPECT_STREQ(earlier, "earlier");
  EXPECT_STREQ(record.GetTitle(), "later");
}

TEST(MediaMetaData, AcceptsItsOwnTextAsNewValue) {
  MediaMetaData record;
  record.SetDate("2026-11-21");
  record.SetDate(record.GetDate());
  EXPECT_STREQ(record.GetDate(), "2026-11-21");
}

TEST(MediaMetaData, KeepsSizesBeyond32Bits) {
  MediaMetaData record;
  record.SetSize(5000000000LL);
  EXPECT_EQ(record.GetSize(), 5000000000LL);
}

TEST(ImageMetaData, KeepsEveryField) {
  ImageMetaData image;
  image.SetHeight(1);
  image.SetWidth(2);
  image.SetDescription("d");
  image.SetThumbnailOffset(3);
  image.SetThumbnailLength(4);
  image.SetThumbnailHeight(5);
  image.SetThumbnailWidth(6);
  image.SetThumbnailURI("t");
  image.SetScreennailOffset(7);
  image.SetScreennailLength(8);
  image.SetScreennailHeight(9);
  image.SetScreennailWidth(10);
  image.SetScreennailURI("s");
  const ImageMetaData& kept = image;
  EXPECT_EQ(kept.GetHeight(), 1);
  EXPECT_EQ(kept.GetWidth(), 2);
  EXPECT_STREQ(kept.GetDescription(), "d");
  EXPECT_EQ(kept.GetThumbnailOffset(), 3);
  EXPECT_EQ(kept.GetThumbnailLength(), 4);
  EXPECT_EQ(kept.GetThumbnailHeight(), 5);
  EXPECT_EQ(kept.GetThumbnailWidth(), 6);
  EXPECT_STREQ(kept.GetThumbnailURI(), "t");
  EXPECT_EQ(kept.GetScreennailOffset(), 7);
  EXPECT_EQ(kept.GetScreennailLength(), 8);
  EXPECT_EQ(kept.GetScreennailHeight(), 9);
  EXPECT_EQ(kept.GetScreennailWidth(), 10);
  EXPECT_STREQ(kept.GetScreennailURI(), "s");
}

TEST(AudioMetaData, KeepsEveryField) {
  AudioMetaData audio;
  audio.SetNumChannel(1);
  audio.SetBitrate(2);
  audio.SetFrequency(3);
  audio.SetTrackNumber(4);
  audio.SetArtist("a");
  audio.SetDuration("0:00:01");
  audio.SetAlbumTitle("b");
  audio.SetAlbumArtist("c");
  audio.SetAlbumArtOffset(5);
  audio.SetAlbumArtLength(6);
  const AudioMetaData& kept = audio;
  EXPECT_EQ(kept.GetNumChannel(), 1);
  EXPECT_EQ(kept.GetBitrate(), 2);
  EXPECT_EQ(kept.GetFrequency(), 3);
  EXPECT_EQ(kept.GetTrackNumber(), 4);
  EXPECT_STREQ(kept.GetArtist(), "a");
  EXPECT_STREQ(kept.GetDuration(), "0:00:01");
  EXPECT_STREQ(kept.GetAlbumTitle(), "b");
  EXPECT_STREQ(kept.GetAlbumArtist(), "c");
  EXPECT_EQ(kept.GetAlbumArtOffset(), 5);
  EXPECT_EQ(kept.GetAlbumArtLength(), 6);
}

TEST(VideoMetaData, KeepsEveryField) {
  VideoMetaData video;
  video.SetHeight(1);
  video.SetWidth(2);
  video.SetVideoBitrate(3);
  video.SetVideoFrameRate(29.97);
  video.SetVideoLevel(1.3);
  video.SetDuration("0:00:01");
  video.SetAlbumArtOffset(4);
  video.SetAlbumArtLength(5);
  video.SetThumbnailOffset(6);
  video.SetThumbnailLength(7);
  video.SetThumbnailHeight(8);
  video.SetThumbnailWidth(9);
  video.SetThumbnailURI("t");
  const VideoMetaData& kept = video;
  EXPECT_EQ(kept.GetHeight(), 1);
  EXPECT_EQ(kept.GetWidth(), 2);
  EXPECT_EQ(kept.GetVideoBitrate(), 3);
  EXPECT_EQ(kept.GetVideoFrameRate(), 29.97);
  EXPECT_EQ(kept.GetVideoLevel(), 1.3);
  EXPECT_STREQ(kept.GetDuration(), "0:00:01");
  EXPECT_EQ(kept.GetAlbumArtOffset(), 4);
  EXPECT_EQ(kept.GetAlbumArtLength(), 5);
  EXPECT_EQ(kept.GetThumbnailOffset(), 6);
  EXPECT_EQ(kept.GetThumbnailLength(), 7);
  EXPECT_EQ(kept.GetThumbnailHeight(), 8);
  EXPECT_EQ(kept.GetThumbnailWidth(), 9);
  EXPECT_STREQ(kept.GetThumbnailURI(), "t");
  EXPECT_EQ(kept.GetAudioData(), nullptr);
}

// A sound track that tells when it is destroyed.
class WatchedTrack : public AudioMetaData {
 public:
  explicit WatchedTrack(int* destroyed) : destroyed_(destroyed) {}
  ~WatchedTrack() override { ++*destroyed_; }

 private:
  int* destroyed_;
};

TEST(VideoMetaData, DestroysItsSoundTrackThroughTheBaseClass) {
  int destroyed = 0;
  auto* video = new VideoMetaData;
  video->SetAudioData(new WatchedTrack(&destroyed));
  MediaMetaData* base = video;
  delete base;
  EXPECT_EQ(destroyed, 1);
}

TEST(VideoMetaData, KeepsASupersededSoundTrackUntilItsEnd) {
  int destroyed = 0;
  {
    VideoMetaData video;
    video.SetAudioData(new WatchedTrack(&destroyed));
    auto* later = new WatchedTrack(&destroyed);
    video.SetAudioData(later);
    EXPECT_EQ(video.GetAudioData(), later);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 2);
}

TEST(VideoMetaData, TakesASupersededSoundTrackBack) {
  int destroyed = 0;
  {
    VideoMetaData video;
    auto* first = new WatchedTrack(&destroyed);
    video.SetAudioData(first);
    video.SetAudioData(new WatchedTrack(&destroyed));
    video.SetAudioData(first);
    EXPECT_EQ(video.GetAudioData(), first);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 2);
}

TEST(VideoMetaData, HasNoSoundTrackAfterNull) {
  int destroyed = 0;
  {
    VideoMetaData video;
    video.SetAudioData(new WatchedTrack(&destroyed));
    video.SetAudioData(nullptr);
    EXPECT_EQ(video.GetAudioData(), nullptr);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 1);
}

}  // namespace
