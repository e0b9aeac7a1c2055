// The list of shared files, read anew from the platform for every scan.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "FileScanner/DataBaseGuard.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfUri.h"
#include "OSAL/ORXLog.h"
#include "Platform/CameraPlatform.h"

int DataBaseMgr::addFileUriToTable() try {
  ORX_LOG_TIME(">>>> FILE_URI start");
  SharedFileWalk walk;
  for (int index = std::min(orx::SharedFileCount(), orx::kSharedFileLimit) - 1; index >= 0;
       --index) {
    if (Cancelled()) {
      ORX_LOG_INFO("[DataBaseMgr::addFileUriToTable] bInvalidateAllItemsCancelFlag is TRUE..\n");
      return 0;
    }
    char* uri = orx::SharedUriAt(index);
    if (uri == nullptr) return 0;
    AddSharedFile(index, uri, &walk);
  }
  ORX_LOG_TIME(">>>> FILE_URI stop");
  ORX_LOG_INFO("[DcfFileInfoVector::addFileUriToTable] Total  vDirFileNum size = %d\n",
               getDirFileNumVectorSize());
  return 1;
} catch (const std::exception&) {
  OutOfMemory(__func__);
  return 0;
}

// Lists the file, and its companion if it has one, as the current sharing mode demands.
void DataBaseMgr::AddSharedFile(int index, char* uri, SharedFileWalk* walk) {
  const orx::SharedFileLists lists = {&vDirFileNum, &vFileType, &vDBIndex, &vDirName, &vFilePath};
  const int mode = GetTandemixMode();
  DLNA_FILE_TYPE type = DLNA_FILE_TYPE_NONE;
  switch (mode) {
    case orx::kModeMultiPicture:
    case orx::kModePhoto:
    case orx::kModePhotoObject:
      if (supportFileCheck(orx::DcfUriExtension(uri), uri, &type) == 0) {
        ORX_LOG_INFO("------------- Not Support File Type = %d!!!\n", type);
        ++walk->unsupported;
        return;
      }
      if (mode == orx::kModeMultiPicture && type == DLNA_FILE_TYPE_3D) {
        orx::ReplaceUriEnding(uri, "MPO");
        ORX_LOG_INFO("------------- File Type is 3D Photo [%s] !!!\n", uri);
      }
      if (index >= walk->unsupported) index -= walk->unsupported;
      lists.Append(orx::ParseDcfUri(uri), index, type, &walk->directoryName);
      return;

    case orx::kModeBackup: {
      const bool hasCompanion = duplicateFileCheck(orx::DcfUriExtension(uri), uri, &type);
      orx::DcfEntry entry = orx::ParseDcfUri(uri);
      lists.Append(entry, index + walk->companions, hasCompanion ? DLNA_FILE_TYPE_IMAGE : type,
                   &walk->directoryName);
      if (!hasCompanion) return;
      ORX_LOG_INFO("------------- Duplication File Type = %d!!!\n", type);
      if (strlen(uri) > 3)
        orx::ReplaceUriEnding(uri, type == DLNA_FILE_TYPE_IMAGE_RAW ? "KRZ" : "MPO");
      entry.path = orx::ParseDcfUri(uri).path;
      ++walk->companions;
      lists.AppendFile(entry, index + walk->companions, type);
      return;
    }

    default:
      lists.Append(orx::ParseDcfUri(uri), index, type, &walk->directoryName);
  }
}

int DataBaseMgr::supportFileCheck(const char* extension, const char* uri, DLNA_FILE_TYPE* type) {
  const bool photosAlone = GetTandemixMode() == orx::kModePhoto;
  DLNA_FILE_TYPE found = DLNA_FILE_TYPE_NONE;
  switch (orx::DcfKindOf(extension)) {
    case orx::DcfKind::kRaw:
      break;
    case orx::DcfKind::kMultiPicture:
      if (!photosAlone) found = DLNA_FILE_TYPE_IMAGE;
      break;
    case orx::DcfKind::kFilm:
      if (!photosAlone || orx::PlatformFileType(uri) != DLNA_FILE_TYPE_VIDEO_OTHER)
        found = DLNA_FILE_TYPE_VIDEO;
      break;
    case orx::DcfKind::kOther:
      found = DLNA_FILE_TYPE_IMAGE;
      if (!photosAlone && orx::PlatformFileType(uri) == DLNA_FILE_TYPE_3D)
        found = DLNA_FILE_TYPE_3D;
      break;
  }
  if (type != nullptr) *type = found;
  return found != DLNA_FILE_TYPE_NONE ? 1 : 0;
}

// Whether the camera wrote a second file beside this one, under the same number: the raw picture of
// a photo or the multi-picture file of a 3D photo.
bool DataBaseMgr::duplicateFileCheck(const char* extension, const char* uri, DLNA_FILE_TYPE* type) {
  const std::string_view text(extension != nullptr ? extension : "");
  DLNA_FILE_TYPE found = DLNA_FILE_TYPE_NONE;
  bool hasCompanion = false;
  if (text == ".MP4") {
    found = DLNA_FILE_TYPE_VIDEO;
  } else if (text == ".KRZ") {
    found = DLNA_FILE_TYPE_RAW;
  } else if (text == ".MPO") {
    found = DLNA_FILE_TYPE_MPO;
  } else {
    found = orx::PlatformFileType(uri);
    hasCompanion = found == DLNA_FILE_TYPE_IMAGE_RAW || found == DLNA_FILE_TYPE_3D;
  }
  if (type != nullptr) *type = found;
  return hasCompanion;
}

DLNA_FILE_TYPE DataBaseMgr::convertFileType(int platformType) {
  return orx::FileTypeFromPlatform(platformType);
}

int DataBaseMgr::isInDirFileNumVector(int number) {
  const bool found = std::find(vDirFileNum.begin(), vDirFileNum.end(), number) != vDirFileNum.end();
  printf(found ? "<<<< %d - Found \n" : ">>> %d - Not found \n", number);
  return found ? 1 : 0;
}

int DataBaseMgr::getDirNumVectorSize() const { return orx::ListSize(vDirNum); }
int DataBaseMgr::getDirFileNumVectorSize() const { return orx::ListSize(vDirFileNum); }
int DataBaseMgr::getFileTypeVectorSize() const { return orx::ListSize(vFileType); }
int DataBaseMgr::getDBndexVectorSize() const { return orx::ListSize(vDBIndex); }
int DataBaseMgr::getDirNameVectorSize() const { return orx::ListSize(vDirName); }
int DataBaseMgr::getFilePathVectorSize() const { return orx::ListSize(vFilePath); }

int DataBaseMgr::getDirNumVectorAt(int index) const { return orx::NumberAt(vDirNum, index); }
int DataBaseMgr::getDirFileNumVectorAt(int index) const {
  return orx::NumberAt(vDirFileNum, index);
}
int DataBaseMgr::getFileTypeVectorAt(int index) const { return orx::NumberAt(vFileType, index); }
int DataBaseMgr::getDBIndexVectorAt(int index) const { return orx::NumberAt(vDBIndex, index); }

std::string& DataBaseMgr::getDirNameVectorAt(int index) { return orx::TextAt(vDirName, index); }
std::string& DataBaseMgr::getFilePathVectorAt(int index) { return orx::TextAt(vFilePath, index); }
