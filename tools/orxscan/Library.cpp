#include "Library.h"

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "Output.h"
#include "host/HostPlatform.h"

namespace orxscan {
namespace {

constexpr int kPriorityError = 6;

void RemoveAll(const std::string& part, std::string* text) {
  for (size_t at = text->find(part); at != std::string::npos; at = text->find(part, at))
    text->erase(at, part.size());
}

// "DataBaseMgr.cpp: OpenDB(114) > \x1b[31mmessage\x1b[m\n"
LogLine Parse(int priority, const std::string& line) {
  LogLine parsed{priority >= kPriorityError, {}, line};
  const size_t source = line.find(": ");
  const size_t number = source == std::string::npos ? source : line.find('(', source);
  const size_t arrow = number == std::string::npos ? number : line.find(") > ", number);
  if (arrow != std::string::npos) {
    parsed.function = line.substr(source + 2, number - source - 2);
    parsed.message = line.substr(arrow + 4);
  }
  for (const char* colour : {"\x1b[31m", "\x1b[m"}) RemoveAll(colour, &parsed.message);
  if (!parsed.message.empty() && parsed.message.back() == '\n') parsed.message.pop_back();
  return parsed;
}

}  // namespace

QuietLibrary::QuietLibrary(std::function<void(const LogLine&)> listener)
    : listener_(std::move(listener)), nowhere_(fopen("/dev/null", "we")) {
  if (nowhere_ == nullptr) throw Failure("cannot open /dev/null");
  fflush(stdout);
  standardOutput_ = stdout;
  standardError_ = stderr;
  stdout = nowhere_;
  stderr = nowhere_;
  HostPlatform::SetLogSink([this](int, int priority, const std::string&, const std::string& line) {
    Receive(priority, line);
  });
}

QuietLibrary::~QuietLibrary() {
  HostPlatform::SetLogSink(nullptr);
  stdout = standardOutput_;
  stderr = standardError_;
  fclose(nowhere_);
}

void QuietLibrary::Receive(int priority, const std::string& line) noexcept try {
  if (priority < kPriorityError && !listener_) return;
  const LogLine parsed = Parse(priority, line);
  if (parsed.error) errors_.Add(parsed.message);
  if (listener_) listener_(parsed);
} catch (const std::exception&) {
  errors_.AddLost();
}

DataBaseMgr* OpenDatabase(const std::string& path, const std::string& name) {
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  if (database->OpenDB(path.c_str()) != 1) throw Failure("database {} cannot be opened", name);
  return database;
}

LibraryInstances::~LibraryInstances() {
  DataBaseMgr::DestroyInstance();
  DcfFileInfoVector::DestroyInstance();
  DirectoryScanner::DestroyInstance();
}

}  // namespace orxscan
