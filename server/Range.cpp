#include "Range.h"

#include <algorithm>

#include "Texts.h"

namespace orxserve {
namespace {

ByteRange Suffix(uint64_t count, uint64_t size) {
  if (count == 0 || size == 0) return {ByteRange::Kind::kUnsatisfiable, 0, 0};
  const uint64_t length = std::min(count, size);
  return {ByteRange::Kind::kPart, size - length, length};
}

}  // namespace

ByteRange ParseRange(std::string_view header, uint64_t size) {
  constexpr std::string_view kUnit = "bytes=";
  const ByteRange whole{ByteRange::Kind::kWhole, 0, size};
  header = Trim(header);
  if (!StartsWithNoCase(header, kUnit)) return whole;
  const std::string_view range = Trim(header.substr(kUnit.size()));
  const size_t dash = range.find('-');
  if (dash == std::string_view::npos) return whole;
  const std::string_view start = Trim(range.substr(0, dash));
  const std::string_view end = Trim(range.substr(dash + 1));
  uint64_t first = 0;
  uint64_t last = UINT64_MAX;
  if (start.empty()) return ParseNumber(end, &last) ? Suffix(last, size) : whole;
  if (!ParseNumber(start, &first) || (!end.empty() && !ParseNumber(end, &last))) return whole;
  if (last < first) return whole;
  if (first >= size) return {ByteRange::Kind::kUnsatisfiable, 0, 0};
  return {ByteRange::Kind::kPart, first, std::min(last, size - 1) - first + 1};
}

}  // namespace orxserve
