// The views of a catalogue: which containers there are, and what stands in them in which order.
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <tuple>

#include "CatalogueBuilder.h"
#include "Texts.h"

namespace orxserve {
namespace {

constexpr size_t kMostRecent = 200;

std::string DateTitle(uint32_t date) {
  if (date == 0) return "Undated";
  return fmt::format("{:04}-{:02}-{:02}", date / 10000, date / 100 % 100, date % 100);
}

std::string_view LastPart(std::string_view path) { return path.substr(path.rfind('/') + 1); }

std::string_view ParentPath(std::string_view path) {
  const size_t slash = path.rfind('/');
  return slash == 0 ? std::string_view("/") : path.substr(0, slash);
}

// A slash sorts before everything else, so that a folder stands directly above what is inside it.
bool PathBefore(std::string_view left, std::string_view right) {
  const auto rank = [](char c) {
    return c == '/' ? 0 : static_cast<unsigned char>(LowerAscii(c)) + 1;
  };
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                      [&](char a, char b) { return rank(a) < rank(b); });
}

}  // namespace

uint32_t CatalogueBuilder::AddContainer(uint32_t id, uint32_t parent, std::string_view title,
                                        ContainerKind kind) {
  const auto index = static_cast<uint32_t>(catalogue_->containers_.size());
  catalogue_->containers_.push_back({id, parent, Intern(title), kind, 0, 0, 0, 0, 0});
  nodes_.emplace_back();
  if (index != 0) nodes_[parent].containers.push_back(index);
  return index;
}

// The container of that name, made at its first mention.
uint32_t CatalogueBuilder::NamedContainer(const std::string& name, uint32_t parent,
                                          std::string_view title, ContainerKind kind) {
  const auto known = containers_.find(name);
  if (known != containers_.end()) return known->second;
  const ObjectKey key = ObjectKey::OfContainer(name);
  uint32_t id = state_->Find(key).id;
  if (id == 0) id = state_->Add(key, {});
  const uint32_t index = AddContainer(id, parent, title, kind);
  containers_.emplace(name, index);
  return index;
}

// The camera's order, folder by folder; files that it did not number come behind, by name.
bool CatalogueBuilder::ComesBefore(uint32_t left, uint32_t right) const {
  const Item& a = catalogue_->items_[left];
  const Item& b = catalogue_->items_[right];
  if (a.folder != b.folder)
    return PathBefore(catalogue_->FolderPath(a.folder), catalogue_->FolderPath(b.folder));
  const auto key = [&](uint32_t index, const Item& item) {
    const int64_t number = drafts_[index].sortNumber;
    return std::make_tuple(number < 0, number, catalogue_->Text(item.name), item.id);
  };
  return key(left, a) < key(right, b);
}

std::string CatalogueBuilder::RelativePath(std::string_view path) const {
  if (path.size() <= top_.size()) return std::string(LastPart(top_));
  return std::string(path.substr(top_ == "/" ? 1 : top_.size() + 1));
}

uint32_t CatalogueBuilder::FolderContainer(std::string_view path) {
  if (path == top_) return containers_.at("view:folders");
  const std::string name = "folder:" + std::string(path);
  const auto known = containers_.find(name);
  if (known != containers_.end()) return known->second;
  const uint32_t parent = FolderContainer(ParentPath(path));
  return NamedContainer(name, parent, LastPart(path), ContainerKind::kFolder);
}

void CatalogueBuilder::BuildFolders(const std::vector<uint32_t>& order) {
  for (Catalogue::Folder& folder : catalogue_->folders_)
    folder.container = FolderContainer(std::string(catalogue_->Text(folder.path)));
  for (const uint32_t item : order)
    nodes_[catalogue_->folders_[catalogue_->items_[item].folder].container].items.push_back(item);
}

void CatalogueBuilder::BuildDates(const std::vector<uint32_t>& order, uint32_t parent) {
  std::map<uint32_t, std::vector<uint32_t>, std::greater<>> days;  // the newest first
  for (const uint32_t item : order)
    if (catalogue_->items_[item].kind == Kind::kPicture)
      days[catalogue_->items_[item].date].push_back(item);
  for (auto& [day, items] : days) {
    const std::string title = DateTitle(day);
    const uint32_t container = NamedContainer("date:" + title, parent, title, ContainerKind::kDate);
    nodes_[container].items = std::move(items);
  }
}

void CatalogueBuilder::BuildPhotoFolders(const std::vector<uint32_t>& order, uint32_t parent) {
  for (const uint32_t index : order) {
    const Item& item = catalogue_->items_[index];
    if (item.kind != Kind::kPicture) continue;
    const std::string path(catalogue_->FolderPath(item.folder));
    const uint32_t container =
        NamedContainer("photos:" + path, parent, RelativePath(path), ContainerKind::kPhotoFolder);
    nodes_[container].items.push_back(index);
  }
}

