// The platform functions (Platform/CameraPlatform.h) for an ordinary Linux machine, and the
// settings that a camera would have.
//
// A program links liborxscan_host.a beside the library and has a complete platform: no files
// shared, sharing mode 0, no certification.  Attributes of pictures and films are read from the
// files themselves.  Settings are changed on the thread that calls the library, between its calls;
// SetLogSink may be called on any thread at any time.
#pragma once

#include <functional>
#include <string>
#include <vector>

class HostPlatform {
 public:
  // Receives one finished line: log id (3 for the library), priority (4 info, 6 error), tag ("DLNA"
  // or "DLNA_TIME") and text, coloured and ended by a newline as the library writes it.
  using LogSink =
      std::function<void(int id, int priority, const std::string& tag, const std::string& line)>;

  HostPlatform() = delete;  // settings of the process

  // The answer of GetTandemixMode.  8 and 6 select the layouts with an object table alone.
  static void SetSharingMode(int mode);
  // The answer of ORXGetDlnaCertificationState; non-zero: certification mode.
  static void SetCertificationState(int state);

  // The list of shared files, index 0 first.  A URI is the mount prefix of eight characters,
  // "/DCIM/", the folder's name, "/" and the file's: "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG".
  static void SetSharedFiles(std::vector<std::string> uris);

  // Shares every media file of the DCF tree below `mount`, newest first as a camera lists them: by
  // folder number, then file number, both descending.  Folders have names of eight characters that
  // begin with three digits, files names of eight characters that end with four, and an extension
  // that the library supports; other entries are passed over.  A raw picture beside a picture of
  // the same name is that one's companion and has no entry of its own.  The URIs begin with
  // "/mnt/mmc" whatever `mount` is.  False, and the list as it was, when DCIM cannot be read.
  static bool ShareWholeCard(const std::string& mount);

  // What the last ShareWholeCard could not read, and therefore did not share: folders below DCIM,
  // and entries of them.  The paths begin with "/mnt/mmc"; `error` is of errno.  What is gone, and
  // a link that leads nowhere, is not among them.
  struct UnreadEntry {
    std::string path;
    int error;
  };
  static std::vector<UnreadEntry> NotShared();

  // The shared files as they are now, index 0 first.
  static std::vector<std::string> SharedFiles();

  // Where log lines go.  Lines of several threads reach the sink one after another; once this
  // returns, the earlier sink is not called any more.  The sink may itself log and set a sink; what
  // it throws is dropped.  An empty function brings back the default, which writes error lines to
  // standard error and nothing else, and leaves out those that the library copies there itself.
  static void SetLogSink(LogSink sink);
};
