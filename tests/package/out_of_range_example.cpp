// What the library throws, a host catches.
#include <cstdio>
#include <stdexcept>

#include "FileScanner/DcfFileInfoVector.h"

int main() {
  try {
    DcfFileInfoVector::GetInstance()->getDirNameVectorAt(0);
  } catch (const std::out_of_range&) {
    DcfFileInfoVector::DestroyInstance();
    return 0;
  }
  printf("nothing was thrown\n");
  return 1;
}
