#include "Output.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace orxscan {
namespace {

// One character of UTF-8 at `at`: its length in bytes, 0 for bytes that are none.
size_t DecodeCharacter(const std::string& text, size_t at, uint32_t* character) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at);
  const size_t length = lead < 0x80   ? 1
                        : lead < 0xC2 ? 0
                        : lead < 0xE0 ? 2
                        : lead < 0xF0 ? 3
                        : lead < 0xF5 ? 4
                                      : 0;
  if (length == 0 || length > text.size() - at) return 0;
  *character = length == 1 ? lead : lead & (0xFFu >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return 0;
    *character = *character << 6 | (byte(at + i) & 0x3Fu);
  }
  constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = *character >= 0xD800 && *character <= 0xDFFF;
  return *character < kSmallest[length] || *character > 0x10FFFF || surrogate ? 0 : length;
}

bool IsControl(uint32_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F); }

// Line separators and the characters that make a name read in another order than it stands.
bool Misleads(uint32_t c) {
  return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
}

}  // namespace

std::string Printable(const std::string& text) {
  std::string out;
  for (size_t at = 0; at < text.size();) {
    uint32_t character = 0;
    const size_t length = DecodeCharacter(text, at, &character);
    if (length == 0 || IsControl(character)) {
      const size_t bytes = length == 0 ? 1 : length;
      for (size_t i = 0; i < bytes; ++i)
        out += fmt::format("\\x{:02x}", static_cast<unsigned char>(text[at + i]));
      at += bytes;
    } else if (Misleads(character)) {
      out += fmt::format("\\u{:04x}", character);
      at += length;
    } else {
      out.append(text, at, length);
      at += length;
    }
  }
  return out;
}

std::string Quoted(const std::string& text) { return "'" + Printable(text) + "'"; }

std::string JsonText(const nlohmann::ordered_json& value, int indent) {
  const std::string text =
      value.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  std::string out;  // what is left to escape stands in strings alone
  for (size_t at = 0; at < text.size();) {
    uint32_t character = 0;
    const size_t length = std::max<size_t>(DecodeCharacter(text, at, &character), 1);
    if (character != '\n' && (IsControl(character) || Misleads(character))) {
      out += fmt::format("\\u{:04x}", character);
    } else {
      out.append(text, at, length);
    }
    at += length;
  }
  return out;
}

void PrintJson(const nlohmann::ordered_json& value) { fmt::print("{}\n", JsonText(value, 2)); }

std::string Seconds(double seconds) {
  return seconds < 10 ? fmt::format("{:.3f} s", seconds) : fmt::format("{:.1f} s", seconds);
}

void Complain(const std::string& message) {
  const std::string line = "orxscan: " + Printable(message) + "\n";
  if (fputs(line.c_str(), stderr) < 0) return;  // nobody is there to be told
}

void FinishOutput() {
  if (fflush(stdout) != 0 || ferror(stdout) != 0) throw Failure("{}", kCannotWrite);
}

const char* ClassName(int mediaClass) {
  constexpr const char* kNames[] = {"folder", "picture", "sound", "film"};
  return mediaClass >= 0 && mediaClass <= 3 ? kNames[mediaClass] : "item";
}

}  // namespace orxscan
