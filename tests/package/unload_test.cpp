// A program that supplies the platform functions loads the library, uses it, unloads it and loads
// it again: the memory that it took is gone in between.  usage: unload_test LIBRARY
#include <dlfcn.h>

#include <cstdio>

#include "host/HostPlatform.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  HostPlatform::SetSharingMode(0);
  for (int round = 0; round < 2; ++round) {
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
      printf("not loaded: %s\n", dlerror());
      return 1;
    }
    auto genre = reinterpret_cast<const char* (*)(int)>(dlsym(library, "_Z12mp3_getGenrei"));
    if (genre == nullptr || genre(0) == nullptr) {
      printf("no mp3_getGenre, or no genre\n");
      return 1;
    }
    printf("%s\n", genre(0));
    dlclose(library);
    if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != nullptr) {
      printf("still loaded\n");
      return 1;
    }
  }
  return 0;
}
