// Keeps the catalogue: scans when it is time, reads the database, and tells of what changed, on a
// thread of its own.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "Catalogue.h"
#include "FileLook.h"
#include "Indexer.h"
#include "Log.h"
#include "StateStore.h"
#include "Watch.h"

namespace orxserve {

class Librarian {
 public:
  struct Settings {
    Indexer::Settings index;
    unsigned rescanMinutes = 0;  // 0: not by the clock
    bool watch = false;
  };
  // `changed` is called on the librarian's thread after a catalogue that differs was set.
  Librarian(Settings settings, StateStore* state, CatalogueHolder* catalogues, Log* log,
            std::function<void(const Catalogue&)> changed);
  ~Librarian();
  Librarian(const Librarian&) = delete;
  Librarian& operator=(const Librarian&) = delete;

  void Rescan();  // soon; from any thread
  // Ends a scan that is under way; false when it does not end in time.
  bool Stop(unsigned milliseconds);

 private:
  void Run();
  bool Wait();  // until a scan is due; false at the end
  void ScanOnce();
  void ReadCatalogue();

  Settings settings_;
  StateStore* state_;
  CatalogueHolder* catalogues_;
  Log* log_;
  std::function<void(const Catalogue&)> changed_;
  FileLook look_;
  Indexer indexer_;
  std::unique_ptr<Watch> watch_;
  Descriptor wake_, stop_, ended_;
  std::thread thread_;
};

}  // namespace orxserve
