// Texts on their way out: valid UTF-8 without control characters, escaped for XML; and the small
// text questions that several parts ask.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orxserve {

// Where a text stands: in a document, or in a document that is itself the text of another one.
enum class XmlLevel { kPlain, kEmbedded };

// Appends `text` as character data or as the value of an attribute in double quotes.  Bytes that
// are no UTF-8, and characters that XML does not have, become U+FFFD; line ends and tabulators
// become blanks.
void AppendXml(std::string* out, std::string_view text, XmlLevel level = XmlLevel::kPlain);
std::string XmlText(std::string_view text);

// `text` in valid UTF-8 without control characters, as AppendXml would write it but not escaped.
std::string CleanText(std::string_view text);

// The longest beginning of at most `bytes` bytes that does not end within a character.
std::string_view CutText(std::string_view text, size_t bytes);

// Appends `text` as a JSON string with its quotes; safe to stand in a script element as well.
void AppendJson(std::string* out, std::string_view text);

void AppendNumber(std::string* out, uint64_t number);

// The whole of `text` as a decimal number; false when it is none or too large.
bool ParseNumber(std::string_view text, uint64_t* number);

char LowerAscii(char c);
bool EqualNoCase(std::string_view left, std::string_view right);
bool StartsWithNoCase(std::string_view text, std::string_view start);
bool ContainsNoCase(std::string_view text, std::string_view part);
int CompareNoCase(std::string_view left, std::string_view right);  // <0, 0, >0

std::string_view Trim(std::string_view text);  // blanks, tabulators, line ends

// Takes the part before `separator` (all of it when there is none) off the front of `rest`,
// trimmed.
std::string_view TakePart(std::string_view* rest, char separator);

}  // namespace orxserve
