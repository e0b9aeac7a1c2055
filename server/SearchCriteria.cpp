#include "SearchCriteria.h"

#include "Texts.h"

namespace orxserve {
namespace {

constexpr size_t kLongestCriteria = 4096;  // bytes
constexpr int kDeepest = 32;               // parentheses within one another
constexpr size_t kMostNodes = 256;

bool IsWordEnd(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '(' || c == ')' || c == '"' ||
         c == '=' || c == '!' || c == '<' || c == '>';
}

// "object.item.videoItem" is derived from "object.item", not from "object.ite".
bool IsDerived(std::string_view name, std::string_view from) {
  return StartsWithNoCase(name, from) && (name.size() == from.size() || name[from.size()] == '.');
}

}  // namespace

// Recursive descent; "and" binds tighter than "or".
class SearchParser {
 public:
  SearchParser(std::string_view text, SearchCriteria* criteria)
      : rest_(Trim(text)), criteria_(criteria) {}

  bool ParseAll() {
    if (rest_ == "*") return true;
    uint32_t root = 0;
    return Or(&root) && rest_.empty() && root + 1 == criteria_->nodes_.size();
  }

 private:
  using Node = SearchCriteria::Node;
  using Operator = SearchCriteria::Operator;
  using Join = SearchCriteria::Join;

  void SkipBlanks() {
    while (!rest_.empty() && Trim(rest_.substr(0, 1)).empty()) rest_.remove_prefix(1);
  }

  bool TakeSymbol(std::string_view symbol) {
    if (rest_.substr(0, symbol.size()) != symbol) return false;
    rest_.remove_prefix(symbol.size());
    SkipBlanks();
    return true;
  }

  std::string_view Word() const {
    size_t end = 0;
    while (end < rest_.size() && !IsWordEnd(rest_[end])) ++end;
    return rest_.substr(0, end);
  }

  bool TakeWord(std::string_view word) {
    if (!EqualNoCase(Word(), word)) return false;
    return TakeSymbol(Word());
  }

  bool Add(Node node, uint32_t* index) {
    if (criteria_->nodes_.size() >= kMostNodes) return false;
    *index = static_cast<uint32_t>(criteria_->nodes_.size());
    criteria_->nodes_.push_back(std::move(node));
    return true;
  }

  bool AddJoin(Join join, uint32_t right, uint32_t* left) {
    Node node;
    node.join = join;
    node.left = *left;
    node.right = right;
    return Add(std::move(node), left);
  }

  bool Or(uint32_t* index) {
    if (!And(index)) return false;
    while (TakeWord("or")) {
      uint32_t right = 0;
      if (!And(&right) || !AddJoin(Join::kOr, right, index)) return false;
    }
    return true;
  }

  bool And(uint32_t* index) {
    if (!Term(index)) return false;
    while (TakeWord("and")) {
      uint32_t right = 0;
      if (!Term(&right) || !AddJoin(Join::kAnd, right, index)) return false;
    }
    return true;
  }

  bool Term(uint32_t* index) {
    if (!TakeSymbol("(")) return Condition(index);
    if (++depth_ > kDeepest || !Or(index)) return false;
    --depth_;
    return TakeSymbol(")");
  }

  bool Condition(uint32_t* index) {
    const std::string_view name = Word();
    if (name.empty()) return false;
    Node node;
    node.property = PropertyNamed(name);
    TakeSymbol(name);
    if (!TakeOperator(&node.comparison)) return false;
    const bool exists = node.comparison == Operator::kExists;
    if (exists ? !TakeTruth(&node) : !TakeString(&node.value)) return false;
    node.isNumber = !exists && IsNumeric(node.property) && ParseNumber(node.value, &node.number);
    return Add(std::move(node), index);
  }

