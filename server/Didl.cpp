#include "Didl.h"

#include "ObjectId.h"
#include "ProtocolInfo.h"

namespace orxserve {
namespace {

void AppendPadded(std::string* out, uint32_t number, uint32_t digits) {
  uint32_t ten = 1;
  for (uint32_t i = 1; i < digits; ++i) ten *= 10;
  for (; ten != 0; ten /= 10) out->push_back(static_cast<char>('0' + number / ten % 10));
}

constexpr std::string_view kNamespaces =
    "DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\""
    " xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
    " xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\""
    " xmlns:dlna=\"urn:schemas-dlna-org:metadata-1-0/\""
    " xmlns:sec=\"http://www.sec.co.kr/\"";

}  // namespace

void AppendDate(std::string* out, uint32_t date) {
  AppendPadded(out, date / 10000, 4);
  out->push_back('-');
  AppendPadded(out, date / 100 % 100, 2);
  out->push_back('-');
  AppendPadded(out, date % 100, 2);
}

void AppendDuration(std::string* out, uint32_t milliseconds) {
  AppendNumber(out, milliseconds / 3600000);
  out->push_back(':');
  AppendPadded(out, milliseconds / 60000 % 60, 2);
  out->push_back(':');
  AppendPadded(out, milliseconds / 1000 % 60, 2);
  out->push_back('.');
  AppendPadded(out, milliseconds % 1000, 3);
}

char UrlLetter(Piece piece) {
  return piece == Piece::kThumbnail ? 't' : piece == Piece::kScreennail ? 's' : 'a';
}

DidlWriter::DidlWriter(const Catalogue& catalogue, std::string_view base, Filter filter,
                       XmlLevel level, std::string* out)
    : catalogue_(catalogue),
      base_(base),
      filter_(filter),
      level_(level),
      lt_(level == XmlLevel::kPlain ? "<" : "&lt;"),
      gt_(level == XmlLevel::kPlain ? ">" : "&gt;"),
      out_(out) {}

void DidlWriter::Begin() {
  Tag(kNamespaces);
  Close();
}

void DidlWriter::End() { EndTag("DIDL-Lite"); }

void DidlWriter::Element(std::string_view name, std::string_view text) {
  Tag(name);
  Close();
  AppendXml(out_, text, level_);
  EndTag(name);
}

void DidlWriter::Number(std::string_view name, uint64_t number) {
  out_->append(" ").append(name).append("=\"");
  AppendNumber(out_, number);
  out_->push_back('"');
}

void DidlWriter::Resolution(uint32_t width, uint32_t height) {
  if (!filter_.Wants(Filter::kResolution) || width == 0 || height == 0) return;
  out_->append(" resolution=\"");
  AppendNumber(out_, width);
  out_->push_back('x');
  AppendNumber(out_, height);
  out_->push_back('"');
}

void DidlWriter::Url(char what, const Item& item, std::string_view extension) {
  out_->append(base_).append("/").append(1, what).append("/");
  AppendNumber(out_, item.id);
  out_->append(".").append(extension);
}

void DidlWriter::Write(const PlacedEntry& object) {
  if (object.entry.isContainer)
    WriteContainer(catalogue_.containers()[object.entry.index]);
  else
    WriteItem(catalogue_.items()[object.entry.index], catalogue_.containers()[object.within]);
}

void DidlWriter::WriteContainer(const Container& container) {
  Tag("container");
  Number("id", container.id);
  if (container.id == kRootId)
    out_->append(" parentID=\"-1\"");
  else
    Number("parentID", catalogue_.containers()[container.parent].id);
  out_->append(" restricted=\"1\"");
  if (filter_.Wants(Filter::kSearchable)) out_->append(" searchable=\"1\"");
  if (filter_.Wants(Filter::kChildCount)) Number("childCount", catalogue_.ChildCount(container));
  Close();
  Element("dc:title", catalogue_.Text(container.title));
  Element("upnp:class", ClassOf(container.kind));
  EndTag("container");
}

void DidlWriter::WriteItem(const Item& item, const Container& within) {
  const MediaFacts& media = catalogue_.MediaOf(item);
  const bool reference = &catalogue_.containers()[catalogue_.HomeOf(item)] != &within;
  Tag("item id=\"");
  if (reference) {
    AppendNumber(out_, within.id);
    out_->push_back('$');
  }
  AppendNumber(out_, item.id);
  out_->push_back('"');
  Number("parentID", within.id);
  if (reference && filter_.Wants(Filter::kRefId)) Number("refID", item.id);
  out_->append(" restricted=\"1\"");
  Close();
  Element("dc:title", catalogue_.TitleOf(item));
  Element("upnp:class", ClassOf(item.kind));
  WriteTexts(item, media);
  if (filter_.Wants(Filter::kArt)) WriteArt(item);
  if (filter_.Wants(Filter::kCaptions)) WriteCaptions(item);
  if (filter_.Wants(Filter::kRes)) {
    WriteOriginal(item, media);
    WritePiece(item, Piece::kScreennail);
    WritePiece(item, Piece::kThumbnail);  // last, for clients that show what comes first
  }
  EndTag("item");
}

void DidlWriter::WriteTexts(const Item& item, const MediaFacts& media) {
  if (filter_.Wants(Filter::kDate) && item.date != 0) {
    Tag("dc:date");
    Close();
    AppendDate(out_, item.date);
    EndTag("dc:date");
  }
  if (filter_.Wants(Filter::kDescription) && item.description != 0)
    Element("dc:description", catalogue_.Text(item.description));
  if (filter_.Wants(Filter::kCreator) && media.artist != 0)
    Element("dc:creator", catalogue_.Text(media.artist));
  if (filter_.Wants(Filter::kArtist) && media.artist != 0)
    Element("upnp:artist", catalogue_.Text(media.artist));
  if (filter_.Wants(Filter::kAlbum) && media.album != 0)
    Element("upnp:album", catalogue_.Text(media.album));
}

// The smallest picture that there is of it.
void DidlWriter::WriteArt(const Item& item) {
  for (const Piece piece : {Piece::kCover, Piece::kThumbnail, Piece::kScreennail}) {
    const PiecePlace place = catalogue_.PieceOf(item, piece);
    if (place.length == 0) continue;
    Tag("upnp:albumArtURI");
    const std::string_view profile = JpegProfile(place.width, place.height);
    if (!profile.empty()) out_->append(" dlna:profileID=\"").append(profile).append("\"");
    Close();
    Url(UrlLetter(piece), item, "jpg");
    EndTag("upnp:albumArtURI");
    return;
  }
}

void DidlWriter::WriteCaptions(const Item& item) {
  if (item.captions == 0) return;
  Tag("sec:CaptionInfoEx sec:type=\"srt\"");
  Close();
  Url(kCaptionsLetter, item, "srt");
  EndTag("sec:CaptionInfoEx");
}

void DidlWriter::WriteOriginal(const Item& item, const MediaFacts& media) {
  const Format& format = catalogue_.FormatOf(item);
  Tag("res protocolInfo=\"");
  out_->append(format.protocolInfo).append("\"");
  if (filter_.Wants(Filter::kSize)) Number("size", item.size);
  if (filter_.Wants(Filter::kDuration) && media.duration != 0) {
    out_->append(" duration=\"");
    AppendDuration(out_, media.duration);
    out_->push_back('"');
  }
  if (filter_.Wants(Filter::kBitRate) && media.bitRate >= 8) Number("bitrate", media.bitRate / 8);
  if (filter_.Wants(Filter::kFrequency) && media.frequency != 0)
    Number("sampleFrequency", media.frequency);
  if (filter_.Wants(Filter::kChannels) && media.channels != 0)
    Number("nrAudioChannels", media.channels);
  Resolution(item.width, item.height);
  Close();
  Url(kOriginalLetter, item, format.extension);
  EndTag("res");
}

void DidlWriter::WritePiece(const Item& item, Piece piece) {
  const PiecePlace place = catalogue_.PieceOf(item, piece);
  if (place.length == 0) return;
  Tag("res protocolInfo=\"");
  out_->append(PieceProtocolInfo(place)).append("\"");
  if (filter_.Wants(Filter::kSize)) Number("size", place.length);
  Resolution(place.width, place.height);
  Close();
  Url(UrlLetter(piece), item, "jpg");
  EndTag("res");
}

}  // namespace orxserve
