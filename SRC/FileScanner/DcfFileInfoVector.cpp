#include "FileScanner/DcfFileInfoVector.h"

#include <algorithm>

#include "FileScanner/DcfUri.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXLog.h"
#include "Platform/CameraPlatform.h"

namespace {

// The mode may change at any time, so every decision asks for it.
bool SharesPhotosAlone() {
  return GetTandemixMode() == orx::kModePhoto || GetTandemixMode() == orx::kModePhotoObject;
}

}  // namespace

DcfFileInfoVector* DcfFileInfoVector::mpDcfFileInfoVectorInstance = nullptr;

DcfFileInfoVector* DcfFileInfoVector::GetInstance() {
  if (mpDcfFileInfoVectorInstance == nullptr)
    mpDcfFileInfoVectorInstance = orx::Noted(new (std::nothrow) DcfFileInfoVector, __func__);
  return mpDcfFileInfoVectorInstance;
}

void DcfFileInfoVector::DestroyInstance() {
  delete mpDcfFileInfoVectorInstance;
  mpDcfFileInfoVectorInstance = nullptr;
}

// The platform lists the newest file at index 0, so a list that has grown by some files is brought
// up to date by reading that many of the lowest indexes, the oldest of them first.
int DcfFileInfoVector::addToDCFInfoVector() try {
  ORX_LOG_TIME(">>>> FILE_URI start");
  const int total = orx::SharedFileCount();
  if (total == nTotalCnt) {
    ORX_LOG_INFO("[DcfFileInfoVector::addToDCFInfoVector] !!! No New Files added  !!!\n");
    bListExisted = true;
    nNewFilesAdded = 0;
    return 1;
  }

  nNewFilesAdded = 0;
  bListExisted = nTotalCnt != 0;
  const int start =
      bListExisted ? total - nTotalCnt - 1 : std::min(total, orx::kSharedFileLimit) - 1;
  if (start >= 0 && !ReadFiles(start, total)) {
    nTotalCnt = 0;
    return 0;
  }

  ORX_LOG_INFO("[DcfFileInfoVector::addToDCFInfoVector] Total Files in DCF Vector = %d \n",
               getDcfIndexVectorSize());
  if (total > orx::kSharedFileLimit) DropOldestFiles();
  nTotalCnt = total;
  nCumulativeAdded += nNewFilesAdded;
  ORX_LOG_TIME(">>>> FILE_URI stop");
  return 1;
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  nTotalCnt = 0;
  return 0;
}

// Walks from `start` down to index 0.  Files that are not shared are made up for by older ones,
// from just above the range that was read; such a second range does not end where the first one
// began unless another file was passed over, so entries may be listed twice.  False when the
// platform fails or the walk is cancelled; what was added stays.
bool DcfFileInfoVector::ReadFiles(int start, int total) {
  int rangeStart = start;
  int resumeMark = 0;
  int passedOver = 0;
  for (int index = start;;) {
    if (bCancelFlag) {
      ORX_LOG_INFO("[DataBaseMgr::addFileUriToTable] bInvalidateAllItemsCancelFlag is TRUE..\n");
      return false;
    }
    const char* uri = orx::SharedUriAt(index);
    if (uri == nullptr) return false;

    const bool added = AddFile(index, uri);
    if (!added) ORX_LOG_INFO(" Total UnSupport File = %d \n", ++passedOver);
    if (added && nNewFilesAdded >= unsigned{orx::kSharedFileLimit}) {
      ORX_LOG_INFO(
          "===>Exit Form Loop <=== \ndcfindex = %d, vDirFileNum= %d,  exception count = %d, total "
          "files = %d, NewFilesadded = %d\n",
          index, vDirFileNum.back(), passedOver, total, static_cast<int>(nNewFilesAdded));
      return true;
    }

    // A file that was passed over ends the range at index 0 alone.
    const bool rangeEnds = index == 0 || (added && index == resumeMark);
    if (rangeEnds && passedOver > 0 && total > orx::kSharedFileLimit) {
      if (total - 1 == rangeStart ||
          nCumulativeAdded + nNewFilesAdded >= unsigned{orx::kSharedFileLimit}) {
        ORX_LOG_INFO(
            "[DcfFileInfoVector::addToDCFInfoVector] <<<< BREAK >>>>> \n nNewFilesAdded = %d , "
            "nTotalCnt = %d, nIndexToStart = %d \n",
            static_cast<int>(nNewFilesAdded), total, rangeStart);
        return true;
      }
      resumeMark = rangeStart + 1;
      rangeStart += std::min(passedOver, total - 1 - rangeStart);
      passedOver = 0;
      index = rangeStart;
    } else if (--index < 0) {
      return true;
    }
  }
}

