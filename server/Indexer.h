// The library as the server uses it: one folder, or one card, brought in line with its database.
// The only part that scans.
#pragma once

#include <string>

class DirectoryScanner;

namespace orxserve {

class Log;

class Indexer {
 public:
  static constexpr int kNoCard = -1;
  struct Settings {
    std::string folder;  // canonical; of a card, the library's own path
    std::string database;
    std::string profiles;  // the list itself; empty: what the server can send
    int cardMode = kNoCard;
  };
  Indexer(Settings settings, Log* log);  // the library has one scanner: one Indexer at a time
  ~Indexer();
  Indexer(const Indexer&) = delete;
  Indexer& operator=(const Indexer&) = delete;

  // Returns when it is done or was stopped; false when the database could not be written.
  bool Scan();
  void Stop();  // from any thread, for good

 private:
  void Receive(int priority, const std::string& line);
  void ScanCard(int* changed);

  Settings settings_;
  Log* log_;
  DirectoryScanner* scanner_;
  bool failed_ = false;  // the scan under way
};

}  // namespace orxserve
