// The list of shared files, set by hand or taken from the DCF tree of a card.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <memory>
#include <set>
#include <tuple>
#include <utility>

#include "FileScanner/DcfFileInfoVector.h"
#include "Platform/CameraPlatform.h"
#include "host/HostPlatform.h"

namespace {

constexpr char kMountPrefix[] = "/mnt/mmc";
constexpr char kDcim[] = "/DCIM";
constexpr size_t kDcfNameLength = 8;  // of a folder, and of a file before its extension
constexpr size_t kNumberLength = 4;   // of a file, at the end of its name
constexpr size_t kFolderNumberLength = 3;

constexpr char kRawExtension[] = ".KRZ";
constexpr const char* kPictureExtensions[] = {".JPG", ".JPEG"};
constexpr const char* kFilmExtensions[] = {".MP4", ".AVI", ".MOV", ".M4V",
                                           ".3GP", ".WMV", ".MPG", ".MPEG"};
constexpr const char* kOtherExtensions[] = {".MPO",  ".KRZ", ".M4A", ".M4B", ".AAC",
                                            ".ADTS", ".AC3", ".MP3", ".WMA", ".WAV"};

struct SharedFile {
  std::string uri;
  bool hasRawCompanion = false;  // known from the card's tree; else the file system is asked
  std::vector<char> handedOut;   // the writable copy that the library got last
};

std::vector<SharedFile>& List() {
  static std::vector<SharedFile> list;
  return list;
}

std::string UpperCase(std::string text) {
  for (char& c : text) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
  return text;
}

// The last extension of a file name or path with its dot, in upper case; empty when there is none.
std::string Extension(const std::string& path) {
  const size_t dot = path.find_last_of("./");
  return dot == std::string::npos || path[dot] == '/' ? "" : UpperCase(path.substr(dot));
}

std::string WithoutExtension(const std::string& path) {
  const size_t dot = path.find_last_of("./");
  return dot == std::string::npos || path[dot] == '/' ? path : path.substr(0, dot);
}

template <size_t kCount>
bool IsOneOf(const std::string& extension, const char* const (&list)[kCount]) {
  return std::find(std::begin(list), std::end(list), extension) != std::end(list);
}

bool IsMedia(const std::string& extension) {
  return IsOneOf(extension, kPictureExtensions) || IsOneOf(extension, kFilmExtensions) ||
         IsOneOf(extension, kOtherExtensions);
}

bool IsRegularFile(const std::string& path) {
  struct stat64 status = {};
  return stat64(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// What the tree of the card did not give, by the path below the mount.
std::vector<HostPlatform::UnreadEntry>& Unread() {
  static std::vector<HostPlatform::UnreadEntry> entries;
  return entries;
}

// Notes an entry that cannot be read, unless that is because there is none.
void NoteUnread(const std::string& below, int error) {
  if (error == ENOENT || error == ENOTDIR || error == ELOOP) return;
  Unread().push_back({kMountPrefix + below, error});
}

bool RawLiesBeside(const std::string& path) {
  const std::string stem = WithoutExtension(path);
  return IsRegularFile(stem + ".KRZ") || IsRegularFile(stem + ".krz");
}

DLNA_FILE_TYPE TypeOf(const std::string& uri, bool hasRawCompanion) {
  const std::string extension = Extension(uri);
  if (IsOneOf(extension, kFilmExtensions)) return DLNA_FILE_TYPE_VIDEO;
  if (extension == ".MPO") return DLNA_FILE_TYPE_MPO;
  if (extension == kRawExtension) return DLNA_FILE_TYPE_RAW;
  const bool picture = IsOneOf(extension, kPictureExtensions);
  return picture && hasRawCompanion ? DLNA_FILE_TYPE_IMAGE_RAW : DLNA_FILE_TYPE_IMAGE;
}

bool AllDigits(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// A name of the card's tree and the number it carries.
struct Numbered {
  int number;
  std::string name;
};

bool NewestFirst(const Numbered& a, const Numbered& b) {
  return std::tie(a.number, a.name) > std::tie(b.number, b.name);
}

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

// The names in a directory of the card; false, with errno, when it cannot be opened.
bool Names(const std::string& mount, const std::string& below, std::vector<std::string>* names) {
  const std::unique_ptr<DIR, CloseDirectory> directory(opendir((mount + below).c_str()));
  if (directory == nullptr) return false;
  errno = 0;
  while (const struct dirent64* entry = readdir64(directory.get())) {
    names->emplace_back(entry->d_name);
    errno = 0;
  }
  if (errno != 0) NoteUnread(below, errno);
  return true;
}

// Whether an entry of the card is a regular file.
bool IsFileOfCard(const std::string& mount, const std::string& below) {
  struct stat64 status = {};
  if (stat64((mount + below).c_str(), &status) == 0) return S_ISREG(status.st_mode);
  NoteUnread(below, errno);
  return false;
}

std::vector<Numbered> DcfFolders(const std::vector<std::string>& names) {
  std::vector<Numbered> folders;
  for (const std::string& name : names) {
    const std::string digits = name.substr(0, kFolderNumberLength);
    if (name.size() == kDcfNameLength && AllDigits(digits))
      folders.push_back({std::stoi(digits), name});
  }
  std::sort(folders.begin(), folders.end(), NewestFirst);
  return folders;
}

std::vector<Numbered> DcfFiles(const std::vector<std::string>& names) {
  std::vector<Numbered> files;
  for (const std::string& name : names) {
    if (name.size() <= kDcfNameLength || name[kDcfNameLength] != '.') continue;
    const std::string digits = name.substr(kDcfNameLength - kNumberLength, kNumberLength);
    if (WithoutExtension(name).size() == kDcfNameLength && AllDigits(digits) &&
        IsMedia(Extension(name)))
      files.push_back({std::stoi(digits), name});
  }
  std::sort(files.begin(), files.end(), NewestFirst);
  return files;
}

// Adds the files of one folder, a raw picture beside its picture left out.
void AddFolder(const std::string& mount, const std::string& below, std::vector<SharedFile>* list) {
  std::vector<std::string> names;
  if (!Names(mount, below, &names)) return NoteUnread(below, errno);
  std::set<std::string> pictures, raws;  // without extension
  for (const std::string& name : names) {
    const std::string extension = Extension(name);
    if (IsOneOf(extension, kPictureExtensions)) pictures.insert(WithoutExtension(name));
    if (extension == kRawExtension) raws.insert(WithoutExtension(name));
  }
  for (const Numbered& file : DcfFiles(names)) {
    const std::string stem = WithoutExtension(file.name);
    const bool raw = Extension(file.name) == kRawExtension;
    if ((raw && pictures.count(stem) != 0) || !IsFileOfCard(mount, below + "/" + file.name))
      continue;
    list->push_back({kMountPrefix + below + "/" + file.name, raws.count(stem) != 0, {}});
  }
}

}  // namespace

void HostPlatform::SetSharedFiles(std::vector<std::string> uris) {
  std::vector<SharedFile> list;
  list.reserve(uris.size());
  for (std::string& uri : uris) list.push_back({std::move(uri), false, {}});
  List() = std::move(list);
}

bool HostPlatform::ShareWholeCard(const std::string& mount) {
  std::vector<std::string> names;
  Unread().clear();
  if (!Names(mount, kDcim, &names)) return false;
  std::vector<SharedFile> list;
  for (const Numbered& folder : DcfFolders(names)) {
    const std::string below = std::string(kDcim) + "/" + folder.name;
    AddFolder(mount, below, &list);
  }
  List() = std::move(list);
  return true;
}

std::vector<HostPlatform::UnreadEntry> HostPlatform::NotShared() { return Unread(); }

std::vector<std::string> HostPlatform::SharedFiles() {
  std::vector<std::string> uris;
  for (const SharedFile& file : List()) uris.push_back(file.uri);
  return uris;
}

int QUILWifi_getFileCount(void) { return static_cast<int>(List().size()); }

int QUILWifi_getURIFromIndex(int index, char*& uri) {
  uri = nullptr;
  if (index < 0 || index >= QUILWifi_getFileCount()) return -1;
  SharedFile& file = List()[static_cast<size_t>(index)];
  // A copy: the library may overwrite its end, and the list is asked again by the next scan.
  file.handedOut.assign(file.uri.c_str(), file.uri.c_str() + file.uri.size() + 1);
  uri = file.handedOut.data();
  return 0;
}

int QUILWifi_getFileType(char* uri) {
  if (uri == nullptr) return DLNA_FILE_TYPE_NONE;
  for (const SharedFile& file : List())
    if (file.uri == uri) return TypeOf(uri, file.hasRawCompanion || RawLiesBeside(uri));
  return TypeOf(uri, RawLiesBeside(uri));
}
