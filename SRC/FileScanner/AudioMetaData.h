// What is known of one sound file or of a film's sound track; see MediaMetaData for the rules of
// texts and ownership.
#pragma once

#include "FileScanner/MediaMetaData.h"

class ORX_API AudioMetaData : public MediaMetaData {
 public:
  ~AudioMetaData() override;

  int GetNumChannel() const { return NumChannel_; }
  void SetNumChannel(int value) { NumChannel_ = value; }
  int GetBitrate() const { return Bitrate_; }
  void SetBitrate(int value) { Bitrate_ = value; }
  int GetFrequency() const { return Frequency_; }
  void SetFrequency(int value) { Frequency_ = value; }
  int GetTrackNumber() const { return TrackNumber_; }
  void SetTrackNumber(int value) { TrackNumber_ = value; }
  char* GetArtist() const { return Artist_.Get(); }
  void SetArtist(const char* text) { Artist_.Set(text); }
  char* GetDuration() const { return Duration_.Get(); }
  void SetDuration(const char* text) { Duration_.Set(text); }
  char* GetAlbumTitle() const { return AlbumTitle_.Get(); }
  void SetAlbumTitle(const char* text) { AlbumTitle_.Set(text); }
  char* GetAlbumArtist() const { return AlbumArtist_.Get(); }
  void SetAlbumArtist(const char* text) { AlbumArtist_.Set(text); }
  int GetAlbumArtOffset() const { return AlbumArtOffset_; }
  void SetAlbumArtOffset(int value) { AlbumArtOffset_ = value; }
  int GetAlbumArtLength() const { return AlbumArtLength_; }
  void SetAlbumArtLength(int value) { AlbumArtLength_ = value; }

 private:
  int NumChannel_ = 0;
  int Bitrate_ = 0;    // bits per second
  int Frequency_ = 0;  // samples per second
  int TrackNumber_ = 0;
  orx::OwnedText Artist_;
  orx::OwnedText Duration_;  // "1:02:03" or "1:02:03.004"
  orx::OwnedText AlbumTitle_;
  orx::OwnedText AlbumArtist_;
  int AlbumArtOffset_ = 0;  // of embedded cover art, bytes from the start of the file
  int AlbumArtLength_ = 0;  // bytes
};
