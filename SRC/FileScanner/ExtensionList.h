// The tests of a file's extension against the lists of extensions.
//
// A list is one text ("jpg, jpeg"), and every fragment of it counts as listed: "pe" and the empty
// extension too.
#pragma once

#include <string>

namespace orx {

// A lower-case copy of `extension`, empty for null.
std::string LowerCaseExtension(const char* extension);

// `extension`, in upper or lower case, occurs in `list`; false when either is null.
bool ListHasExtension(const char* list, const char* extension);

// The extension is a supported one and not one of a parser's `own`: the file is left to another
// parser.  False for null: a file without extension may be anything.
bool BelongsToAnotherParser(const char* own, const char* extension);

}  // namespace orx
