// Makes a catalogue of rows: gives ids, puts folders and views together, orders them, and tells
// what differs from the last one.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Catalogue.h"
#include "FileLook.h"
#include "MediaRow.h"
#include "StateStore.h"

namespace orxserve {

// For one catalogue: Add every row, then Finish.  What fails is thrown, and the state is as before.
class CatalogueBuilder {
 public:
  // Only files below `folder`, a canonical path, are taken.
  CatalogueBuilder(std::string folder, StateStore* state, const FileLook& look);

  void Add(const MediaRow& row);
  std::shared_ptr<const Catalogue> Finish();

 private:
  // What is known of an item until it has its place.
  struct Draft {
    ObjectKey key;
    PieceFacts pieces;
    int64_t sortNumber;
  };
  struct Node {  // a container with its children while they are gathered
    std::vector<uint32_t> containers;
    std::vector<uint32_t> items;
  };

  // Rows (CatalogueBuilder.cpp)
  TextRef AddText(std::string_view text);
  TextRef Intern(std::string_view text);
  uint32_t FolderOf(std::string_view path);
  uint8_t FormatFor(const MediaRow& row);
  void AddPieces(const MediaRow& row, const PieceFacts& facts, Item* item);
  void AddMedia(const MediaRow& row, Item* item);
  void GiveIds();
  void SortById();

  // Views (CatalogueViews.cpp)
  uint32_t AddContainer(uint32_t id, uint32_t parent, std::string_view title, ContainerKind kind);
  uint32_t NamedContainer(const std::string& name, uint32_t parent, std::string_view title,
                          ContainerKind kind);
  bool ComesBefore(uint32_t left, uint32_t right) const;
  std::string RelativePath(std::string_view path) const;
  uint32_t FolderContainer(std::string_view path);
  void BuildViews();
  void BuildFolders(const std::vector<uint32_t>& order);
  void BuildDates(const std::vector<uint32_t>& order, uint32_t parent);
  void BuildPhotoFolders(const std::vector<uint32_t>& order, uint32_t parent);
  void BuildMusic(const std::vector<uint32_t>& order, uint32_t parent, bool byAlbum);
  void BuildRecent(uint32_t container);
  void Flatten();

  // Differences (CatalogueChanges.cpp)
  uint64_t FactsOf(const Item& item) const;
  uint64_t DigestOf(const Container& container, const std::vector<uint64_t>& facts) const;
  void TellChanges();

  std::string top_;
  StateStore* state_;
  const FileLook& look_;
  std::shared_ptr<Catalogue> catalogue_;
  std::vector<Draft> drafts_;
  std::vector<Node> nodes_;
  std::unordered_map<std::string, uint32_t> folders_;
  std::unordered_map<std::string, TextRef> texts_;
  std::unordered_map<std::string, uint32_t> containers_;
  std::unordered_map<std::string, uint8_t> formats_;
};

}  // namespace orxserve
