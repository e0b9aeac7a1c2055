#include "MediaRow.h"

#include <algorithm>

#include "Texts.h"

namespace orxserve {
namespace {

constexpr size_t kLongestText = 1024;  // bytes; clients refuse longer ones

struct TypeRule {
  Kind kind;
  const char* extension;
  const char* mimeType;
  bool always;  // or only where nothing is recorded
};
constexpr TypeRule kTypes[] = {
    {Kind::kPicture, "krz", "image/x-krz", true},
    {Kind::kPicture, "", "image/jpeg", false},
    {Kind::kFilm, "3gp", "video/3gpp", true},
    {Kind::kFilm, "mov", "video/quicktime", true},
    {Kind::kFilm, "avi", "video/x-msvideo", true},
    {Kind::kFilm, "m4v", "video/x-m4v", false},
    {Kind::kFilm, "", "video/mp4", false},
    {Kind::kSound, "aac", "audio/vnd.dlna.adts", true},
    {Kind::kSound, "adts", "audio/vnd.dlna.adts", true},
    {Kind::kSound, "3gp", "audio/3gpp", true},
    {Kind::kSound, "ac3", "audio/x-ac3", false},
    {Kind::kSound, "", "audio/mp4", false},
};

std::string_view ExtensionOf(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  const size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

bool IsMimeType(std::string_view text) {
  constexpr std::string_view kAllowed = "abcdefghijklmnopqrstuvwxyz0123456789.+-/";
  return text.size() <= 64 && text.find('/') != std::string_view::npos &&
         text.find_first_not_of(kAllowed) == std::string_view::npos;
}

// "1:02:03" or "0:00:01.500" in milliseconds.
uint32_t ParseClock(std::string_view text) {
  uint64_t milliseconds = 0;
  const size_t dot = text.find('.');
  if (dot != std::string_view::npos) {
    std::string digits(text.substr(dot + 1, 3));
    digits.resize(3, '0');
    if (!ParseNumber(digits, &milliseconds)) return 0;
  }
  uint64_t seconds = 0;
  for (std::string_view rest = text.substr(0, dot); !rest.empty();) {
    uint64_t part = 0;
    if (!ParseNumber(TakePart(&rest, ':'), &part) || part > 1000000) return 0;
    seconds = seconds * 60 + part;
  }
  return static_cast<uint32_t>(std::min<uint64_t>(seconds * 1000 + milliseconds, UINT32_MAX));
}

}  // namespace

uint32_t ParseDate(std::string_view text) {
  uint64_t year = 0;
  uint64_t month = 0;
  uint64_t day = 0;
  std::string_view rest = text.substr(0, 10);
  const bool numbers = ParseNumber(TakePart(&rest, '-'), &year) &&
                       ParseNumber(TakePart(&rest, '-'), &month) && ParseNumber(rest, &day);
  if (!numbers || year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31)
    return 0;
  return static_cast<uint32_t>(year * 10000 + month * 100 + day);
}

uint32_t ParseDuration(std::string_view text) {
  text = Trim(text);
  if (text.find(':') != std::string_view::npos) return ParseClock(text);
  uint64_t milliseconds = 0;
  if (!ParseNumber(text, &milliseconds)) return 0;
  return static_cast<uint32_t>(std::min<uint64_t>(milliseconds, UINT32_MAX));
}

std::string KnownText(std::string_view text) {
  return std::string(CutText(Trim(text), kLongestText));
}

std::string CorrectedMimeType(Kind kind, std::string_view path, std::string_view recorded) {
  const std::string_view extension = ExtensionOf(path);
  recorded = Trim(recorded);
  if (!IsMimeType(recorded)) recorded = {};
  for (const TypeRule& rule : kTypes) {
    if (rule.kind != kind || (!rule.always && !recorded.empty())) continue;
    if (*rule.extension == '\0' || EqualNoCase(extension, rule.extension)) return rule.mimeType;
  }
  return std::string(recorded);
}

std::string CertainProfile(std::string_view mimeType, std::string_view recorded) {
  recorded = Trim(recorded);
  const bool name = !recorded.empty() && recorded.size() <= 64 &&
                    std::all_of(recorded.begin(), recorded.end(), [](char c) {
                      return c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                             (c >= 'a' && c <= 'z');
                    });
  if (!name || mimeType == "image/x-krz") return "";
  // A stream without its container must not be called one with.
  const bool raw = mimeType == "audio/vnd.dlna.adts";
  const bool rawProfile = recorded.find("ADTS") != std::string_view::npos;
  if (raw != rawProfile) return "";
  return std::string(recorded);
}

PiecePlace CoverPlace(uint64_t recordedOffset, uint64_t recordedLength) {
  constexpr uint64_t kBoxHeaders = 16;
  PiecePlace place;
  if (recordedLength <= kBoxHeaders || recordedLength > UINT32_MAX ||
      recordedOffset + 2 * kBoxHeaders < recordedLength)
    return place;
  place.offset = recordedOffset + 2 * kBoxHeaders - recordedLength;
  place.length = static_cast<uint32_t>(recordedLength - kBoxHeaders);
  return place;
}

}  // namespace orxserve
