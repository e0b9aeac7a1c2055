#include "Indexer.h"

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "Log.h"
#include "host/HostPlatform.h"

namespace orxserve {
namespace {

constexpr int kPriorityError = 6;
constexpr int kBackupMode = 6;
constexpr int kObjectOnlyMode = 8;
constexpr char kCardMount[] = "/mnt/mmc";

// The server sends what it finds: the larger pictures keep their profiles as well.
constexpr char kMoreProfiles[] =
    ", http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_MED, http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG";

// The lines that tell of a scan that is lost, apart from those of single files.
bool TellsOfFailure(const std::string& line) {
  for (const char* part :
       {"what was written is undone", "OpenDB fail", "cannot be moved", "sqlite3_open error"})
    if (line.find(part) != std::string::npos) return true;
  return false;
}

}  // namespace

Indexer::Indexer(Settings settings, Log* log)
    : settings_(std::move(settings)), log_(log), scanner_(DirectoryScanner::GetInstance()) {
  HostPlatform::SetLogSink([this](int, int priority, const std::string&, const std::string& line) {
    Receive(priority, line);
  });
  if (settings_.profiles.empty()) settings_.profiles = std::string(pProfiles) + kMoreProfiles;
  scanner_->SetDlnaProfiles(settings_.profiles.c_str());
}

Indexer::~Indexer() {
  HostPlatform::SetLogSink(nullptr);
  DataBaseMgr::DestroyInstance();
  DcfFileInfoVector::DestroyInstance();
  DirectoryScanner::DestroyInstance();
}

void Indexer::Receive(int priority, const std::string& line) {
  if (priority < kPriorityError) return;
  if (TellsOfFailure(line)) failed_ = true;
  log_->Detail("library: {}", line);
}

void Indexer::ScanCard(int* changed) {
  const char* const folder = settings_.folder.c_str();
  const char* const database = settings_.database.c_str();
  HostPlatform::SetSharingMode(settings_.cardMode);
  if (!HostPlatform::ShareWholeCard(kCardMount)) {
    log_->Error("the card's DCIM cannot be read");
    return;
  }
  if (settings_.cardMode == kObjectOnlyMode) {
    scanner_->scanXQDcf(folder, database, changed);
  } else if (settings_.cardMode == kBackupMode) {
    scanner_->scanAutoBackupDcf(folder, database, changed);
  } else {
    scanner_->scanDcf(folder, database, changed);
  }
}

bool Indexer::Scan() {
  failed_ = false;
  int changed = 0;
  if (settings_.cardMode == kNoCard)
    scanner_->ScanDir(settings_.folder.c_str(), settings_.database.c_str(), &changed);
  else
    ScanCard(&changed);
  return !failed_;
}

void Indexer::Stop() { scanner_->CancelScanDirectory(); }

}  // namespace orxserve
