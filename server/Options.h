// What the user asks for on the command line.
#pragma once

#include <string>
#include <vector>

#include "Indexer.h"
#include "Net.h"

namespace orxserve {

struct Options {
  std::string folder;  // canonical
  std::string database;
  std::string state;
  std::string name;
  std::string profiles;  // the list itself
  std::string log;
  std::vector<std::string> interfaces;
  std::vector<Subnet> allowed;
  unsigned port = 0;
  bool portIsGiven = false;
  unsigned rescanMinutes = 0;
  unsigned maxAge = 1800;  // seconds
  int cardMode = Indexer::kNoCard;
  bool watch = false;
  bool verbose = false;
};

// False when there is nothing to do any more: help or the version was asked for.  Throws a Failure.
bool ParseOptions(int argc, char** argv, Options* options);

std::string MachineName();

}  // namespace orxserve
