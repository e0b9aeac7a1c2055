#include "TextTable.h"

#include <algorithm>

#include "Output.h"

namespace orxscan {
namespace {

constexpr size_t kWidest = 80;  // longer cells are printed whole and push their row out of line

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

size_t Width(const std::string& printable) {
  return printable.size() -
         static_cast<size_t>(std::count_if(printable.begin(), printable.end(), ContinuesCharacter));
}

bool IsNumber(const std::string& text) {
  return text.find_first_not_of("0123456789", text[0] == '-' ? 1 : 0) == std::string::npos ||
         (text.find_first_not_of("0123456789.-+e") == std::string::npos &&
          text.find('.') != std::string::npos);
}

}  // namespace

TextTable::TextTable(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    const std::string printable = Printable(name);
    columns_.push_back({printable, std::min(Width(printable), kWidest)});
  }
}

void TextTable::Measure(const std::vector<std::string>& cells) {
  for (size_t i = 0; i < columns_.size() && i < cells.size(); ++i) {
    Column& column = columns_[i];
    column.width = std::max(column.width, std::min(Width(Printable(cells[i])), kWidest));
    column.numbers = column.numbers && (cells[i].empty() || IsNumber(cells[i]));
  }
}

void TextTable::PrintHead() const {
  std::vector<std::string> names, rules;
  for (const Column& column : columns_) {
    names.push_back(column.name);
    rules.emplace_back(column.width, '-');
  }
  PrintLine(names, true);
  PrintLine(rules, true);
}

void TextTable::PrintRow(const std::vector<std::string>& cells) const {
  std::vector<std::string> printable;
  printable.reserve(cells.size());
  for (const std::string& cell : cells) printable.push_back(Printable(cell));
  PrintLine(printable, false);
}

void TextTable::PrintLine(const std::vector<std::string>& printable, bool head) const {
  std::string line;
  for (size_t i = 0; i < columns_.size() && i < printable.size(); ++i) {
    const size_t width = Width(printable[i]);
    const std::string space(columns_[i].width > width ? columns_[i].width - width : 0, ' ');
    line += "  ";
    line += columns_[i].numbers && !head ? space + printable[i] : printable[i] + space;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  fmt::print("{}\n", line);
}

}  // namespace orxscan