// Adds the file to the lists unless it is not shared in the current mode.
bool DcfFileInfoVector::AddFile(int index, const char* uri) {
  DLNA_FILE_TYPE type = DLNA_FILE_TYPE_NONE;
  if (SharesPhotosAlone() && supportFileCheck(orx::DcfUriExtension(uri), uri, &type) == 0)
    return false;
  const orx::SharedFileLists lists = {&vDirFileNum, &vFileType, &vDcfIndex, &vDirName, &vFilePath};
  lists.Append(orx::ParseDcfUri(uri), index, type, &currentDirName_);
  ++nNewFilesAdded;
  return true;
}

// Keeps the lists within the limit once new files have come behind those of earlier calls.
void DcfFileInfoVector::DropOldestFiles() {
  const int excess = std::max(0, getDcfIndexVectorSize() - orx::kSharedFileLimit);
  ORX_LOG_INFO(
      "[DcfFileInfoVector::addToDCFInfoVector] 1000 pics over, Remove %d from DCF Vector if "
      "already vector exists \n",
      excess);
  if (nTotalCnt == 0) return;
  const orx::SharedFileLists lists = {&vDirFileNum, &vFileType, &vDcfIndex, &vDirName, &vFilePath};
  lists.EraseOldest(excess);
}

void DcfFileInfoVector::CancelInvalidateAllItems() { bCancelFlag = true; }

int DcfFileInfoVector::supportFileCheck(const char* extension, const char* uri,
                                        DLNA_FILE_TYPE* type) {
  DLNA_FILE_TYPE found = DLNA_FILE_TYPE_NONE;
  switch (orx::DcfKindOf(extension)) {
    case orx::DcfKind::kRaw:
      break;
    case orx::DcfKind::kMultiPicture:
      if (!SharesPhotosAlone()) found = DLNA_FILE_TYPE_IMAGE;
      break;
    case orx::DcfKind::kFilm:
      if (!SharesPhotosAlone()) found = DLNA_FILE_TYPE_VIDEO;
      break;
    case orx::DcfKind::kOther:
      found = DLNA_FILE_TYPE_IMAGE;
      if (!SharesPhotosAlone() && orx::PlatformFileType(uri) == DLNA_FILE_TYPE_3D)
        found = DLNA_FILE_TYPE_3D;
      break;
  }
  if (type != nullptr) *type = found;
  return found != DLNA_FILE_TYPE_NONE ? 1 : 0;
}

DLNA_FILE_TYPE DcfFileInfoVector::convertFileType(int platformType) {
  return orx::FileTypeFromPlatform(platformType);
}

int DcfFileInfoVector::isInDirFileNumVector(int number) {
  return std::find(vDirFileNum.begin(), vDirFileNum.end(), number) != vDirFileNum.end() ? 1 : 0;
}

int DcfFileInfoVector::getDirNumVectorSize() const { return orx::ListSize(vDirNum); }
int DcfFileInfoVector::getDirFileNumVectorSize() const { return orx::ListSize(vDirFileNum); }
int DcfFileInfoVector::getFileTypeVectorSize() const { return orx::ListSize(vFileType); }
int DcfFileInfoVector::getDcfIndexVectorSize() const { return orx::ListSize(vDcfIndex); }
int DcfFileInfoVector::getDirNameVectorSize() const { return orx::ListSize(vDirName); }
int DcfFileInfoVector::getFilePathVectorSize() const { return orx::ListSize(vFilePath); }

int DcfFileInfoVector::getDirNumVectorAt(int index) const { return orx::NumberAt(vDirNum, index); }
int DcfFileInfoVector::getDirFileNumVectorAt(int index) const {
  return orx::NumberAt(vDirFileNum, index);
}
int DcfFileInfoVector::getFileTypeVectorAt(int index) const {
  return orx::NumberAt(vFileType, index);
}
int DcfFileInfoVector::getDcfIndexVectorAt(int index) const {
  return orx::NumberAt(vDcfIndex, index);
}

std::string& DcfFileInfoVector::getDirNameVectorAt(int index) {
  return orx::TextAt(vDirName, index);
}
std::string& DcfFileInfoVector::getFilePathVectorAt(int index) {
  return orx::TextAt(vFilePath, index);
}
