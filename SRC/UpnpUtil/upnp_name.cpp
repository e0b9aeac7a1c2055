// Titles, cache paths and temporary names out of file names.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "OSAL/Fault.h"
#include "UpnpUtil/upnp_file.h"
#include "UpnpUtil/upnp_util.h"

namespace {

constexpr std::string_view kSlashes = "/\\";

constexpr std::string_view kNoTitle = "No Title";
constexpr char kTempBase[] = "";  // the file system's root

}  // namespace

char* upnp_build_title_from_filename(const char* path) {
  std::string_view title = path != nullptr ? path : "";
  const size_t slash = title.find_last_of(kSlashes);
  if (slash != std::string_view::npos) title.remove_prefix(slash + 1);
  title = title.substr(0, title.rfind('.'));
  if (title.empty()) title = kNoTitle;
  return orx::Counted(strndup(title.data(), title.size()), __func__);
}

char* make_cache_path(const char* dir, const char* name) {
  if (dir == nullptr || name == nullptr || *dir == '\0' || *name == '\0') return nullptr;
  const size_t dirLength = strlen(dir), nameLength = strlen(name);
  auto* path = static_cast<char*>(orx::Counted(calloc(dirLength + nameLength + 2, 1), __func__));
  if (path == nullptr) return nullptr;
  memcpy(path, dir, dirLength);
  char* out = path + dirLength;
  if (kSlashes.find(out[-1]) == std::string_view::npos) *out++ = '/';
  for (const char* p = name; *p != '\0'; ++p)
    *out++ = strchr("/\\:?\"<>|", *p) != nullptr ? '_' : *p;
  return path;
}

char* upnp_util_create_tempfilename() {
  static int counter = 0;
  char text[64];
  snprintf(text, sizeof text, "%s/temp", kTempBase);
  if (upnp_file_mkdir(text) < 0) return nullptr;
  snprintf(text, sizeof text, "%s/temp/tempfile%d", kTempBase, counter);
  counter = static_cast<int>(static_cast<unsigned>(counter) + 1);
  return orx::Counted(strdup(text), __func__);
}
