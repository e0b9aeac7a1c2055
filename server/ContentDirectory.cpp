#include "ContentDirectory.h"

#include <algorithm>

#include "Didl.h"
#include "ObjectId.h"
#include "Texts.h"

namespace orxserve {
namespace {

// The lists of one client's kind of browsing: which folders stand for pictures, films and music.
constexpr char kFeatureList[] =
    "<Features xmlns=\"urn:schemas-upnp-org:av:avs\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xsi:schemaLocation=\"urn:schemas-upnp-org:av:avs http://www.upnp.org/schemas/av/avs.xsd\">"
    "<Feature name=\"samsung.com_BASICVIEW\" version=\"1\">"
    "<container id=\"6\" type=\"object.item.audioItem\"/>"
    "<container id=\"5\" type=\"object.item.videoItem\"/>"
    "<container id=\"2\" type=\"object.item.imageItem\"/>"
    "</Feature></Features>";

class Text : public Answer {
 public:
  explicit Text(std::string text) : text_(std::move(text)) {}
  bool Write(std::string* out, size_t /*enough*/) override {
    out->append(text_);
    return false;
  }

 private:
  std::string text_;
};

// The answer of Browse and Search.
class Listing : public Answer {
 public:
  Listing(const char* action, std::shared_ptr<const Catalogue> catalogue, ObjectList list,
          std::string base, Filter filter)
      : action_(action),
        catalogue_(std::move(catalogue)),
        list_(std::move(list)),
        base_(std::move(base)),
        filter_(filter) {}

  void SetPage(uint64_t start, uint64_t count) {
    next_ = static_cast<uint32_t>(std::min<uint64_t>(start, list_.size()));
    const uint64_t left = list_.size() - next_;
    count_ = static_cast<uint32_t>(count == 0 ? left : std::min(count, left));
    end_ = next_ + count_;
  }
  void SetUpdateId(uint32_t id) { updateId_ = id; }

  bool Write(std::string* out, size_t enough) override {
    DidlWriter didl(*catalogue_, base_, filter_, XmlLevel::kEmbedded, out);
    if (!begun_) {
      begun_ = true;
      BeginResponse(out, kContentDirectory, action_);
      out->append("<Result>");
      didl.Begin();
    }
    for (; next_ < end_; ++next_) {
      if (out->size() >= enough) return true;
      didl.Write(list_.at(next_));
    }
    didl.End();
    out->append("</Result>");
    AppendArgument(out, "NumberReturned", count_);
    AppendArgument(out, "TotalMatches", list_.size());
    AppendArgument(out, "UpdateID", updateId_);
    EndResponse(out, action_);
    return false;
  }

