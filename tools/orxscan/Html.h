// Texts from a database as parts of a page.
#pragma once

#include <string>
#include <string_view>

namespace orxscan {

// `text` for the content of an element or for a value in double quotes: printable (see Output.h),
// with every character that means something to HTML escaped.
std::string Html(const std::string& text);

// `text` as a JSON string, printable, too; no character in it could end the script element around
// it.
std::string JsonText(const std::string& text);

std::string Base64(std::string_view bytes);

// "4.18 kB", "615 bytes"; "1 byte" for one.
std::string SizeText(long long bytes);
// "10,000"
std::string CountText(long long count);
// "1 item", "2,000 items"
std::string Counted(long long count, const char* one, const char* many);

}  // namespace orxscan
