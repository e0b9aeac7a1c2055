#include "FileScanner/VideoMetaData.h"

#include <algorithm>

#include "FileScanner/AudioMetaData.h"

VideoMetaData::~VideoMetaData() {
  delete AudioData_;
  for (AudioMetaData* track : earlierTracks_) delete track;
}

void VideoMetaData::SetAudioData(AudioMetaData* track) {
  if (track == AudioData_) return;
  earlierTracks_.erase(std::remove(earlierTracks_.begin(), earlierTracks_.end(), track),
                       earlierTracks_.end());
  if (AudioData_ != nullptr) earlierTracks_.push_back(AudioData_);
  AudioData_ = track;
}
