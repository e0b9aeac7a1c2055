// What the two lists of shared files have in common: how a URI is laid out, how the platform is
// asked for one, what an entry is and how it is appended.
//
// A URI names a file by fixed positions, counted from 0:
//   0-7    the mount prefix
//   8-     the path below the mount: "/DCIM/100PHOTO/IMGA0001.JPG"
//   14-21  the folder name: three digits and five characters
//   23-30  the file name: four characters and four digits
//   31-    the extension with its dot
// A piece that does not lie wholly within the text is empty.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "FileScanner/DcfFileInfoVector.h"

namespace orx {

constexpr int kSharedFileLimit = 1000;  // files shared at a time

// The sharing modes in which the kind of a file matters.
constexpr int kModeMultiPicture = 1;  // a 3D photo goes by the name of its multi-picture file
constexpr int kModePhoto = 2;         // photos alone
constexpr int kModeBackup = 6;        // pictures together with their companion files
constexpr int kModePhotoObject = 8;   // photos alone, in the object table alone

struct DcfEntry {
  std::string path;           // below the mount: "/DCIM/100PHOTO/IMGA0001.JPG"
  std::string directoryName;  // "100PHOTO"
  int sortNumber = 0;         // folder number x 10000 + file number; 0 when the URI has not both
};

DcfEntry ParseDcfUri(const char* uri);
const char* DcfUriExtension(const char* uri);  // within `uri`: ".JPG", "" when there is none
// Writes `ending` over the last characters of a URI that is at least as long.
void ReplaceUriEnding(char* uri, std::string_view ending);

// The pieces of a path below the mount.
std::string_view DirectoryNameInDcfPath(std::string_view path);
std::string_view FileNameInDcfPath(std::string_view path);

enum class DcfKind { kRaw, kMultiPicture, kFilm, kOther };
DcfKind DcfKindOf(const char* extension);  // upper-case extensions alone are known

// The platform's code, or "still picture" for a code that is none.
DLNA_FILE_TYPE FileTypeFromPlatform(int platformType);
DLNA_FILE_TYPE PlatformFileType(const char* uri);  // asks the platform
int SharedFileCount();                             // never negative
// The platform's URI of a shared file, writable; null, and logged, when there is none.
char* SharedUriAt(int index);

// The lists that an entry goes to.  One element a file, except the directory names: one a run of
// files in the same directory.
struct SharedFileLists {
  std::vector<int>* sortNumbers;
  std::vector<DLNA_FILE_TYPE>* types;
  std::vector<int>* platformIndexes;
  std::vector<std::string>* directoryNames;
  std::vector<std::string>* paths;

  // `directoryName` is that of the entry before, and becomes that of this one.
  void Append(const DcfEntry& entry, int index, DLNA_FILE_TYPE type,
              std::string* directoryName) const;
  // Appends to the same directory, whatever it is.
  void AppendFile(const DcfEntry& entry, int index, DLNA_FILE_TYPE type) const;
  void EraseOldest(int count) const;  // the directory names stay
};

template <typename Element>
int ListSize(const std::vector<Element>& list) {
  return static_cast<int>(list.size());
}

template <typename Number>
int NumberAt(const std::vector<Number>& list, int index) {
  return index >= 0 && index < ListSize(list) ? list[static_cast<size_t>(index)] : -1;
}

inline std::string& TextAt(std::vector<std::string>& list, int index) {
  return list.at(static_cast<size_t>(index));
}

}  // namespace orx
