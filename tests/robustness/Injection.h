// Makes the machine under the library fail: the n-th of its calls, or that one and all behind it.
//
// This program links the library with its memory and file calls redirected to the functions of
// Injection.cpp, gives SQLite memory and a file system of the same kind, and replaces operator new.
#pragma once

#include <string>

namespace orx_test {

enum class Layer {
  kMemory,  // malloc and its kin, new, SQLite's memory
  kFiles,   // open, read, seek, all kinds of stat, opendir, readdir
  kDisk,    // what SQLite does with its files, and moves, removals, locks and syncs beside it
};

enum class Behaviour {
  kFailOnce,
  kFailFromThere,
  kKill,    // kill -9, in the middle of a write if it is one
  kCancel,  // does not fail: what OnCancel was given runs, and the call goes on
};

class Injection {
 public:
  // From now on; `call` counts from 1.
  static void Arm(Layer layer, long call, Behaviour behaviour, int error = 0);
  static void OnCancel(void (*cancel)());
  static bool Disarm();  // whether it came to a failure
  // Whether the call that failed was one that opens a path or asks for a path's status.
  static bool StruckAtOpening();
  static long Calls();  // of the layer since Arm

  // For the redirected calls: whether this one is to fail.
  static bool Strikes(Layer layer, bool opens = false);
  static int Error();
  static bool Kills();

  // A file system without links that knows no way to move a file to a free place only.
  static void MoveAsOnFat(bool plainly);
  static bool MovesAsOnFat();
};

// To be called before SQLite is used.
void GiveSqliteAFaultyMachine();

}  // namespace orx_test
