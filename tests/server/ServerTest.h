// A catalogue made of rows that a test names, with a state folder of its own.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "CatalogueBuilder.h"
#include "ContentDirectory.h"
#include "support/TempDir.h"

namespace orx_test {

// Says of every piece that it is sound, without looking.
class TrustingLook : public orxserve::FileLook {
 public:
  orxserve::PieceFacts Pieces(
      const std::string&,
      const std::array<orxserve::PiecePlace, orxserve::kPieceCount>&) const override {
    return {sound, cover};
  }
  std::string Captions(const std::string& path) const override {
    return path.find("titled") == std::string::npos ? "" : path + ".srt";
  }
  uint8_t sound = 7;
  orxserve::ImageSize cover;
};

inline orxserve::MediaRow Picture(const std::string& path, const std::string& date = "2026-11-21",
                                  int64_t sortNumber = -1) {
  orxserve::MediaRow row;
  row.path = path;
  row.size = 1000;
  row.date = orxserve::ParseDate(date);
  row.mimeType = "image/jpeg";
  row.profile = "JPEG_LRG";
  row.width = 1600;
  row.height = 1200;
  row.sortNumber = sortNumber;
  return row;
}

inline orxserve::MediaRow Film(const std::string& path) {
  orxserve::MediaRow row = Picture(path);
  row.kind = orxserve::Kind::kFilm;
  row.mimeType = "video/mp4";
  row.profile = "";
  row.duration = 3723004;
  row.bitRate = 800000;
  row.frequency = 48000;
  row.channels = 2;
  return row;
}

inline orxserve::MediaRow Sound(const std::string& path, const std::string& artist,
                                const std::string& album) {
  orxserve::MediaRow row = Film(path);
  row.kind = orxserve::Kind::kSound;
  row.mimeType = "audio/mp4";
  row.profile = "AAC_ISO_320";
  row.width = row.height = 0;
  row.artist = artist;
  row.album = album;
  return row;
}

class ServerTest : public testing::Test {
 protected:
  using Catalogue = orxserve::Catalogue;

  std::shared_ptr<const Catalogue> Make(const std::vector<orxserve::MediaRow>& rows) {
    orxserve::CatalogueBuilder builder("/card", state_.get(), look_);
    for (const orxserve::MediaRow& row : rows) builder.Add(row);
    catalogue_ = builder.Finish();
    holder_.Set(catalogue_);
    return catalogue_;
  }
  void Restart() {
    state_.reset();
    state_ = std::make_unique<orxserve::StateStore>(dir_.Path("state"));
  }

  const orxserve::Item* ItemNamed(const std::string& name) const {
    for (const orxserve::Item& item : catalogue_->items())
      if (catalogue_->Text(item.name) == name) return &item;
    return nullptr;
  }
  uint32_t IdOf(const std::string& name) const {
    const orxserve::Item* item = ItemNamed(name);
    return item == nullptr ? 0 : item->id;
  }
  const orxserve::Container* ContainerTitled(const std::string& title) const {
    for (const orxserve::Container& container : catalogue_->containers())
      if (catalogue_->Text(container.title) == title) return &container;
    return nullptr;
  }
  // The names of the items and the titles of the containers in it, in order.
  std::vector<std::string> Children(uint32_t id) const {
    std::vector<std::string> names;
    const orxserve::Container* container = catalogue_->FindContainer(id);
    if (container == nullptr) return names;
    for (uint32_t at = 0; at < catalogue_->ChildCount(*container); ++at) {
      const orxserve::Entry child = catalogue_->Child(*container, at);
      names.emplace_back(child.isContainer
                             ? catalogue_->Text(catalogue_->containers()[child.index].title)
                             : catalogue_->Text(catalogue_->items()[child.index].name));
    }
    return names;
  }

  // The answer of an action, or "error N".
  std::string Perform(const std::string& action,
                      std::vector<std::pair<std::string, std::string>> arguments) {
    orxserve::SoapAction request{orxserve::kContentDirectory, action, std::move(arguments)};
    std::unique_ptr<orxserve::Answer> answer;
    const int error = directory_.Perform(request, "http://10.0.0.1:8200", &answer);
    if (error != 0) return "error " + std::to_string(error);
    std::string text;
    while (answer->Write(&text, text.size() + 1)) {
    }
    return text;
  }
  std::string Browse(const std::string& id, const std::string& flag = "BrowseDirectChildren",
                     const std::string& filter = "*", const std::string& start = "0",
                     const std::string& count = "0", const std::string& sort = "") {
    return Perform("Browse", {{"ObjectID", id},
                              {"BrowseFlag", flag},
                              {"Filter", filter},
                              {"StartingIndex", start},
                              {"RequestedCount", count},
                              {"SortCriteria", sort}});
  }
  std::string Search(const std::string& criteria, const std::string& id = "0",
                     const std::string& sort = "") {
    return Perform("Search", {{"ContainerID", id},
                              {"SearchCriteria", criteria},
                              {"Filter", "*"},
                              {"StartingIndex", "0"},
                              {"RequestedCount", "0"},
                              {"SortCriteria", sort}});
  }
  // The titles in an answer, in order.
  static std::vector<std::string> Titles(const std::string& answer) {
    const std::string open = "&lt;dc:title&gt;";
    std::vector<std::string> titles;
    for (size_t at = answer.find(open); at != std::string::npos; at = answer.find(open, at)) {
      at += open.size();
      titles.push_back(answer.substr(at, answer.find("&lt;/dc:title", at) - at));
    }
    return titles;
  }
  // The text of a plain argument.
  static std::string Argument(const std::string& answer, const std::string& name) {
    const size_t start = answer.find("<" + name + ">");
    if (start == std::string::npos) return "none";
    const size_t text = start + name.size() + 2;
    return answer.substr(text, answer.find("</", text) - text);
  }

  const TempDir dir_;
  TrustingLook look_;
  std::unique_ptr<orxserve::StateStore> state_ =
      std::make_unique<orxserve::StateStore>(dir_.Path("state"));
  std::shared_ptr<const Catalogue> catalogue_;
  orxserve::CatalogueHolder holder_;
  orxserve::ContentDirectory directory_{holder_};
};

}  // namespace orx_test
