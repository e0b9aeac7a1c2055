// The text member of the records and of the scanner.
#pragma once

#include "Platform/Export.h"

namespace orx {

// A terminated copy of a text, or null.  Readers hold on to the pointer they were given, so a value
// that Set supersedes stays readable until the holder is destroyed; Replace gives it up at once.
class ORX_API OwnedText {
 public:
  OwnedText() = default;
  ~OwnedText();
  OwnedText(const OwnedText&) = delete;
  OwnedText& operator=(const OwnedText&) = delete;

  char* Get() const;
  // Null is ignored.  False when the text could not be copied: the earlier value stays.
  bool Set(const char* text);
  bool Replace(const char* text);
  void Clear();  // gives up all values

 private:
  struct Node;
  Node* newest_ = nullptr;
};

}  // namespace orx
