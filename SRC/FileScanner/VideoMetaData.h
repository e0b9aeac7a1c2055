// What is known of one film; see MediaMetaData for the rules of texts and ownership.
#pragma once

#include <vector>

#include "FileScanner/MediaMetaData.h"

class AudioMetaData;

class ORX_API VideoMetaData : public MediaMetaData {
 public:
  ~VideoMetaData() override;

  int GetHeight() const { return Height_; }
  void SetHeight(int value) { Height_ = value; }
  int GetWidth() const { return Width_; }
  void SetWidth(int value) { Width_ = value; }
  long GetVideoBitrate() const { return VideoBitrate_; }
  void SetVideoBitrate(long value) { VideoBitrate_ = value; }
  double GetVideoFrameRate() const { return VideoFrameRate_; }
  void SetVideoFrameRate(double value) { VideoFrameRate_ = value; }
  double GetVideoLevel() const { return VideoLevel_; }
  void SetVideoLevel(double value) { VideoLevel_ = value; }
  char* GetDuration() const { return Duration_.Get(); }
  void SetDuration(const char* text) { Duration_.Set(text); }
  int GetAlbumArtOffset() const { return AlbumArtOffset_; }
  void SetAlbumArtOffset(int value) { AlbumArtOffset_ = value; }
  int GetAlbumArtLength() const { return AlbumArtLength_; }
  void SetAlbumArtLength(int value) { AlbumArtLength_ = value; }
  // The sound track, null for none; the record takes the ownership over.  A track that another one
  // or null supersedes lives until the record is destroyed.
  AudioMetaData* GetAudioData() const { return AudioData_; }
  void SetAudioData(AudioMetaData* track);
  int GetThumbnailOffset() const { return ThumbnailOffset_; }
  void SetThumbnailOffset(int value) { ThumbnailOffset_ = value; }
  int GetThumbnailLength() const { return ThumbnailLength_; }
  void SetThumbnailLength(int value) { ThumbnailLength_ = value; }
  int GetThumbnailHeight() const { return ThumbnailHeight_; }
  void SetThumbnailHeight(int value) { ThumbnailHeight_ = value; }
  int GetThumbnailWidth() const { return ThumbnailWidth_; }
  void SetThumbnailWidth(int value) { ThumbnailWidth_ = value; }
  char* GetThumbnailURI() const { return ThumbnailURI_.Get(); }
  void SetThumbnailURI(const char* text) { ThumbnailURI_.Set(text); }

 private:
  int Height_ = 0;                      // pixels
  int Width_ = 0;                       // pixels
  long VideoBitrate_ = 0;               // bits per second
  double VideoFrameRate_ = 0;           // frames per second
  double VideoLevel_ = 0;               // codec level, e.g. 1.3
  orx::OwnedText Duration_;             // "1:02:03.004"; milliseconds ("3723004") from the platform
  int AlbumArtOffset_ = 0;              // of embedded cover art, bytes from the start of the file
  int AlbumArtLength_ = 0;              // bytes
  AudioMetaData* AudioData_ = nullptr;  // owned
  std::vector<AudioMetaData*> earlierTracks_;  // owned
  int ThumbnailOffset_ = 0;                    // bytes from the start of the file
  int ThumbnailLength_ = 0;                    // bytes
  int ThumbnailHeight_ = 0;                    // pixels
  int ThumbnailWidth_ = 0;                     // pixels
  orx::OwnedText ThumbnailURI_;                // resource name
};
