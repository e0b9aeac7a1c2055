// The SearchCriteria argument of Search: "*", or conditions on properties joined by and, or and
// parentheses:  upnp:class derivedfrom "object.item.videoItem" and dc:title contains "bay"
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Properties.h"

namespace orxserve {

class SearchCriteria {
 public:
  // Nothing when the text does not follow the grammar, or is longer or deeper than any client's.
  static std::optional<SearchCriteria> Parse(std::string_view text);

  // Writes an object's property over the text; false when the object does not have it.
  using Values = std::function<bool(Property property, std::string* value)>;
  bool Matches(const Values& values) const;

 private:
  friend class SearchParser;
  enum class Operator : uint8_t {
    kEqual,
    kNotEqual,
    kLess,
    kLessOrEqual,
    kGreater,
    kGreaterOrEqual,
    kContains,
    kDoesNotContain,
    kDerivedFrom,
    kExists,
  };
  enum class Join : uint8_t { kCondition, kAnd, kOr };
  struct Node {
    Join join = Join::kCondition;
    uint32_t left = 0, right = 0;  // of a join
    Property property = Property::kUnknown;
    Operator comparison = Operator::kEqual;
    std::string value;
    uint64_t number = 0;  // the value, when isNumber
    bool isNumber = false;
  };

  bool MatchesNode(const Node& node, const Values& values, std::string* scratch) const;
  static bool Compare(const Node& node, const std::string& value);

  std::vector<Node> nodes_;  // the root is the last; none: everything matches
};

}  // namespace orxserve
