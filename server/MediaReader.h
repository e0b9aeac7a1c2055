// Reads the media database through a connection of its own.
#pragma once

#include <functional>
#include <string>

#include "MediaRow.h"

namespace orxserve {

// Hands every shared picture, sound and film to `take`, as of one moment, whatever layout the
// database has.  Throws a Failure.
void ReadMediaRows(const std::string& database, const std::function<void(const MediaRow&)>& take);

// Switches an existing database so that a scan and readers do not hinder each other; true when it
// now is so.
bool AllowReadersDuringScans(const std::string& database);

}  // namespace orxserve
