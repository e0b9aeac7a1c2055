# 32-bit ARM with hardware floating point, as in the camera.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(ORXSCAN_TRIPLET arm-linux-gnueabihf)
set(ORXSCAN_EMULATOR_NAMES qemu-arm-static qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
