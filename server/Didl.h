// Writes objects as DIDL-Lite.
#pragma once

#include <string>
#include <string_view>

#include "Catalogue.h"
#include "Filter.h"
#include "Properties.h"
#include "Texts.h"

namespace orxserve {

void AppendDate(std::string* out, uint32_t date);              // 20261121: "2026-11-21"
void AppendDuration(std::string* out, uint32_t milliseconds);  // "1:02:03.000"

// The address of an item's resources, as ItemUrl in MediaUrl.h takes it apart.
class DidlWriter {
 public:
  // `base` is "http://192.168.1.5:8200".  All of them outlive the writer.
  DidlWriter(const Catalogue& catalogue, std::string_view base, Filter filter, XmlLevel level,
             std::string* out);

  void Begin();
  void Write(const PlacedEntry& object);
  void End();

 private:
  void WriteContainer(const Container& container);
  void WriteItem(const Item& item, const Container& within);
  void WriteTexts(const Item& item, const MediaFacts& media);
  void WriteArt(const Item& item);
  void WriteCaptions(const Item& item);
  void WriteOriginal(const Item& item, const MediaFacts& media);
  void WritePiece(const Item& item, Piece piece);

  void Tag(std::string_view name) { out_->append(lt_).append(name); }
  void Close() { out_->append(gt_); }
  void EndTag(std::string_view name) { out_->append(lt_).append("/").append(name).append(gt_); }
  void Element(std::string_view name, std::string_view text);
  void Number(std::string_view name, uint64_t number);  // an attribute
  void Resolution(uint32_t width, uint32_t height);
  void Url(char what, const Item& item, std::string_view extension);

  const Catalogue& catalogue_;
  std::string_view base_;
  Filter filter_;
  XmlLevel level_;
  std::string_view lt_, gt_;
  std::string* out_;
};

// The letter that stands for a piece in an address.
char UrlLetter(Piece piece);
constexpr char kOriginalLetter = 'o';
constexpr char kCaptionsLetter = 'c';

}  // namespace orxserve
