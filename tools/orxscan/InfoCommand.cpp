// orxscan info FILE
#include <algorithm>
#include <memory>
#include <vector>

#include "Commands.h"
#include "FileScanner/AudioMetaData.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/FileInfomation.h"
#include "FileScanner/FileParserFramework.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/VideoMetaData.h"
#include "Library.h"
#include "Output.h"
#include "Paths.h"
#include "Refusal.h"

namespace orxscan {
namespace {

using Json = nlohmann::ordered_json;

struct Options {
  std::string file;
  bool json = false;
};

struct FreeInfo {
  void operator()(MediaFileDisplayInfo* info) const { FreeMediaFileDisplayInfo(info); }
};

Json Text(const char* text) { return text != nullptr && *text != '\0' ? Json(text) : Json(); }

Json Number(double value) { return value > 0 ? Json(value) : Json(); }

Json Count(long value) { return value > 0 ? Json(value) : Json(); }

// An embedded picture: where it is in the file, and its size; null when there is none.
Json Embedded(int offset, int length, int width, int height) {
  if (length <= 0) return {};
  return {
      {"offset", offset}, {"bytes", length}, {"width", Count(width)}, {"height", Count(height)}};
}

void AddPicture(const ImageMetaData& picture, Json* info) {
  (*info)["width"] = Count(picture.GetWidth());
  (*info)["height"] = Count(picture.GetHeight());
  (*info)["description"] = Text(picture.GetDescription());
  (*info)["thumbnail"] = Embedded(picture.GetThumbnailOffset(), picture.GetThumbnailLength(),
                                  picture.GetThumbnailWidth(), picture.GetThumbnailHeight());
  (*info)["screennail"] = Embedded(picture.GetScreennailOffset(), picture.GetScreennailLength(),
                                   picture.GetScreennailWidth(), picture.GetScreennailHeight());
}

void AddSound(const AudioMetaData& sound, Json* info) {
  (*info)["artist"] = Text(sound.GetArtist());
  (*info)["album"] = Text(sound.GetAlbumTitle());
  (*info)["track"] = Count(sound.GetTrackNumber());
  (*info)["channels"] = Count(sound.GetNumChannel());
  (*info)["samplesPerSecond"] = Count(sound.GetFrequency());
  (*info)["audioBitsPerSecond"] = Count(sound.GetBitrate());
}

void AddFilm(const VideoMetaData& film, Json* info) {
  (*info)["duration"] = Text(film.GetDuration());
  (*info)["width"] = Count(film.GetWidth());
  (*info)["height"] = Count(film.GetHeight());
  (*info)["framesPerSecond"] = Number(film.GetVideoFrameRate());
  (*info)["level"] = Number(film.GetVideoLevel());
  (*info)["videoBitsPerSecond"] = Count(film.GetVideoBitrate());
  if (film.GetAudioData() != nullptr) AddSound(*film.GetAudioData(), info);
}

Json Collect(const std::string& path, const MediaFileDisplayInfo& display,
             const MediaMetaData& record) {
  Json info;
  info["path"] = path;
  info["kind"] = ClassName(display.ObjectType);
  info["title"] = Text(display.Title);
  info["date"] = Text(display.Date);
  info["size"] = record.GetSize();
  info["mimeType"] = Text(display.Res->MimeType);
  info["profile"] = Text(record.GetDLNAProfile());
  info["protocolInfo"] = Text(display.Res->AdditionalInfo);
  if (const auto* picture = dynamic_cast<const ImageMetaData*>(&record)) {
    AddPicture(*picture, &info);
  } else if (const auto* film = dynamic_cast<const VideoMetaData*>(&record)) {
    AddFilm(*film, &info);
  } else if (const auto* sound = dynamic_cast<const AudioMetaData*>(&record)) {
    info["duration"] = Text(sound->GetDuration());
    AddSound(*sound, &info);
  }
  return info;
}

std::string Shown(const Json& value) {
  if (value.is_string()) return Printable(value.get<std::string>());
  if (value.is_number_float()) return fmt::format("{:.3f}", value.get<double>());
  if (!value.is_object()) return value.dump();
  std::string shown;
  if (value["width"].is_number() && value["height"].is_number())
    shown = fmt::format("{}x{}, ", value["width"].get<int>(), value["height"].get<int>());
  return shown +
         fmt::format("{} bytes at {}", value["bytes"].get<int>(), value["offset"].get<int>());
}

void Print(const Json& info) {
  size_t width = 0;
  for (const auto& item : info.items()) width = std::max(width, item.key().size());
  for (const auto& item : info.items())
    if (!item.value().is_null()) fmt::print("{:<{}}  {}\n", item.key(), width, Shown(item.value()));
}

int Info(const Options& options) {
  const std::string path = CheckedFile(options.file);
  const LibraryInstances instances;
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);

  std::unique_ptr<MediaFileDisplayInfo, FreeInfo> display;
  std::unique_ptr<MediaMetaData> record;
  std::string reason;
  {
    const QuietLibrary library;
    display.reset(scanner->ParseAndGetFileInfo(path.c_str()));
    const size_t slash = path.rfind('/');
    const FileInfomation file(path.substr(0, slash).c_str(), path.c_str() + slash + 1,
                              path.c_str());
    record.reset(scanner->_GetFMParserFramework()->HandleFile(&file));
    if (display == nullptr || record == nullptr)
      reason = ReasonToRefuse(scanner, path, library).text;
  }
  if (display == nullptr || record == nullptr)
    throw Failure("{}: {}", Quoted(options.file), reason.empty() ? "cannot be read" : reason);

  const Json info = Collect(path, *display, *record);
  if (options.json) {
    PrintJson(info);
  } else {
    Print(info);
  }
  return kDone;
}

}  // namespace

Command AddInfoCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand("info", "Show what is known of one file");
  app->add_option("FILE", options->file, "the picture, film or sound")->required();
  app->add_flag("--json", options->json, "print it as JSON");
  app->footer("Example: orxscan info IMG_0001.JPG --json");
  return {app, [options] { return Info(*options); }};
}

}  // namespace orxscan
