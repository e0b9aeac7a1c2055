#include "Html.h"

#include "Output.h"

namespace orxscan {

std::string Html(const std::string& text) {
  const std::string printable = Printable(text);
  std::string html;
  html.reserve(printable.size());
  for (const char c : printable) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

std::string JsonText(const std::string& text) {
  const std::string printable = Printable(text);
  std::string json = "\"";
  json.reserve(printable.size() + 2);
  for (const char c : printable) {
    switch (c) {
      case '"':
        json += "\\\"";
        break;
      case '\\':
        json += "\\\\";
        break;
      case '<':
        json += "\\u003c";
        break;
      default:
        json += c;
    }
  }
  return json + '"';
}

std::string Base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t at = 0; at < bytes.size(); at += 3) {
    const auto byte = [&](size_t i) {
      return at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0u;
    };
    const unsigned group = byte(0) << 16 | byte(1) << 8 | byte(2);
    text += kDigits[group >> 18];
    text += kDigits[group >> 12 & 63];
    text += at + 1 < bytes.size() ? kDigits[group >> 6 & 63] : '=';
    text += at + 2 < bytes.size() ? kDigits[group & 63] : '=';
  }
  return text;
}

std::string SizeText(long long bytes) {
  if (bytes < 1000) return Counted(bytes, "byte", "bytes");
  constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB"};
  auto value = static_cast<double>(bytes) / 1000;
  size_t unit = 0;
  while (value >= 999.5 && unit + 1 < sizeof kUnits / sizeof *kUnits) {
    value /= 1000;
    ++unit;
  }
  const int decimals = value < 9.995 ? 2 : value < 99.95 ? 1 : 0;
  return fmt::format("{:.{}f} {}", value, decimals, kUnits[unit]);
}

std::string CountText(long long count) {
  std::string text = std::to_string(count);
  const size_t first = count < 0 ? 1 : 0;  // the place of the first digit
  for (size_t at = text.size(); at > first + 3;) {
    at -= 3;
    text.insert(at, ",");
  }
  return text;
}

std::string Counted(long long count, const char* one, const char* many) {
  return CountText(count) + " " + (count == 1 ? one : many);
}

}  // namespace orxscan
