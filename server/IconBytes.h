// The icons, built into the program from server/icons.
#pragma once

#include <string_view>

namespace orxserve {

extern const std::string_view kIcon48Png;
extern const std::string_view kIcon120Png;
extern const std::string_view kIcon48Jpg;
extern const std::string_view kIcon120Jpg;

}  // namespace orxserve
