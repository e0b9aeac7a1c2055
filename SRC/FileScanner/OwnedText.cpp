#include "FileScanner/OwnedText.h"

#include <cstring>

#include "OSAL/ORXMemory.h"

namespace orx {

// A superseded value hangs behind the one that took its place.  The text follows the node.
struct OwnedText::Node {
  Node* earlier;
  char* Text() { return reinterpret_cast<char*>(this + 1); }
};

OwnedText::~OwnedText() { Clear(); }

void OwnedText::Clear() {
  while (newest_ != nullptr) {
    Node* earlier = newest_->earlier;
    ORXMemory::Free(newest_);
    newest_ = earlier;
  }
}

char* OwnedText::Get() const { return newest_ != nullptr ? newest_->Text() : nullptr; }

bool OwnedText::Set(const char* text) {
  if (text == nullptr) return true;
  const size_t size = strlen(text) + 1;
  auto* node = static_cast<Node*>(ORXMemory::Malloc(sizeof(Node) + size));
  if (node == nullptr) return false;
  memcpy(node->Text(), text, size);
  node->earlier = newest_;
  newest_ = node;
  return true;
}

bool OwnedText::Replace(const char* text) {
  Node* superseded = newest_;
  if (!Set(text)) return false;
  if (superseded == nullptr || newest_ == superseded) return true;
  newest_->earlier = superseded->earlier;
  ORXMemory::Free(superseded);
  return true;
}

}  // namespace orx
