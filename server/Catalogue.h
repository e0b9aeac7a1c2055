// What the server offers, held in memory: items, pieces of items, and containers with their
// children in order.  Made by a CatalogueBuilder, then never changed; read by any thread.
//
// Compact: every text stands once in one arena and is named by its place there, everything else by
// 32-bit indices; a hundred thousand pictures take some ten megabytes.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace orxserve {

// The numbers of the database.
enum class Kind : uint8_t { kPicture = 1, kSound = 2, kFilm = 3 };

// The pictures within a file, served from it by offset and length.
enum class Piece : uint8_t { kThumbnail = 0, kScreennail = 1, kCover = 2 };
constexpr size_t kPieceCount = 3;

struct PiecePlace {
  uint64_t offset = 0;  // bytes from the start of the file
  uint32_t length = 0;  // bytes; 0: there is none
  uint16_t width = 0;   // pixels, 0 when not known
  uint16_t height = 0;
};

// Ids of the views; the others are given by the StateStore.
enum ViewId : uint32_t {
  kRootId = 0,
  kFoldersId = 1,
  kPicturesId = 2,
  kPicturesByDateId = 3,
  kPicturesByFolderId = 4,
  kFilmsId = 5,
  kMusicId = 6,
  kMusicByArtistId = 7,
  kMusicByAlbumId = 8,
  kRecentId = 9,
};

enum class ContainerKind : uint8_t { kView, kFolder, kDate, kPhotoFolder, kArtist, kAlbum };

using TextRef = uint32_t;  // place of a text in the arena; 0: the empty text

struct Item {
  uint64_t size;  // bytes
  uint32_t id;
  uint32_t folder;  // index
  TextRef name;     // of the file, as the file system has it
  TextRef description;
  uint32_t date;    // 20261121, 0 when not known
  uint32_t media;   // index of a MediaFacts, kNone for most pictures
  uint32_t pieces;  // index of the first
  uint16_t width;   // pixels, 0 when not known
  uint16_t height;
  uint8_t pieceBits;  // which pieces there are, lowest first
  Kind kind;
  uint8_t format;    // index of a Format
  uint8_t captions;  // 1: a file of subtitles stands beside it
};
constexpr uint32_t kNone = UINT32_MAX;

// What sounds and films have beyond.
struct MediaFacts {
  uint32_t duration;   // milliseconds, 0 when not known
  uint32_t bitRate;    // bits a second
  uint32_t frequency;  // samples a second
  TextRef artist;
  TextRef album;
  uint16_t channels;
};

// A MIME type and profile that items share, and what is said of them.
struct Format {
  std::string mimeType;
  std::string profile;   // empty: none is certain
  std::string features;  // as contentFeatures.dlna.org tells them
  std::string protocolInfo;
  std::string extension;   // for the URL, without its dot
  bool streaming = false;  // sounds and films
};

struct Container {
  uint32_t id;
  uint32_t parent;  // index; the root's own
  TextRef title;
  ContainerKind kind;
  uint32_t firstContainer, containerCount;  // in containerOrder
  uint32_t firstItem, itemCount;            // in itemOrder
  uint32_t updateId;
};

// A container or an item as it stands in a container.
struct Entry {
  bool isContainer;
  uint32_t index;
};

class Catalogue {
 public:
  explicit Catalogue(uint32_t updateId = 0);  // with the root alone

  const std::vector<Item>& items() const { return items_; }                 // by ascending id
  const std::vector<Container>& containers() const { return containers_; }  // 0 is the root
  const std::vector<Format>& formats() const { return formats_; }
  uint32_t updateId() const { return updateId_; }

  std::string_view Text(TextRef text) const { return arena_.data() + text; }
  std::string_view FolderPath(uint32_t folder) const { return Text(folders_[folder].path); }
  std::string PathOf(const Item& item) const;
  std::string_view TitleOf(const Item& item) const;  // the name's stem, not cleaned
  const Format& FormatOf(const Item& item) const { return formats_[item.format]; }
  const MediaFacts& MediaOf(const Item& item) const;
  PiecePlace PieceOf(const Item& item, Piece piece) const;
  uint32_t HomeOf(const Item& item) const { return folders_[item.folder].container; }

  const Item* FindItem(uint32_t id) const;
  const Container* FindContainer(uint32_t id) const;

  uint32_t ChildCount(const Container& container) const {
    return container.containerCount + container.itemCount;
  }
  // Child `at` in the order of the container: containers first.
  Entry Child(const Container& container, uint32_t at) const;

  // What changed from the catalogue before: containers, for the events.
  const std::vector<uint32_t>& changedContainers() const { return changed_; }

  size_t MemoryBytes() const;

 private:
  friend class CatalogueBuilder;
  struct Folder {
    TextRef path;
    uint32_t container;  // index
  };
  struct PackedPlace {
    uint32_t offset;
    uint32_t lengthAndOffset;  // the offset's bits from the 33rd on in the highest byte
    uint16_t width, height;
  };

  std::string arena_;
  std::vector<Folder> folders_;
  std::vector<Item> items_;
  std::vector<MediaFacts> media_;
  std::vector<PackedPlace> places_;
  std::vector<Format> formats_;
  std::vector<Container> containers_;
  std::vector<uint32_t> containerOrder_;
  std::vector<uint32_t> itemOrder_;
  std::vector<uint32_t> containersById_;  // indices
  std::vector<uint32_t> changed_;         // ids
  uint32_t updateId_;
};

// The catalogue of the moment.  Readers keep the one that they began with.
class CatalogueHolder {
 public:
  explicit CatalogueHolder(uint32_t updateId = 0)
      : current_(std::make_shared<Catalogue>(updateId)) {}
  std::shared_ptr<const Catalogue> Get() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return current_;
  }
  void Set(std::shared_ptr<const Catalogue> next) {
    const std::lock_guard<std::mutex> lock(mutex_);
    current_.swap(next);
  }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<const Catalogue> current_;
};

}  // namespace orxserve
