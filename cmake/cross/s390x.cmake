# A 64-bit machine that stores the highest byte first: what reads numbers byte by byte does not mind.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(ORXSCAN_TRIPLET s390x-linux-gnu)
set(ORXSCAN_EMULATOR_NAMES qemu-s390x-static qemu-s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
