#include "FileScanner/VideoMetaData.h"

#include "FileScanner/AudioMetaData.h"

VideoMetaData::~VideoMetaData() {
  delete AudioData_;
  for (AudioMetaData* track : earlierTracks_) delete track;
}

void VideoMetaData::SetAudioData(AudioMetaData* track) {
  if (track == nullptr || track == AudioData_) return;
  if (AudioData_ != nullptr) earlierTracks_.push_back(AudioData_);
  AudioData_ = track;
}
