// AAC in ADTS framing (ISO/IEC 14496-3, 1.A.2): the first header of the file.
#include <cstdint>
#include <iterator>

#include "MediaReaders/byte_cursor.h"
#include "MediaReaders/mp4_reader.h"

namespace {

constexpr int kAacInAdts = 20;
constexpr unsigned kSyncWord = 0xFFF;  // 12 bits
constexpr unsigned kProfileLc = 1;

// By sampling frequency index.  22500 and 11250 stand where the standard has 22050 and 11025; the
// databases in the field hold these numbers.
constexpr int kSampleRates[] = {96000, 88200, 64000, 48000, 44100, 32000,
                                24000, 22500, 16000, 11250, 8000,  7350};

}  // namespace

int aac_adts_get_metadata(st_UPNP_FILE* file, long long /*limit*/, mp4_metadata_t* meta) {
  if (file == nullptr || meta == nullptr) return 0;
  uint8_t header[50] = {};
  meta->BytesRead += upnp_file_read(file, header, sizeof header);
  if (meta->BytesRead < -1) return 0;
  orx::ByteCursor cursor(header, sizeof header);
  if (cursor.U16() >> 4 != kSyncWord) return 0;
  // From the highest bit on: 2 profile, 4 sampling frequency index, 1 private, 3 channels.
  const unsigned fields = cursor.U16();
  if (fields >> 14 != kProfileLc) {
    meta->AudioType = 0;
    return 0;
  }
  meta->AudioType = kAacInAdts;
  const unsigned frequency = fields >> 10 & 0xF;
  if (frequency >= std::size(kSampleRates)) return 0;
  meta->SampleRate = kSampleRates[frequency];
  meta->Channels = static_cast<int>(fields >> 6 & 0x7);
  meta->HasAudio = 1;
  return 1;
}
