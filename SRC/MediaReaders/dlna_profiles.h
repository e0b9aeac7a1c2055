// The DLNA media format profiles of films and sound files, by the classes that the confirm
// functions of mp4_reader.h give a file.
#pragma once

#include <cstddef>

#include "MediaReaders/mp4_reader.h"

namespace orx {

struct VideoProfile {
  int videoId, container, audioCode;
  const char* name;
};
struct AudioProfile {
  int id;
  const char* name;
};

template <typename Row>
struct ProfileTable {
  const Row* rows;
  size_t count;
  const Row* begin() const { return rows; }
  const Row* end() const { return rows + count; }
};
ProfileTable<VideoProfile> VideoProfiles();  // in the order in which they are searched
ProfileTable<AudioProfile> AudioProfiles();

// The name of the first profile that fits; null when none does.
const char* FindVideoProfile(const mp4_dlna_prop_t& prop);
const char* FindAudioProfile(const mp4_dlna_prop_t& prop);

}  // namespace orx