 private:
  const char* action_;
  std::shared_ptr<const Catalogue> catalogue_;
  ObjectList list_;
  std::string base_;
  Filter filter_;
  uint32_t next_ = 0, end_ = 0, count_ = 0, updateId_ = 0;
  bool begun_ = false;
};

bool NumberArgument(const SoapAction& action, const char* name, uint64_t* number) {
  const std::string* text = action.Argument(name);
  return text != nullptr && ParseNumber(Trim(*text), number) && *number <= UINT32_MAX;
}

// What Browse and Search have in common.
struct ListArguments {
  std::string object;
  std::string filter;
  std::string sort;
  SortCriteria criteria;
  uint64_t start = 0;
  uint64_t count = 0;
};

int ReadListArguments(const SoapAction& action, const char* object, ListArguments* arguments) {
  const std::string* id = action.Argument(object);
  const std::string* filter = action.Argument("Filter");
  const std::string* sort = action.Argument("SortCriteria");
  if (id == nullptr || filter == nullptr || sort == nullptr ||
      !NumberArgument(action, "StartingIndex", &arguments->start) ||
      !NumberArgument(action, "RequestedCount", &arguments->count))
    return kInvalidArguments;
  arguments->object = *id;
  arguments->filter = *filter;
  arguments->sort = *sort;
  const auto criteria = SortCriteria::Parse(*sort);
  if (!criteria) return kBadSortCriteria;
  arguments->criteria = *criteria;
  return kNoError;
}

ObjectList OneObject(const Catalogue& catalogue, const ObjectRef& object) {
  PlacedEntry entry{};
  if (object.item != nullptr) {
    entry.entry = {false, static_cast<uint32_t>(object.item - catalogue.items().data())};
    entry.within = static_cast<uint32_t>(object.within - catalogue.containers().data());
  } else {
    entry.entry = {true, static_cast<uint32_t>(object.container - catalogue.containers().data())};
    entry.within = object.container->parent;
  }
  return ObjectList(std::make_shared<const std::vector<PlacedEntry>>(1, entry));
}

// The root stands for the whole catalogue.
uint32_t UpdateIdOf(const Catalogue& catalogue, const Container* container) {
  const bool all = container == nullptr || container->id == kRootId;
  return all ? catalogue.updateId() : container->updateId;
}

}  // namespace

std::unique_ptr<Answer> TextAnswer(std::string text) {
  return std::make_unique<Text>(std::move(text));
}

std::unique_ptr<Answer> Response(
    std::string_view service, std::string_view action,
    std::initializer_list<std::pair<std::string_view, std::string>> arguments) {
  std::string text;
  BeginResponse(&text, service, action);
  for (const auto& [name, value] : arguments) AppendArgument(&text, name, value);
  EndResponse(&text, action);
  return TextAnswer(std::move(text));
}

int ContentDirectory::Browse(const SoapAction& action, const std::string& base,
                             std::unique_ptr<Answer>* answer) {
  ListArguments arguments;
  const std::string* flag = action.Argument("BrowseFlag");
  if (flag == nullptr || (*flag != "BrowseMetadata" && *flag != "BrowseDirectChildren"))
    return kInvalidArguments;
  if (const int error = ReadListArguments(action, "ObjectID", &arguments)) return error;
  const std::shared_ptr<const Catalogue> catalogue = catalogues_.Get();
  const ObjectRef object = FindObject(*catalogue, arguments.object);
  if (!object) return kNoSuchObject;
  const bool metadata = *flag == "BrowseMetadata";
  if (!metadata && object.container == nullptr) return kNoSuchContainer;
  const ObjectList list =
      metadata ? OneObject(*catalogue, object)
               : lists_.Children(catalogue, *object.container, arguments.sort, arguments.criteria);
  auto listing =
      std::make_unique<Listing>("Browse", catalogue, list, base, Filter(arguments.filter));
  listing->SetPage(metadata ? 0 : arguments.start, metadata ? 1 : arguments.count);
  listing->SetUpdateId(UpdateIdOf(*catalogue, object.container));
  *answer = std::move(listing);
  return kNoError;
}

int ContentDirectory::Search(const SoapAction& action, const std::string& base,
                             std::unique_ptr<Answer>* answer) {
  ListArguments arguments;
  const std::string* text = action.Argument("SearchCriteria");
  if (text == nullptr) return kInvalidArguments;
  if (const int error = ReadListArguments(action, "ContainerID", &arguments)) return error;
  const auto criteria = SearchCriteria::Parse(*text);
  if (!criteria) return kBadSearchCriteria;
  const std::shared_ptr<const Catalogue> catalogue = catalogues_.Get();
  const ObjectRef object = FindObject(*catalogue, arguments.object);
  if (object.container == nullptr) return kNoSuchContainer;
  const ObjectList list = lists_.Found(catalogue, *object.container, *text, *criteria,
                                       arguments.sort, arguments.criteria);
  auto listing =
      std::make_unique<Listing>("Search", catalogue, list, base, Filter(arguments.filter));
  listing->SetPage(arguments.start, arguments.count);
  listing->SetUpdateId(UpdateIdOf(*catalogue, object.container));
  *answer = std::move(listing);
  return kNoError;
}

int ContentDirectory::Perform(const SoapAction& action, const std::string& base,
                              std::unique_ptr<Answer>* answer) {
  if (action.name == "Browse") return Browse(action, base, answer);
  if (action.name == "Search") return Search(action, base, answer);
  const auto respond = [&](std::string_view name, std::string value) {
    *answer = Response(kContentDirectory, action.name, {{name, std::move(value)}});
    return kNoError;
  };
  if (action.name == "GetSearchCapabilities") return respond("SearchCaps", SearchableProperties());
  if (action.name == "GetSortCapabilities") return respond("SortCaps", SortableProperties());
  if (action.name == "GetSystemUpdateID")
    return respond("Id", std::to_string(catalogues_.Get()->updateId()));
  if (action.name == "X_GetFeatureList") return respond("FeatureList", kFeatureList);
  return kInvalidAction;
}

}  // namespace orxserve
