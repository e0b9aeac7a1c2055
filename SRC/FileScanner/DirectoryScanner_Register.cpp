// The registration of files: each becomes a metadata record, and the record becomes rows.
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/FileInfomation.h"
#include "FileScanner/FileParserFramework.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/PlatformRecord.h"
#include "OSAL/Fault.h"
#include "OSAL/LocalTimeScope.h"
#include "OSAL/ORXLog.h"
#include "OSAL/TextPtr.h"
#include "OSAL/UniqueValueGenerator.h"

namespace {

constexpr unsigned kImage = 1;
constexpr int kFailed = -1;
constexpr char kTopDirectory[] = "0";
constexpr size_t kDateSize = 16;  // of the buffer behind __ExtractFileSizeAndDateFromName

// Names come from the one generator of the process.
UniqueValueGenerator& Names() { return orx::Existing(UniqueValueGenerator::GetInstance()); }

void SetUri(MediaMetaData* record, char* name) {
  const orx::TextPtr owned(name);
  record->SetURI(owned.get());
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
// `message` is one of the texts below, with one place for `name`; null is not logged.
int Refuse(const char* message, const char* name) {
  if (message != nullptr) ORX_LOG_INFO(message, name != nullptr ? name : "");
  return 0;
}
#pragma GCC diagnostic pop

// The machine failed; what it failed at was logged.
int LeaveOut(const char* fullPath) {
  orx::NoteLeftOut(fullPath, "as it could not be read whole");
  return 0;
}

// The registrations that parse the file.
struct ParsedRegistration {
  MediaMetaData* (FileParserFramework::*parse)(const FileInfomation*);
  void (DirectoryScanner::*insert)(MediaMetaData*);
  bool uriHasSortIndex;
  const char* failedMessage;
  const char* unsupportedMessage;
};

const ParsedRegistration kPlainRegistration = {
    &FileParserFramework::HandleFile,
    &DirectoryScanner::InsertItem,
    false,
    "[DirectoryScanner::HandleFile] Media file [%s] parsing failed",
    "[DirectoryScanner::HandleFile] Unsupported media file [%s]",
};

const ParsedRegistration kSharedFileRegistration = {
    &FileParserFramework::HandleFile2,
    &DirectoryScanner::InsertItem2,
    true,
    "[DirectoryScanner::HandleFile] Media file [%s] parsing failed.\n",
    "[DirectoryScanner::HandleFile] Unsupported media file [%s]\n",
};

using Parse = MediaMetaData* (FileParserFramework::*)(const FileInfomation*);

std::unique_ptr<MediaMetaData> ParsedRecord(DirectoryScanner* scanner, Parse parse,
                                            const FileInfomation& file) {
  FileParserFramework* parsers = scanner->_GetFMParserFramework();
  return std::unique_ptr<MediaMetaData>(parsers != nullptr ? (parsers->*parse)(&file) : nullptr);
}

// What HandleFile and HandleFile2 do.  `watch` began before `file` was made: a file that the
// machine failed for is left to the next scan.
int RegisterParsed(DirectoryScanner* scanner, const ParsedRegistration& kind,
                   const FileInfomation& file, const char* parentId, const orx::FaultWatch& watch) {
  const auto record = ParsedRecord(scanner, kind.parse, file);
  if (record == nullptr) return Refuse(kind.failedMessage, file.GetFileName());
  if (scanner->CheckMediaFileForDLNAContent(record.get()) == 0)
    return Refuse(kind.unsupportedMessage, file.GetFileName());
  record->SetDirectoryID(parentId);
  SetUri(record.get(), kind.uriHasSortIndex
                           ? Names().GetUniqueURIMA(record->GetEXT(), record->GetSortIndex())
                           : Names().GetUniqueURIMA(record->GetEXT()));
  if (watch.Seen()) return LeaveOut(file.GetFullFileName());
  (scanner->*kind.insert)(record.get());
  return 1;
}

// A shared picture, which the platform serves with a profile of its own whatever its size.
ImageMetaData* NewSharedPicture(DirectoryScanner* scanner, const char* /*path*/) {
  ImageMetaData* record = scanner->__ExtractImageMetadata();
  if (record == nullptr) return nullptr;
  record->SetMimeType("image/jpeg");
  record->SetType(kImage);
  record->SetDLNAProfile("DLNA_LRG");
  return record;
}

// The registrations that take everything from the platform differ in the pictures they accept and
// in what they log.
struct PlatformRegistration {
  orx::PictureRule pictures;
  const char* noSizeMessage;
  const char* noMemoryMessage;
  const char* noExtensionMessage;
  const char* unsupportedMessage;
  const char* failedMessage;
};

const PlatformRegistration kObjectOnlyRegistration = {
    {&JPEG_Extension, NewSharedPicture},
    nullptr,
    nullptr,
    "\n[DirectoryScanner::HandleFile] [%s] is not a valid file with extension \n",
    nullptr,
    "[DirectoryScanner::HandleFileXQ] Media file [%s] parsing failed.\n",
};

const PlatformRegistration kBackupRegistration = {
    {&PC_JPEG_Extension, NewSharedPicture},
    "[DirectoryScanner::HandleFileAutoBackup] Failed to extract date and size [%s]\n",
    "[DirectoryScanner::HandleFileAutoBackup] Failed to create FileInfo instance [%s] \n",
    "\n[DirectoryScanner::HandleFileAutoBackup] [%s] is not a valid file with extension \n",
    "[DirectoryScanner::HandleFileAutoBackup] Media file [%s] parsing failed.. Unsupported "
    "Extension \n",
    "[DirectoryScanner::HandleFileAutoBackup] Media file [%s] parsing failed.\n",
};

// What HandleFileXQ and HandleFileAutoBackup do; `sortIndex` becomes decimal text.
int RegisterFromPlatform(DirectoryScanner* scanner, const PlatformRegistration& kind,
                         const char* dir, const char* parentId, const char* name,
                         const char* fullPath, int dcfIndex, int sortIndex, int fileType) {
  const orx::FaultWatch watch;
  long long size = 0;
  char date[kDateSize] = {};
  if (scanner->__ExtractFileSizeAndDateFromName(fullPath, &size, date) == 0)
    return Refuse(kind.noSizeMessage, fullPath);

  const std::unique_ptr<FileInfomation> file(orx::Noted(
      new (std::nothrow) FileInfomation(dir, name, fullPath, dcfIndex, sortIndex, fileType),
      __func__));
  if (file == nullptr) return Refuse(kind.noMemoryMessage, name);
  if (file->GetExtension() == nullptr) return Refuse(kind.noExtensionMessage, name);

  bool supported = false;
  const std::unique_ptr<MediaMetaData> record =
      orx::PlatformRecord(scanner, kind.pictures, file->GetExtension(), fullPath, &supported);
  if (!supported) return Refuse(kind.unsupportedMessage, name);
  if (record == nullptr) return Refuse(kind.failedMessage, name);

  record->SetEXT(file->GetExtension());
  record->SetFullPath(fullPath);
  const orx::TextPtr title(MediaMetaData::GetTitleFromFullPath(fullPath));
  record->SetTitle(title.get());
  record->SetDate(date);
  record->SetSize(size);
  record->SetSortIndex(std::to_string(sortIndex).c_str());
  record->SetDirectoryID(parentId);
  SetUri(record.get(), Names().GetUniqueURIMA(record->GetEXT(), record->GetSortIndex()));
  if (watch.Seen()) return LeaveOut(fullPath);
  scanner->InsertItemInObjectTable(record.get());
  return 1;
}

// Writes the item, as a new one or under the id that a client was given.  False when it is not
// known under that id, and when the machine failed before anything was written.
bool WriteItem(DataBaseMgr* database, MediaMetaData* record, const char* id,
               const orx::FaultWatch& watch) {
  if (id == nullptr)
    record->SetDirectoryID(kTopDirectory);
  else
    SetUri(record, Names().GetUniqueURIMA(record->GetEXT()));
  if (watch.Seen()) return false;
  if (id != nullptr) return database->UpdateDBForNewItem(record, id) != 0;
  database->InsertMetaData(record);
  return true;
}

}  // namespace

int DirectoryScanner::HandleFile(const char* dir, const char* parentId, const char* name,
                                 const char* fullPath) {
  return orx::Guarded(__func__, 0, [&] {
    const orx::FaultWatch watch;
    const FileInfomation file(dir, name, fullPath);
    return RegisterParsed(this, kPlainRegistration, file, parentId, watch);
  });
}

int DirectoryScanner::HandleFile2(const char* dir, const char* parentId, const char* name,
                                  const char* fullPath, int dcfIndex, int sortIndex, int fileType) {
  return orx::Guarded(__func__, 0, [&] {
    const orx::FaultWatch watch;
    const FileInfomation file(dir, name, fullPath, dcfIndex, sortIndex, fileType);
    return RegisterParsed(this, kSharedFileRegistration, file, parentId, watch);
  });
}

int DirectoryScanner::HandleFileXQ(const char* dir, const char* parentId, const char* name,
                                   const char* fullPath, int dcfIndex, int sortIndex,
                                   int fileType) {
  return orx::Guarded(__func__, 0, [&] {
    return RegisterFromPlatform(this, kObjectOnlyRegistration, dir, parentId, name, fullPath,
                                dcfIndex, sortIndex, fileType);
  });
}

int DirectoryScanner::HandleFileAutoBackup(const char* dir, const char* parentId, const char* name,
                                           const char* fullPath, int dcfIndex, int sortIndex,
                                           int fileType) {
  return orx::Guarded(__func__, 0, [&] {
    return RegisterFromPlatform(this, kBackupRegistration, dir, parentId, name, fullPath, dcfIndex,
                                sortIndex, fileType);
  });
}

int DirectoryScanner::ParseAndRegisterFile(const char* dbPath, const char* fullPath,
                                           const char* parent) try {
  if (fullPath == nullptr || strrchr(fullPath, '/') == nullptr) return kFailed;
  const orx::LocalTimeScope zone;
  const orx::FaultWatch watch;
  std::unique_ptr<MediaMetaData> record;
  {
    const std::string path(fullPath);
    const size_t slash = path.rfind('/');
    const FileInfomation file(path.substr(0, slash).c_str(), path.c_str() + slash + 1, fullPath);
    ORX_LOG_INFO("[DirectoryScanner::ParseAndRegisterFile] File [%s]", fullPath);
    record = ParsedRecord(this, &FileParserFramework::HandleFile, file);
  }
  if (CheckMediaFileForDLNAContent(record.get()) == 0) return kFailed;

  DataBaseMgr& database = orx::Existing(DataBaseMgr::GetInstance());
  if (database.OpenDB(dbPath) == 0) {
    DataBaseMgr::DestroyInstance();
    return kFailed;
  }
  const bool written = WriteItem(&database, record.get(), parent, watch);
  DataBaseMgr::DestroyInstance();
  if (written) return static_cast<int>(record->GetType());
  ORX_LOG_INFO("File [%s] failed to register", fullPath);
  return kFailed;
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  return kFailed;
}
