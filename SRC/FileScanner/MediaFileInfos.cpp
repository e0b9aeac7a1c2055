#include "FileScanner/MediaFileInfos.h"

#include "OSAL/Fault.h"

MediaFileInfos* MediaFileInfos::mpThisInstance = nullptr;

MediaFileInfos* MediaFileInfos::GetInstance() {
  if (mpThisInstance == nullptr)
    mpThisInstance = orx::Noted(new (std::nothrow) MediaFileInfos, __func__);
  return mpThisInstance;
}

void MediaFileInfos::DestroyInstance() {
  delete mpThisInstance;
  mpThisInstance = nullptr;
}
