// What is known of one still picture; see MediaMetaData for the rules of texts and ownership.
#pragma once

#include "FileScanner/MediaMetaData.h"

class ORX_API ImageMetaData : public MediaMetaData {
 public:
  ~ImageMetaData() override;

  int GetHeight() const { return Height_; }
  void SetHeight(int value) { Height_ = value; }
  int GetWidth() const { return Width_; }
  void SetWidth(int value) { Width_ = value; }
  char* GetDescription() const { return Description_.Get(); }
  void SetDescription(const char* text) { Description_.Set(text); }
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
  int GetScreennailOffset() const { return ScreennailOffset_; }
  void SetScreennailOffset(int value) { ScreennailOffset_ = value; }
  int GetScreennailLength() const { return ScreennailLength_; }
  void SetScreennailLength(int value) { ScreennailLength_ = value; }
  int GetScreennailHeight() const { return ScreennailHeight_; }
  void SetScreennailHeight(int value) { ScreennailHeight_ = value; }
  int GetScreennailWidth() const { return ScreennailWidth_; }
  void SetScreennailWidth(int value) { ScreennailWidth_ = value; }
  char* GetScreennailURI() const { return ScreennailURI_.Get(); }
  void SetScreennailURI(const char* text) { ScreennailURI_.Set(text); }

 private:
  int Height_ = 0;  // pixels
  int Width_ = 0;   // pixels
  orx::OwnedText Description_;
  int ThumbnailOffset_ = 0;      // of the embedded thumbnail JPEG, bytes from the start of the file
  int ThumbnailLength_ = 0;      // bytes
  int ThumbnailHeight_ = 0;      // pixels
  int ThumbnailWidth_ = 0;       // pixels
  orx::OwnedText ThumbnailURI_;  // resource name
  int ScreennailOffset_ = 0;     // of the embedded screen-size preview, bytes
  int ScreennailLength_ = 0;     // bytes
  int ScreennailHeight_ = 0;     // pixels
  int ScreennailWidth_ = 0;      // pixels
  orx::OwnedText ScreennailURI_;  // resource name
};
