# 32-bit x86: `long` and pointers of 32 bits as on ARM, but eight-byte numbers at multiples of four.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(ORXSCAN_TRIPLET i686-linux-gnu)
set(ORXSCAN_EMULATOR_NAMES qemu-i386-static qemu-i386)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
