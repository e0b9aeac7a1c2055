// The platform of the tests: answers what a test tells it to, and keeps what was logged.
#pragma once

#include <string>
#include <vector>

#include "Platform/CameraPlatform.h"

namespace orx_test {

struct LogLine {
  int logId;
  int priority;
  std::string tag;
  std::string source;    // file name of the call site
  std::string function;  // of the call site
  int line;
  std::string buffer;   // the whole coloured line
  std::string message;  // without colour prefix and suffix
};

struct SharedFile {
  std::string uri;
  int type = 1;
  bool fails = false;  // QUILWifi_getURIFromIndex answers a negative number
  bool null = false;   // it answers a null URI
};

// One state for the process, put back by Reset.
struct FakePlatform {
  int sharingMode = 0;
  int certificationState = 0;
  std::vector<SharedFile> sharedFiles;
  int uriFailure = -7;  // what a failing QUILWifi_getURIFromIndex answers

  bool fileAttributeSucceeds = false;
  sFileAttribute fileAttribute = {};
  bool videoAttributeSucceeds = false;
  sVideoAttribute videoAttribute = {};
  bool attributesFromDisk = false;  // both succeed for a file that exists, with its own size
  int screennailResult = 0;
  int screennailWidth = 0, screennailHeight = 0, screennailOffset = 0, screennailLength = 0;
  bool fileSizeFromDisk = true;
  long long fileSize = 0;

  std::vector<LogLine> log;
  void (*onLog)(const LogLine&) = nullptr;  // called for every line
  void (*onUri)(int index) = nullptr;       // called before each URI is handed out
  std::vector<std::string> attributePaths;  // asked for, in order
  std::vector<std::string> videoPaths;
  std::vector<std::string> screennailPaths;

  // The messages of all lines, or of those under `tag`.
  std::vector<std::string> Messages(const std::string& tag = "") const;
  bool Logged(const std::string& message) const;
  int CountLogged(const std::string& message) const;
  const LogLine* Find(const std::string& message) const;

  static FakePlatform& Get();
  static FakePlatform& Reset();
};

}  // namespace orx_test
