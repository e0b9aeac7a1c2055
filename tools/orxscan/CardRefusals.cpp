#include "CardRefusals.h"

#include <sys/stat.h>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <utility>

#include "CardMount.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "Library.h"
#include "Output.h"

namespace orxscan {
namespace {

constexpr size_t kMostShared = 1000;  // files at a time
constexpr int kMultiPictureMode = 1;
constexpr int kPhotoMode = 2;

// "/mnt/mmc/DCIM/100ORXSC/ORXA0001" stands before the extension.
constexpr size_t kExtensionAt = 31;

std::string Extension(const std::string& uri) {
  return uri.size() > kExtensionAt ? uri.substr(kExtensionAt) : "";
}

}  // namespace

CardRefusals::CardRefusals(DirectoryScanner* scanner, ScanMode scan, int sharingMode,
                           LibraryErrors errors)
    : scanner_(scanner), scan_(scan), sharingMode_(sharingMode), errors_(std::move(errors)) {
  if (scan == ScanMode::kXq) {
    DcfFileInfoVector* list = DcfFileInfoVector::GetInstance();
    for (int i = 0; i < list->getFilePathVectorSize(); ++i)
      listed_.insert(kCardPath + list->getFilePathVectorAt(i));
  }
}

LeftOut CardRefusals::Of(const std::vector<std::string>& shared,
                         const std::set<std::string>& registered) const {
  LeftOut leftOut;
  for (size_t i = 0; i < shared.size(); ++i) {
    if (registered.count(shared[i]) != 0) continue;
    const Reason reason = WithScanErrors(WhyLeftOut(shared[i], i), shared[i], errors_);
    (reason.missing ? leftOut.missing : leftOut.refused).push_back({shared[i], reason.text});
  }
  return leftOut;
}

Reason CardRefusals::WhyLeftOut(const std::string& uri, size_t index) const {
  const QuietLibrary library;
  struct stat64 status = {};
  if (stat64(uri.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR))
    return {strerror(errno)};
  if (uri.find('"') != std::string::npos) return {"its path has a double quote in it"};
  if (!KindIsShared(uri)) return {fmt::format("not shared in mode {}", sharingMode_)};
  const bool listed = scan_ == ScanMode::kXq ? listed_.count(uri) != 0 : index < kMostShared;
  if (!listed) return {fmt::format("not among the {} newest files", kMostShared)};
  if (!ScanTakesKind(uri))
    return {fmt::format("this scan takes no {} files", Extension(uri).substr(1))};
  return ReasonToRefuse(scanner_, uri, library);
}

bool CardRefusals::KindIsShared(const std::string& uri) const {
  const std::string extension = Extension(uri);
  DLNA_FILE_TYPE type = DLNA_FILE_TYPE_NONE;
  const bool photosAlone = sharingMode_ == kPhotoMode || sharingMode_ == kObjectOnlyMode;
  if (scan_ == ScanMode::kXq)
    return !photosAlone || DcfFileInfoVector::GetInstance()->supportFileCheck(
                               extension.c_str(), uri.c_str(), &type) == 1;
  return (!photosAlone && sharingMode_ != kMultiPictureMode) ||
         DataBaseMgr::GetInstance()->supportFileCheck(extension.c_str(), uri.c_str(), &type) == 1;
}

bool CardRefusals::ScanTakesKind(const std::string& uri) const {
  std::string extension = Extension(uri);
  if (scan_ == ScanMode::kFull || extension.size() < 2) return true;
  extension.erase(0, 1);
  for (char& c : extension) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
  const char* pictures = scan_ == ScanMode::kXq ? JPEG_Extension : PC_JPEG_Extension;
  return strstr(pictures, extension.c_str()) != nullptr ||
         strstr(MP4_Extension, extension.c_str()) != nullptr;
}

}  // namespace orxscan
