// The utilities that take text: numbers, dates, titles, names, request parameters, dumps.
#include <cstdlib>
#include <string>
#include <vector>

#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/MediaMetaData.h"
#include "OSAL/ORXMemory.h"
#include "OSAL/UniqueValueGenerator.h"
#include "UpnpUtil/upnp_log.h"
#include "UpnpUtil/upnp_util.h"
#include "fuzz/support/ByteSource.h"

namespace {

// In a block of its own, so that a read behind the end shows.
std::vector<char> Terminated(const std::string& text) {
  return std::vector<char>(text.c_str(), text.c_str() + text.size() + 1);
}

void Utilities(const char* text, const char* other, unsigned number) {
  char room[64];
  free(upnp_duration_to_string(upnp_convert_time_to_long(text)));
  upnp_format_time(static_cast<long>(number), room);
  const long time = static_cast<long>(upnp_atoui(text));
  upnp_date_convertToGMT(&time, room, 12);
  hexchar_to_i(*text);
  hexStringToNumber(text, number % 40);
  longToHexString(static_cast<long>(hexStringToLong(text)), room);
  isRomanNumber(text);
  free(string_to_base64(text));
  free(string_from_base64(text));
  free(upnp_build_title_from_filename(text));
  free(get_cgi_param(text, other));
  free(make_cache_path(text, other));
}

void Names(const char* text, const char* other) {
  ORXMemory::Free(MediaMetaData::GetTitleFromFullPath(text));
  ORXMemory::Free(MediaMetaData::GetSortIndexFromFullPath(text));
  UniqueValueGenerator* names = UniqueValueGenerator::GetInstance();
  ORXMemory::Free(names->GetUniqueURIMA(text));
  ORXMemory::Free(names->GetUniqueThumbnailURIMA(text, other));
  ORXMemory::Free(names->GetUniqueScreennailURIMAWithPrefix(text, other));
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  char path[512];
  scanner->_GetFullPathOfFile(path, text, other);
  ORXMemory::Free(scanner->_GetDirPathFromFullPathMA(text));
  ORXMemory::Free(scanner->_GetFileNameFromFullPathMA(text));
  scanner->SetDlnaProfiles(text);
  scanner->_IsProfileSupported(other);
  DirectoryScanner::DestroyInstance();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  orx_test::ByteSource source(data, size);
  const auto number = static_cast<unsigned>(source.Number());
  const std::vector<char> other = Terminated(source.Text());
  const std::vector<char> text = Terminated(source.Rest());
  Utilities(text.data(), other.data(), number);
  Names(text.data(), other.data());
  char line[80];
  Hex_dump_line(line, reinterpret_cast<const unsigned char*>(text.data()),
                static_cast<int>(text.size() < 16 ? text.size() : 16), number % sizeof line);
  return 0;
}
