#include "ProtocolInfo.h"

#include <iterator>
#include <set>
#include <utility>
#include <vector>

namespace orxserve {
namespace {

// The operation: ranges of bytes, no seeking by time.  The flags: how it is transferred (streaming,
// interactive, in the background), that a stalled connection is kept, and version 1.5.
constexpr char kStreamFlags[] = "DLNA.ORG_FLAGS=01700000000000000000000000000000";
constexpr char kPictureFlags[] = "DLNA.ORG_FLAGS=00F00000000000000000000000000000";

std::string Features(std::string_view profile, bool converted, bool streaming) {
  std::string features;
  if (!profile.empty()) features.append("DLNA.ORG_PN=").append(profile).append(";");
  features.append("DLNA.ORG_OP=01;DLNA.ORG_CI=").append(converted ? "1;" : "0;");
  return features.append(streaming ? kStreamFlags : kPictureFlags);
}

std::string Protocol(std::string_view mimeType, const std::string& features) {
  return std::string("http-get:*:").append(mimeType).append(":").append(features);
}

struct Rule {
  uint32_t width, height;  // at most
  const char* profile;
};
constexpr Rule kJpegRules[] = {{160, 160, "JPEG_TN"},
                               {640, 480, "JPEG_SM"},
                               {1024, 768, "JPEG_MED"},
                               {4096, 4096, "JPEG_LRG"},
                               {0, 0, ""}};
constexpr size_t kNoRule = std::size(kJpegRules) - 1;

size_t JpegRule(uint32_t width, uint32_t height) {
  if (width == 0 || height == 0) return kNoRule;
  for (size_t i = 0; i < kNoRule; ++i)
    if (width <= kJpegRules[i].width && height <= kJpegRules[i].height) return i;
  return kNoRule;
}

struct PieceTexts {
  std::string features;
  std::string protocol;
};

// Made once for each rule: every picture of a list needs them.
const PieceTexts& TextsOf(const PiecePlace& place) {
  static const std::vector<PieceTexts> all = [] {
    std::vector<PieceTexts> texts;
    for (const Rule& rule : kJpegRules) {
      const std::string features = Features(rule.profile, true, false);
      texts.push_back({features, Protocol("image/jpeg", features)});
    }
    return texts;
  }();
  return all[JpegRule(place.width, place.height)];
}

constexpr std::pair<const char*, const char*> kExtensions[] = {
    {"image/jpeg", "jpg"},      {"image/x-krz", "krz"}, {"video/mp4", "mp4"},
    {"video/3gpp", "3gp"},      {"video/x-m4v", "m4v"}, {"video/quicktime", "mov"},
    {"video/x-msvideo", "avi"}, {"audio/mp4", "m4a"},   {"audio/vnd.dlna.adts", "aac"},
    {"audio/x-ac3", "ac3"},     {"audio/3gpp", "3ga"}};

const char* ExtensionFor(const std::string& mimeType) {
  for (const auto& [type, extension] : kExtensions)
    if (mimeType == type) return extension;
  return "bin";
}

}  // namespace

Format MakeFormat(const std::string& mimeType, const std::string& profile, bool streaming) {
  Format format{mimeType, profile, Features(profile, false, streaming), "", ExtensionFor(mimeType),
                streaming};
  format.protocolInfo = Protocol(mimeType, format.features);
  return format;
}

std::string_view JpegProfile(uint32_t width, uint32_t height) {
  return kJpegRules[JpegRule(width, height)].profile;
}

const std::string& PieceFeatures(const PiecePlace& place) { return TextsOf(place).features; }

const std::string& PieceProtocolInfo(const PiecePlace& place) { return TextsOf(place).protocol; }

std::string SourceProtocolInfo(const Catalogue& catalogue) {
  std::set<std::string> all;
  for (const Format& format : catalogue.formats()) all.insert(format.protocolInfo);
  for (const Item& item : catalogue.items())
    for (size_t i = 0; i < kPieceCount; ++i) {
      const PiecePlace place = catalogue.PieceOf(item, static_cast<Piece>(i));
      if (place.length != 0) all.insert(PieceProtocolInfo(place));
    }
  std::string list;
  for (const std::string& info : all) list.append(list.empty() ? "" : ",").append(info);
  return list;
}

}  // namespace orxserve
