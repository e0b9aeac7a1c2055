// The scanner's life, the server's profile list and the filter that every parsed file passes.
#include "FileScanner/DirectoryScanner.h"

#include <cstring>

#include "FileScanner/CancelRequests.h"
#include "FileScanner/FileParserFramework.h"
#include "FileScanner/MediaMetaData.h"
#include "OSAL/Fault.h"
#include "OSAL/UniqueValueGenerator.h"

// Entries are separated by ", " and four tabs.
#define ORX_SEPARATOR ", \t\t\t\t"
#define ORX_IMAGE_FLAGS ";DLNA.ORG_OP=01;DLNA.ORG_FLAGS=00f00000000000000000000000000000"
#define ORX_STREAM_FLAGS ";DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000"

const char* pProfiles =
    "http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_SM" ORX_IMAGE_FLAGS ORX_SEPARATOR
    "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3" ORX_STREAM_FLAGS ORX_SEPARATOR
    "http-get:*:audio/mp4:DLNA.ORG_PN=AAC_ISO_320" ORX_STREAM_FLAGS ORX_SEPARATOR
    "http-get:*:audio/3gpp:DLNA.ORG_PN=AAC_ISO_320" ORX_STREAM_FLAGS ORX_SEPARATOR
    "http-get:*:audio/vnd.dlna.adts:DLNA.ORG_PN=AAC_ADTS_320" ORX_STREAM_FLAGS ORX_SEPARATOR
    "http-get:*:video/mp4:DLNA.ORG_PN=AVC_MP4_BL_CIF15_AAC_520" ORX_STREAM_FLAGS ORX_SEPARATOR
    "http-get:*:video/mp4:DLNA.ORG_PN=AVC_MP4_BL_L2_CIF30_AAC" ORX_STREAM_FLAGS ORX_SEPARATOR
    "http-get:*:audio/mpeg:*" ORX_SEPARATOR "http-get:*:audio/x-ms-wma:*" ORX_SEPARATOR
    "http-get:*:audio/wav:*" ORX_SEPARATOR "http-get:*:audio/mp4:*" ORX_SEPARATOR
    "http-get:*:application/ogg:*" ORX_SEPARATOR "http-get:*:image/jpeg:*" ORX_SEPARATOR
    "http-get:*:image/gif:*" ORX_SEPARATOR "http-get:*:video/mpeg:*" ORX_SEPARATOR
    "http-get:*:video/x-msvideo:*" ORX_SEPARATOR "http-get:*:video/avi:*" ORX_SEPARATOR
    "http-get:*:video/MP4V-ES:*" ORX_SEPARATOR "http-get:*:video/x-ms-wmv:*";

#undef ORX_SEPARATOR
#undef ORX_IMAGE_FLAGS
#undef ORX_STREAM_FLAGS

namespace {

constexpr char kAnyProfile[] = "*";  // served without a profile name

}  // namespace

DirectoryScanner* DirectoryScanner::singleInstance = nullptr;

DirectoryScanner* DirectoryScanner::GetInstance() {
  if (singleInstance == nullptr)
    orx::Guarded(__func__, [] { singleInstance = new DirectoryScanner; });
  return singleInstance;
}

void DirectoryScanner::DestroyInstance() {
  delete singleInstance;
  singleInstance = nullptr;
}

DirectoryScanner::DirectoryScanner()
    : pFMParserFramework(nullptr), bDirectoryScanCancelFlag(false), pSupportedProfiles(nullptr) {
  _SetFMParserFramework(new FileParserFramework);
}

DirectoryScanner::~DirectoryScanner() {
  _CleanUpRelations();
  UniqueValueGenerator::DestroyInstance();
  bDirectoryScanCancelFlag = false;
  orx::CancelRequests::ofScanner = false;
}

void DirectoryScanner::_CleanUpRelations() {
  delete pFMParserFramework;
  pFMParserFramework = nullptr;
}

// Without memory there is no list, so that nothing is served that the new one may not have; whoever
// holds on to an earlier one can still read it.
void DirectoryScanner::SetDlnaProfiles(const char* list) {
  if (list == nullptr) return;
  const orx::FaultWatch watch;
  pSupportedProfiles = profileLists_.Set(list) ? profileLists_.Get() : nullptr;
}

void DirectoryScanner::CancelScanDirectory() {
  bDirectoryScanCancelFlag = true;
  orx::CancelRequests::ofScanner = true;
}

bool DirectoryScanner::GetCancelFlag() { return bDirectoryScanCancelFlag; }

int DirectoryScanner::_IsProfileSupported(const char* profile) {
  if (profile == nullptr) return 0;
  if (strcmp(profile, kAnyProfile) == 0) return 1;
  if (pSupportedProfiles == nullptr) return 0;
  const size_t length = strlen(profile);
  for (const char* found = strstr(pSupportedProfiles, profile); found != nullptr;
       found = strstr(found + 1, profile)) {
    if (found[length] == ';') return 1;
    if (*found == '\0') break;  // an empty name is found at the end of the list, too
  }
  return 0;
}

int DirectoryScanner::CheckMediaFileForDLNAContent(MediaMetaData* item) {
  if (item == nullptr || item->GetDLNAProfile() == nullptr) return 0;
  if (_IsProfileSupported(item->GetDLNAProfile()) == 1) return 1;
  const char* mimeType = item->GetMimeType();
  if (pSupportedProfiles == nullptr || mimeType == nullptr) return 0;
  if (strstr(pSupportedProfiles, mimeType) == nullptr) return 0;
  item->SetDLNAProfile(kAnyProfile);
  return 1;
}
