// The files of the folder sheet, as they are built into the command (cmake/embed_texts.cmake), with
// their SHA-256 checksums in hexadecimal digits.
#pragma once

namespace orxscan {

extern const char kSheetPage[];
extern const char kSheetPageSha256[];
extern const char kSheetStyle[];
extern const char kSheetStyleSha256[];
extern const char kSheetScript[];
extern const char kSheetScriptSha256[];

}  // namespace orxscan
