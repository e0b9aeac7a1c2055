// Rows of cells as aligned text, made printable.
#pragma once

#include <string>
#include <vector>

namespace orxscan {

// Every row is measured before the first one is printed, so rows need not be kept.
class TextTable {
 public:
  explicit TextTable(const std::vector<std::string>& names);

  void Measure(const std::vector<std::string>& cells);
  void PrintHead() const;
  void PrintRow(const std::vector<std::string>& cells) const;

 private:
  struct Column {
    std::string name;
    size_t width;
    bool numbers = true;  // stand to the right
  };
  void PrintLine(const std::vector<std::string>& printable, bool head) const;

  std::vector<Column> columns_;
};

}  // namespace orxscan
