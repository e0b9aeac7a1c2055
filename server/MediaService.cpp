#include "MediaService.h"

#include "Didl.h"
#include "FileLook.h"
#include "MediaFile.h"
#include "ProtocolInfo.h"
#include "Range.h"
#include "Texts.h"

namespace orxserve {
namespace {

// What is sent: a part of an open file.
struct Resource {
  uint64_t offset = 0;
  uint64_t length = 0;
  std::string type;
  std::string features;
  bool streaming = false;
  std::string captions;  // an address
};

// 0, or the status of a request that DLNA does not allow.
int Refusal(const HttpRequest& request, const Resource& resource) {
  const std::string_view wanted = Trim(request.Header("getcontentFeatures.dlna.org"));
  if (!wanted.empty() && wanted != "1") return 400;
  const std::string_view mode = Trim(request.Header("transferMode.dlna.org"));
  const bool streaming = EqualNoCase(mode, "Streaming");
  const bool interactive = EqualNoCase(mode, "Interactive");
  if (!mode.empty() && !streaming && !interactive && !EqualNoCase(mode, "Background")) return 400;
  if ((streaming && !resource.streaming) || (interactive && resource.streaming)) return 406;
  const bool seeks = !request.Header("TimeSeekRange.dlna.org").empty() ||
                     !request.Header("PlaySpeed.dlna.org").empty();
  if (seeks && request.Header("Range").empty()) return 406;
  return 0;
}

std::string TransferMode(const HttpRequest& request, const Resource& resource) {
  const std::string_view mode = Trim(request.Header("transferMode.dlna.org"));
  if (EqualNoCase(mode, "Background")) return "Background";
  return resource.streaming ? "Streaming" : "Interactive";
}

// A range counts only if it is one of the resource that the client has in mind.
bool IsSameResource(std::string_view ifRange, const std::string& tag, const std::string& date) {
  ifRange = Trim(ifRange);
  return ifRange.empty() || ifRange == tag || ifRange == date;
}

// A list of tags, or a star.
bool Names(std::string_view list, const std::string& tag) {
  while (!list.empty()) {
    std::string_view one = TakePart(&list, ',');
    if (one.substr(0, 2) == "W/") one.remove_prefix(2);
    if (one == tag || one == "*") return true;
  }
  return false;
}

std::string ContentRange(const ByteRange& range, uint64_t size) {
  std::string text = "bytes ";
  AppendNumber(&text, range.first);
  text += '-';
  AppendNumber(&text, range.first + range.length - 1);
  text += '/';
  AppendNumber(&text, size);
  return text;
}

HttpAnswer Unsatisfiable(uint64_t size) {
  HttpAnswer answer = HttpAnswer::Status(416);
  answer.Add("Content-Range", "bytes */" + std::to_string(size));
  return answer;
}

HttpAnswer Send(const HttpRequest& request, MediaFile file, const Resource& resource) {
  if (const int refused = Refusal(request, resource)) return HttpAnswer::Status(refused);
  const std::string tag = file.EntityTag();
  const std::string date = HttpDate(file.changed());
  ByteRange range{ByteRange::Kind::kWhole, 0, resource.length};
  if (IsSameResource(request.Header("If-Range"), tag, date))
    range = ParseRange(request.Header("Range"), resource.length);
  if (range.kind == ByteRange::Kind::kUnsatisfiable) return Unsatisfiable(resource.length);

  HttpAnswer answer;
  answer.headers.reserve(10);
  answer.Add("ETag", tag);
  if (Names(request.Header("If-None-Match"), tag)) {
    answer.status = 304;
    return answer;
  }
  answer.Add("Content-Type", resource.type);
  answer.Add("Accept-Ranges", "bytes");
  answer.Add("Last-Modified", date);
  answer.Add("transferMode.dlna.org", TransferMode(request, resource));
  if (!resource.features.empty()) answer.Add("contentFeatures.dlna.org", resource.features);
  if (!resource.captions.empty() && Trim(request.Header("getCaptionInfo.sec")) == "1")
    answer.Add("CaptionInfo.sec", resource.captions);
  if (range.kind == ByteRange::Kind::kPart) {
    answer.status = 206;
    answer.Add("Content-Range", ContentRange(range, resource.length));
  }
  answer.offset = resource.offset + range.first;
  answer.length = range.length;
  answer.file.Reset(file.Release());
  return answer;
}

std::string CaptionsUrl(const HttpRequest& request, const Item& item) {
  return request.base + "/" + kCaptionsLetter + "/" + std::to_string(item.id) + ".srt";
}

}  // namespace

bool ParseMediaPath(std::string_view path, char* letter, uint32_t* id) {
  if (path.size() < 4 || path[0] != '/' || path[2] != '/') return false;
  *letter = path[1];
  const std::string_view name = path.substr(3);
  const size_t dot = name.find('.');
  if (dot == std::string_view::npos || name.find('/') != std::string_view::npos) return false;
  uint64_t number = 0;
  if (!ParseNumber(name.substr(0, dot), &number) || number > UINT32_MAX) return false;
  *id = static_cast<uint32_t>(number);
  return true;
}

HttpAnswer MediaService::Get(const HttpRequest& request) const {
  char letter = 0;
  uint32_t id = 0;
  if (!ParseMediaPath(request.path, &letter, &id)) return HttpAnswer::Status(404);
  const std::shared_ptr<const Catalogue> catalogue = catalogues_.Get();
  const Item* item = catalogue->FindItem(id);
  if (item == nullptr) return HttpAnswer::Status(404);
  if (letter == kOriginalLetter) return Original(request, *catalogue, *item);
  if (letter == kCaptionsLetter) return Captions(request, *catalogue, *item);
  for (const Piece piece : {Piece::kThumbnail, Piece::kScreennail, Piece::kCover})
    if (letter == UrlLetter(piece)) return PieceOf(request, *catalogue, *item, piece);
  return HttpAnswer::Status(404);
}

HttpAnswer MediaService::Original(const HttpRequest& request, const Catalogue& catalogue,
                                  const Item& item) const {
  MediaFile file = MediaFile::Open(catalogue.PathOf(item));
  if (!file.isOpen() || file.size() != item.size) return HttpAnswer::Status(404);
  const Format& format = catalogue.FormatOf(item);
  Resource resource{0, item.size, format.mimeType, format.features, format.streaming, ""};
  if (item.captions != 0) resource.captions = CaptionsUrl(request, item);
  return Send(request, std::move(file), resource);
}

HttpAnswer MediaService::PieceOf(const HttpRequest& request, const Catalogue& catalogue,
                                 const Item& item, Piece piece) const {
  const PiecePlace place = catalogue.PieceOf(item, piece);
  if (place.length == 0) return HttpAnswer::Status(404);
  MediaFile file = MediaFile::Open(catalogue.PathOf(item));
  if (!file.isOpen() || file.size() != item.size || !file.HasJpegAt(place))
    return HttpAnswer::Status(404);
  const Resource resource{place.offset,         place.length, "image/jpeg",
                          PieceFeatures(place), false,        ""};
  return Send(request, std::move(file), resource);
}

HttpAnswer MediaService::Captions(const HttpRequest& request, const Catalogue& catalogue,
                                  const Item& item) const {
  constexpr uint64_t kLargest = 16 << 20;  // bytes; there is none as long
  const std::string path = item.captions == 0 ? "" : FileLook().Captions(catalogue.PathOf(item));
  if (path.empty()) return HttpAnswer::Status(404);
  MediaFile file = MediaFile::Open(path);
  if (!file.isOpen() || file.size() > kLargest) return HttpAnswer::Status(404);
  const Resource resource{0, file.size(), "text/srt; charset=utf-8", "", false, ""};
  return Send(request, std::move(file), resource);
}

}  // namespace orxserve
