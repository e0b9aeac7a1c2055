#include "Filter.h"

#include "Texts.h"

namespace orxserve {
namespace {

struct Name {
  std::string_view text;
  uint32_t fields;
};
constexpr Name kNames[] = {
    {"*", Filter::kAll},
    {"res", Filter::kRes},
    {"res@protocolInfo", Filter::kRes},
    {"res@size", Filter::kRes | Filter::kSize},
    {"res@duration", Filter::kRes | Filter::kDuration},
    {"res@bitrate", Filter::kRes | Filter::kBitRate},
    {"res@resolution", Filter::kRes | Filter::kResolution},
    {"res@sampleFrequency", Filter::kRes | Filter::kFrequency},
    {"res@nrAudioChannels", Filter::kRes | Filter::kChannels},
    {"@refID", Filter::kRefId},
    {"@childCount", Filter::kChildCount},
    {"container@childCount", Filter::kChildCount},
    {"@searchable", Filter::kSearchable},
    {"container@searchable", Filter::kSearchable},
    {"dc:date", Filter::kDate},
    {"dc:creator", Filter::kCreator},
    {"dc:description", Filter::kDescription},
    {"upnp:artist", Filter::kArtist},
    {"upnp:album", Filter::kAlbum},
    {"upnp:albumArtURI", Filter::kArt},
    {"sec:CaptionInfoEx", Filter::kCaptions},
};

}  // namespace

Filter::Filter(std::string_view list) {
  while (!list.empty()) {
    const std::string_view want = TakePart(&list, ',');
    for (const Name& name : kNames)
      if (want == name.text) fields_ |= name.fields;
  }
}

}  // namespace orxserve
