#include "FileScanner/MediaRes.h"

#include <new>

namespace {

// The texts may be of any length, so the unsized form is the one that fits them all.
void Release(char* text) { ::operator delete(static_cast<void*>(text)); }

}  // namespace

MediaRes::~MediaRes() {
  Release(PszFilePath_);
  Release(PszMajorType_);
  Release(PszMinorType_);
  Release(PszTitle_);
  Release(PszUniqueId_);
}

MediaOptionalRes::~MediaOptionalRes() {
  Release(PszAlbum_);
  Release(PszAuthor_);
  Release(PszCreator_);
  Release(PszDate_);
}
