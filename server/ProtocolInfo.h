// The protocolInfo of resources: MIME type, profile, operations and flags.
#pragma once

#include <string>
#include <string_view>

#include "Catalogue.h"

namespace orxserve {

Format MakeFormat(const std::string& mimeType, const std::string& profile, bool streaming);

// The profile of a JPEG by its dimensions, empty when they are not known or too large.  Only a
// picture of at most 160x160 is a thumbnail.
std::string_view JpegProfile(uint32_t width, uint32_t height);

// The same for a picture cut out of a file, which is converted in the eyes of a client.
const std::string& PieceFeatures(const PiecePlace& place);
const std::string& PieceProtocolInfo(const PiecePlace& place);

// The union of all resources of the catalogue, for GetProtocolInfo.
std::string SourceProtocolInfo(const Catalogue& catalogue);

}  // namespace orxserve
