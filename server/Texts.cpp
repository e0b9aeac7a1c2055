#include "Texts.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace orxserve {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

// Bytes that are copied as they are: ASCII from the blank on, without what XML gives a meaning.
constexpr std::array<bool, 256> PlainBytes() {
  std::array<bool, 256> plain{};
  for (size_t i = 0x20; i < 0x7F; ++i) plain[i] = true;
  for (const char c : {'&', '<', '>', '"'}) plain[static_cast<unsigned char>(c)] = false;
  return plain;
}
constexpr std::array<bool, 256> kPlain = PlainBytes();

unsigned char Byte(std::string_view text, size_t at) {
  return static_cast<unsigned char>(text[at]);
}

bool IsContinuation(std::string_view text, size_t at) {
  return at < text.size() && (Byte(text, at) & 0xC0) == 0x80;
}

// The character at `at` (not ASCII): its bytes, 0 when they are no UTF-8.
size_t SequenceLength(std::string_view text, size_t at, uint32_t* code) {
  const unsigned char first = Byte(text, at);
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4) return 0;
  *code = first & (0xFFU >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    if (!IsContinuation(text, at + i)) return 0;
    *code = *code << 6 | (Byte(text, at + i) & 0x3F);
  }
  constexpr std::array<uint32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = *code >= 0xD800 && *code <= 0xDFFF;
  return *code >= kSmallest[length] && *code <= 0x10FFFF && !surrogate ? length : 0;
}

// XML forbids U+FFFE and U+FFFF, and the controls of ISO 8859 help nobody.
bool IsShowable(uint32_t code) {
  return code >= 0xA0 && (code & 0xFFFE) != 0xFFFE && !(code >= 0xFDD0 && code <= 0xFDEF);
}

std::string_view Entity(char c, XmlLevel level) {
  const bool plain = level == XmlLevel::kPlain;
  switch (c) {
    case '&':
      return plain ? "&amp;" : "&amp;amp;";
    case '<':
      return plain ? "&lt;" : "&amp;lt;";
    case '>':
      return plain ? "&gt;" : "&amp;gt;";
    case '"':
      return plain ? "&quot;" : "&amp;quot;";
    case '\t':
    case '\n':
    case '\r':
      return " ";
    default:
      return kReplacement;
  }
}

// Appends the character at `at`, which is not plain; returns how many bytes it took.
template <typename Escape>
size_t AppendSpecial(std::string* out, std::string_view text, size_t at, const Escape& escape) {
  if (Byte(text, at) < 0x80) {
    out->append(escape(text[at]));
    return 1;
  }
  uint32_t code = 0;
  const size_t length = SequenceLength(text, at, &code);
  out->append(length != 0 && IsShowable(code) ? text.substr(at, length) : kReplacement);
  return length != 0 ? length : 1;
}

template <typename Escape>
void AppendClean(std::string* out, std::string_view text, const Escape& escape) {
  size_t start = 0;
  for (size_t at = 0; at < text.size();) {
    if (kPlain[Byte(text, at)]) {
      ++at;
      continue;
    }
    out->append(text, start, at - start);
    at += AppendSpecial(out, text, at, escape);
    start = at;
  }
  out->append(text, start);
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

void AppendXml(std::string* out, std::string_view text, XmlLevel level) {
  AppendClean(out, text, [level](char c) { return Entity(c, level); });
}

std::string XmlText(std::string_view text) {
  std::string out;
  AppendXml(&out, text);
  return out;
}

std::string CleanText(std::string_view text) {
  std::string out;
  const auto keep = [](const char& c) {
    const std::string_view entity = Entity(c, XmlLevel::kPlain);
    return entity.front() == '&' ? std::string_view(&c, 1) : entity;
  };
  AppendClean(&out, text, keep);
  return out;
}

std::string_view CutText(std::string_view text, size_t bytes) {
  if (text.size() <= bytes) return text;
  while (bytes > 0 && IsContinuation(text, bytes)) --bytes;
  return text.substr(0, bytes);
}

void AppendJson(std::string* out, std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  out->push_back('"');
  for (const char c : CleanText(text)) {
    if (c == '"' || c == '\\' || c == '<' || c == '>' || c == '&') {
      const auto byte = static_cast<unsigned char>(c);
      out->append("\\u00").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
    } else {
      out->push_back(c);
    }
  }
  out->push_back('"');
}

void AppendNumber(std::string* out, uint64_t number) {
  std::array<char, 20> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  out->append(digits.data(), end.ptr);
}

bool ParseNumber(std::string_view text, uint64_t* number) {
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, *number);
  return !text.empty() && parsed.ec == std::errc() && parsed.ptr == end;
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool EqualNoCase(std::string_view left, std::string_view right) {
  return left.size() == right.size() &&
         std::equal(left.begin(), left.end(), right.begin(),
                    [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

bool StartsWithNoCase(std::string_view text, std::string_view start) {
  return EqualNoCase(text.substr(0, start.size()), start);
}

bool ContainsNoCase(std::string_view text, std::string_view part) {
  return part.empty() ||
         std::search(text.begin(), text.end(), part.begin(), part.end(),
                     [](char a, char b) { return LowerAscii(a) == LowerAscii(b); }) != text.end();
}

int CompareNoCase(std::string_view left, std::string_view right) {
  const size_t common = std::min(left.size(), right.size());
  for (size_t i = 0; i < common; ++i) {
    const auto a = static_cast<unsigned char>(LowerAscii(left[i]));
    const auto b = static_cast<unsigned char>(LowerAscii(right[i]));
    if (a != b) return a < b ? -1 : 1;
  }
  return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view TakePart(std::string_view* rest, char separator) {
  const size_t end = std::min(rest->find(separator), rest->size());
  const std::string_view part = rest->substr(0, end);
  rest->remove_prefix(std::min(end + 1, rest->size()));
  return Trim(part);
}

}  // namespace orxserve
