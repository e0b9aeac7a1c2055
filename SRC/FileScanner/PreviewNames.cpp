#include "FileScanner/PreviewNames.h"

#include "FileScanner/ImageMetaData.h"
#include "FileScanner/VideoMetaData.h"
#include "OSAL/TextPtr.h"
#include "OSAL/UniqueValueGenerator.h"

namespace orx {
namespace {

constexpr char kVideoThumbnailExtension[] = "jpg";

template <typename Record>
Record* Writable(const MediaMetaData& record) {
  return const_cast<Record*>(dynamic_cast<const Record*>(&record));
}

}  // namespace

void NameImageThumbnail(const MediaMetaData& record, NamedAfter parts) {
  auto* image = Writable<ImageMetaData>(record);
  if (image == nullptr) return;
  UniqueValueGenerator* names = UniqueValueGenerator::GetInstance();
  if (names == nullptr) return;
  const TextPtr name(parts == NamedAfter::kExtension
                         ? names->GetUniqueThumbnailURIMA(record.GetEXT())
                         : names->GetUniqueThumbnailURIMA(record.GetEXT(), record.GetSortIndex()));
  image->SetThumbnailURI(name.get());
}

void NameImageScreennail(const MediaMetaData& record, NamedAfter parts) {
  auto* image = Writable<ImageMetaData>(record);
  if (image == nullptr) return;
  UniqueValueGenerator* names = UniqueValueGenerator::GetInstance();
  if (names == nullptr) return;
  const TextPtr name(parts == NamedAfter::kExtension
                         ? names->GetUniqueScreennailURIMA(record.GetEXT())
                         : names->GetUniqueScreennailURIMA(record.GetEXT(), record.GetSortIndex()));
  image->SetScreennailURI(name.get());
}

void NameVideoThumbnail(const MediaMetaData& record) {
  auto* video = Writable<VideoMetaData>(record);
  if (video == nullptr) return;
  UniqueValueGenerator* names = UniqueValueGenerator::GetInstance();
  if (names == nullptr) return;
  const TextPtr name(
      names->GetUniqueVideoThumbnailURIMA(kVideoThumbnailExtension, record.GetSortIndex()));
  video->SetThumbnailURI(name.get());
}

}  // namespace orx