void CatalogueBuilder::BuildMusic(const std::vector<uint32_t>& order, uint32_t parent,
                                  bool byAlbum) {
  struct NoCase {
    bool operator()(const std::string& left, const std::string& right) const {
      const int order = CompareNoCase(left, right);
      return order != 0 ? order < 0 : left < right;
    }
  };
  std::map<std::string, std::vector<uint32_t>, NoCase> groups;
  for (const uint32_t index : order) {
    const Item& item = catalogue_->items_[index];
    const MediaFacts& media = catalogue_->MediaOf(item);
    if (item.kind == Kind::kSound)
      groups[std::string(catalogue_->Text(byAlbum ? media.album : media.artist))].push_back(index);
  }
  const char* const unknown = byAlbum ? "Unknown album" : "Unknown artist";
  const ContainerKind kind = byAlbum ? ContainerKind::kAlbum : ContainerKind::kArtist;
  for (auto& [name, items] : groups) {
    const uint32_t container = NamedContainer((byAlbum ? "album:" : "artist:") + name, parent,
                                              name.empty() ? unknown : name, kind);
    nodes_[container].items = std::move(items);
  }
}

void CatalogueBuilder::BuildRecent(uint32_t container) {
  const auto count = static_cast<uint32_t>(catalogue_->items_.size());
  std::vector<uint32_t>& recent = nodes_[container].items;
  for (uint32_t i = count; i > 0 && recent.size() < kMostRecent; --i) recent.push_back(i - 1);
}

void CatalogueBuilder::BuildViews() {
  constexpr ContainerKind kView = ContainerKind::kView;
  const uint32_t root = AddContainer(kRootId, 0, "Root", kView);
  containers_["view:folders"] = AddContainer(kFoldersId, root, "Folders", kView);
  const uint32_t pictures = AddContainer(kPicturesId, root, "Pictures", kView);
  const uint32_t byDate = AddContainer(kPicturesByDateId, pictures, "By date", kView);
  const uint32_t byFolder = AddContainer(kPicturesByFolderId, pictures, "By folder", kView);
  const uint32_t films = AddContainer(kFilmsId, root, "Films", kView);
  const uint32_t music = AddContainer(kMusicId, root, "Music", kView);
  const uint32_t byArtist = AddContainer(kMusicByArtistId, music, "By artist", kView);
  const uint32_t byAlbum = AddContainer(kMusicByAlbumId, music, "By album", kView);
  const uint32_t recent = AddContainer(kRecentId, root, "Recently added", kView);

  std::vector<uint32_t> order(catalogue_->items_.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(),
            [this](uint32_t left, uint32_t right) { return ComesBefore(left, right); });
  BuildFolders(order);
  BuildDates(order, byDate);
  BuildPhotoFolders(order, byFolder);
  for (const uint32_t item : order)
    if (catalogue_->items_[item].kind == Kind::kFilm) nodes_[films].items.push_back(item);
  BuildMusic(order, byArtist, false);
  BuildMusic(order, byAlbum, true);
  BuildRecent(recent);
}

// From gathered children to runs in two lists.
void CatalogueBuilder::Flatten() {
  Catalogue& to = *catalogue_;
  size_t items = 0;
  for (const Node& node : nodes_) items += node.items.size();
  to.itemOrder_.reserve(items);
  for (uint32_t i = 0; i < nodes_.size(); ++i) {
    Node& node = nodes_[i];
    Container& container = to.containers_[i];
    if (container.kind == ContainerKind::kFolder || container.id == kFoldersId)
      std::sort(node.containers.begin(), node.containers.end(), [&](uint32_t a, uint32_t b) {
        return PathBefore(to.Text(to.containers_[a].title), to.Text(to.containers_[b].title));
      });
    container.firstContainer = static_cast<uint32_t>(to.containerOrder_.size());
    container.containerCount = static_cast<uint32_t>(node.containers.size());
    container.firstItem = static_cast<uint32_t>(to.itemOrder_.size());
    container.itemCount = static_cast<uint32_t>(node.items.size());
    to.containerOrder_.insert(to.containerOrder_.end(), node.containers.begin(),
                              node.containers.end());
    to.itemOrder_.insert(to.itemOrder_.end(), node.items.begin(), node.items.end());
    node = Node();
  }
  to.containersById_.resize(to.containers_.size());
  std::iota(to.containersById_.begin(), to.containersById_.end(), 0);
  std::sort(to.containersById_.begin(), to.containersById_.end(),
            [&](uint32_t a, uint32_t b) { return to.containers_[a].id < to.containers_[b].id; });
}

}  // namespace orxserve
