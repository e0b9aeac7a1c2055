# Building on Debian for another Debian architecture: included by the toolchain files beside this one,
# which set the triplet and the name of the emulator.
#
# ORXSCAN_TARGET_ROOT names a folder with the target's libraries and headers (SQLite; for the tests and
# the command also GoogleTest, fmt, CLI11 and nlohmann-json), which scripts/cross_root fills.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER ${ORXSCAN_TRIPLET}-g++)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORXSCAN_TARGET_ROOT)

# The compiler's own root has the C and C++ libraries.
set(CMAKE_FIND_ROOT_PATH ${ORXSCAN_TARGET_ROOT} /usr/${ORXSCAN_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# GCC mentions an old change of its calling convention once for every template that it touches.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

# With an emulator on this machine, the programs of the target run as if they were its own.  They find
# the target's C library with its character-set converters, C++ library and SQLite in the folder.
find_program(ORXSCAN_EMULATOR NAMES ${ORXSCAN_EMULATOR_NAMES})
if(ORXSCAN_EMULATOR)
  set(CMAKE_CROSSCOMPILING_EMULATOR
      ${ORXSCAN_EMULATOR};-L;${ORXSCAN_TARGET_ROOT})
endif()