  bool TakeOperator(Operator* comparison) {
    constexpr std::pair<std::string_view, Operator> kSymbols[] = {{"!=", Operator::kNotEqual},
                                                                  {"<=", Operator::kLessOrEqual},
                                                                  {">=", Operator::kGreaterOrEqual},
                                                                  {"=", Operator::kEqual},
                                                                  {"<", Operator::kLess},
                                                                  {">", Operator::kGreater}};
    constexpr std::pair<std::string_view, Operator> kWords[] = {
        {"contains", Operator::kContains},
        {"doesNotContain", Operator::kDoesNotContain},
        {"derivedfrom", Operator::kDerivedFrom},
        {"exists", Operator::kExists}};
    for (const auto& [symbol, meaning] : kSymbols) {
      *comparison = meaning;
      if (TakeSymbol(symbol)) return true;
    }
    for (const auto& [word, meaning] : kWords) {
      *comparison = meaning;
      if (TakeWord(word)) return true;
    }
    return false;
  }

  // true or false, which some clients put in quotes.
  bool TakeTruth(Node* node) {
    std::string quoted;
    if (!rest_.empty() && rest_.front() == '"') {
      if (!TakeString(&quoted)) return false;
      node->number = EqualNoCase(quoted, "true") ? 1 : 0;
      return node->number == 1 || EqualNoCase(quoted, "false");
    }
    node->number = TakeWord("true") ? 1 : 0;
    return node->number == 1 || TakeWord("false");
  }

  // A quote or a backslash within it stands behind a backslash.
  bool TakeString(std::string* value) {
    if (rest_.empty() || rest_.front() != '"') return false;
    for (size_t at = 1; at < rest_.size(); ++at) {
      if (rest_[at] == '"') {
        rest_.remove_prefix(at + 1);
        SkipBlanks();
        return true;
      }
      if (rest_[at] == '\\' && ++at == rest_.size()) return false;
      value->push_back(rest_[at]);
    }
    return false;
  }

  std::string_view rest_;
  SearchCriteria* criteria_;
  int depth_ = 0;
};

std::optional<SearchCriteria> SearchCriteria::Parse(std::string_view text) {
  SearchCriteria criteria;
  if (text.size() > kLongestCriteria || !SearchParser(text, &criteria).ParseAll()) return {};
  return criteria;
}

bool SearchCriteria::Matches(const Values& values) const {
  std::string scratch;
  return nodes_.empty() || MatchesNode(nodes_.back(), values, &scratch);
}

bool SearchCriteria::MatchesNode(const Node& node, const Values& values,
                                 std::string* scratch) const {
  switch (node.join) {
    case Join::kAnd:
      return MatchesNode(nodes_[node.left], values, scratch) &&
             MatchesNode(nodes_[node.right], values, scratch);
    case Join::kOr:
      return MatchesNode(nodes_[node.left], values, scratch) ||
             MatchesNode(nodes_[node.right], values, scratch);
    case Join::kCondition:
      break;
  }
  const bool known = values(node.property, scratch);
  if (node.comparison == Operator::kExists) return known == (node.number != 0);
  return known && Compare(node, *scratch);
}

bool SearchCriteria::Compare(const Node& node, const std::string& value) {
  uint64_t number = 0;
  int order = 0;
  if (node.isNumber && ParseNumber(value, &number))
    order = number < node.number ? -1 : number > node.number ? 1 : 0;
  else
    order = CompareNoCase(value, node.value);
  switch (node.comparison) {
    case Operator::kEqual:
      return order == 0;
    case Operator::kNotEqual:
      return order != 0;
    case Operator::kLess:
      return order < 0;
    case Operator::kLessOrEqual:
      return order <= 0;
    case Operator::kGreater:
      return order > 0;
    case Operator::kGreaterOrEqual:
      return order >= 0;
    case Operator::kContains:
      return ContainsNoCase(value, node.value);
    case Operator::kDoesNotContain:
      return !ContainsNoCase(value, node.value);
    case Operator::kDerivedFrom:
      return IsDerived(value, node.value);
    case Operator::kExists:
      break;
  }
  return false;
}

}  // namespace orxserve
