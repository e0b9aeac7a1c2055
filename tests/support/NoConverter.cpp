#include "support/NoConverter.h"

#include <dlfcn.h>
#include <iconv.h>

#include <cerrno>

namespace orx_test {
namespace {

bool refused = false;
int opened = 0;

}  // namespace

NoConverter::NoConverter() { refused = true; }

NoConverter::~NoConverter() { refused = false; }

int ConvertersOpened() { return opened; }

}  // namespace orx_test

// Stands before the C library's function of this name.
extern "C" iconv_t iconv_open(const char* to, const char* from) {
  using Open = iconv_t (*)(const char*, const char*);
  static const auto next = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "iconv_open"));
  ++orx_test::opened;
  if (!orx_test::refused) return next(to, from);
  errno = EINVAL;
  return reinterpret_cast<iconv_t>(-1);
}
