// While one of these lives, the system's character-set converter cannot be opened.
#pragma once

namespace orx_test {

class NoConverter {
 public:
  NoConverter();
  ~NoConverter();
  NoConverter(const NoConverter&) = delete;
  NoConverter& operator=(const NoConverter&) = delete;
};

// How often a converter has been asked for since the program began.
int ConvertersOpened();

}  // namespace orx_test
