#include "FileScanner/UnfinishedFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "OSAL/ORXLog.h"

namespace orx {

UnfinishedFile::UnfinishedFile(const char* finalPath)
    : finalPath_(finalPath), path_(finalPath_ + "-new"), journal_(path_ + "-journal") {
  unlink(path_.c_str());
  unlink(journal_.c_str());
}

UnfinishedFile::~UnfinishedFile() {
  unlink(path_.c_str());
  unlink(journal_.c_str());
}

bool UnfinishedFile::Finish() const {
  if (rename(path_.c_str(), finalPath_.c_str()) == 0) return true;
  ORX_LOG_ERROR("Error : [%s] cannot be moved to its place, errno %d", path_.c_str(), errno);
  return false;
}

}  // namespace orx
