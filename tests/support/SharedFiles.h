// Shared files as a card has them, and what a walk over them logged.
#pragma once

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "support/FakePlatform.h"

namespace orx_test {

// "/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG"
inline SharedFile Shared(int folder, int number, const std::string& extension = ".JPG",
                         int type = 1) {
  char text[64];
  snprintf(text, sizeof text, "/mnt/mmc/DCIM/%03dPHOTO/IMGA%04d%s", folder, number,
           extension.c_str());
  SharedFile file;
  file.uri = text;
  file.type = type;
  return file;
}

// `count` files of folder 100, the newest, with the highest number, first.
inline std::vector<SharedFile> SharedRun(int count, const std::string& extension = ".JPG") {
  std::vector<SharedFile> files;
  for (int i = 0; i < count; ++i) files.push_back(Shared(100, count - i, extension));
  return files;
}

// Priority, tag and message of a log line; a timing line without its clock.
inline std::string Described(const LogLine& line) {
  std::string message = line.message;
  if (line.tag == "DLNA_TIME") message.erase(0, message.find("\x1b[m") + 3);
  return std::to_string(line.priority) + " " + line.tag + " " + message;
}

inline std::vector<std::string> DescribedLog() {
  std::vector<std::string> lines;
  for (const LogLine& line : FakePlatform::Get().log) lines.push_back(Described(line));
  return lines;
}

inline std::string Info(const std::string& message) { return "4 DLNA " + message; }
inline std::string Error(const std::string& message) { return "6 DLNA " + message; }
inline std::string Timing(const std::string& label) { return "4 DLNA_TIME " + label; }

}  // namespace orx_test
