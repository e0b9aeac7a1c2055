#include "FileScanner/MediaFileInfos.h"

MediaFileInfos* MediaFileInfos::mpThisInstance = nullptr;

MediaFileInfos* MediaFileInfos::GetInstance() {
  if (mpThisInstance == nullptr) mpThisInstance = new MediaFileInfos;
  return mpThisInstance;
}

void MediaFileInfos::DestroyInstance() {
  delete mpThisInstance;
  mpThisInstance = nullptr;
}
