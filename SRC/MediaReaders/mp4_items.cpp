#include "MediaReaders/mp4_items.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "OSAL/Fault.h"

namespace orx {
namespace {

constexpr long long kTypeAndLocale = 8;  // what stands in front of the value of a "data" box

struct TextField {
  uint32_t item;
  char* mp4_metadata_t::*text;
};
constexpr TextField kTextFields[] = {  // \251 is the copyright sign
    {FourCc("\251nam"), &mp4_metadata_t::Title},
    {FourCc("\251ART"), &mp4_metadata_t::Artist},
    {FourCc("\251alb"), &mp4_metadata_t::AlbumTitle},
    {FourCc("\251gen"), &mp4_metadata_t::Genre},
    {FourCc("\251day"), &mp4_metadata_t::Year}};

// The first "data" box inside `item`; the position is then at its payload.
bool FindData(Mp4Walk& walk, const Mp4Box& item, Mp4Box* data) {
  while (walk.NextBox(item.end, data)) {
    walk.Claim(*data);
    if (data->type == FourCc("data")) return true;
    walk.SkipTo(data->end);
  }
  return false;
}

int Limited(long long number) {
  return static_cast<int>(std::clamp<long long>(number, std::numeric_limits<int>::min(),
                                                std::numeric_limits<int>::max()));
}

char* ReadValue(Mp4Walk& walk, const Mp4Box& item) {
  Mp4Box data;
  if (!FindData(walk, item, &data) || data.payloadSize() < kTypeAndLocale) return nullptr;
  walk.SkipTo(data.payload + kTypeAndLocale);
  const std::string value = walk.ReadRest(data);
  if (value.empty() && data.payloadSize() > kTypeAndLocale) return nullptr;
  return Noted(strdup(value.c_str()), __func__);
}

}  // namespace

void ReadTextItem(Mp4Walk& walk, const Mp4Box& item) {
  for (const TextField& field : kTextFields) {
    if (field.item != item.type) continue;
    char*& text = walk.meta().*field.text;
    free(text);
    text = ReadValue(walk, item);
  }
}

void ReadTrackNumber(Mp4Walk& walk, const Mp4Box& item) {
  Mp4Box data;
  if (!FindData(walk, item, &data)) return;
  ByteCursor payload = walk.Head(data);
  payload.Skip(kTypeAndLocale);
  const uint32_t number = payload.U32();
  if (payload.ok()) walk.meta().TrackNumber = static_cast<int>(number);
}

// The offset is where the "data" box ends, less 16; the length is that of the whole box, the 16
// bytes of its headers included.  The picture itself is not read.
void ReadCoverArt(Mp4Walk& walk, const Mp4Box& item) {
  Mp4Box data;
  if (!FindData(walk, item, &data)) return;
  const long long header = 8;
  walk.SkipTo(data.end);
  walk.meta().CoverArtOffset = Limited(walk.meta().BytesRead - 16);
  walk.meta().CoverArtLength = Limited(data.payloadSize() + header);
}

}  // namespace orx
