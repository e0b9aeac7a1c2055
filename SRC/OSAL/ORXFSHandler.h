// Directory iteration and path tests of the scanner.
//
// A handler walks one directory at a time: OpenDir, Read until it answers 0, CloseDir.  It belongs
// on the stack of one walk; the destructor closes a directory that was left open.
#pragma once

#include <dirent.h>

#include "Platform/Export.h"

class ORX_API ORXFSHandler {
 public:
  // One directory entry.  All texts are terminated; times are local.
  struct PTFile {
    char name[1024];
    int type;       // 0 directory, 1 anything else
    unsigned size;  // bytes, the low 32 bits
    int year;       // four digits
    int month;      // 1 to 12
    int day;        // 1 to 31
    int reserved;
    int hour;    // 0 to 23
    int minute;  // 0 to 59
    int second;  // 0 to 60
  };

  ORXFSHandler();
  virtual ~ORXFSHandler();
  ORXFSHandler(const ORXFSHandler&) = delete;
  ORXFSHandler& operator=(const ORXFSHandler&) = delete;

  int OpenDir(const char* path);  // 1 open, 0 not
  int CloseDir();                 // 1 closed, 0 not (none was open)
  // The next entry whose name does not begin with ".": 1, or 0 at the end.  When an entry's status
  // cannot be read (a link to nothing, say), only its name is filled in and the rest of the record
  // stays as the caller set it: set `type` to neither 0 nor 1 before each call to tell.
  int Read(PTFile* entry);

  int CreateDir(const char* path);  // 1 made; 0 also when something of that name exists
  int Remove(const char* path);     // 1 removed; only an empty directory is
  bool IsDirectory(const char* path);
  bool IsValidFile(const char* path);  // it can be opened for reading; never a FIFO or a device
  // Likewise, and its size is `size` bytes, which a file of 4 GiB or more never has.  The second
  // form logs a size that differs.
  bool IsValidFile(const char* path, unsigned int size);
  bool IsValidFile(const char* path, unsigned long size);

 private:
  char path_[1024];
  DIR* directory_;
};
