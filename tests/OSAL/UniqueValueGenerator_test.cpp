#include "OSAL/UniqueValueGenerator.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <string>

#include "support/Text.h"

namespace {

using orx_test::Exact;
using orx_test::Taken;

// A generator that has made no name yet.
class ResourceName : public testing::Test {
 protected:
  ResourceName() { UniqueValueGenerator::DestroyInstance(); }
  ~ResourceName() override { UniqueValueGenerator::DestroyInstance(); }

  UniqueValueGenerator* names() const { return UniqueValueGenerator::GetInstance(); }
};

long CoarseNow() { return static_cast<long>(clock() / 1000000 * 1000); }

// The name `make` gives, and the two it may be: the processor time may go on meanwhile.  `expect`
// writes the name for a time value.
void ExpectName(const std::function<char*()>& make,
                const std::function<std::string(long)>& expect) {
  const long before = CoarseNow();
  const std::string name = Taken(make());
  const long after = CoarseNow();
  EXPECT_TRUE(name == expect(before) || name == expect(after)) << name << " " << expect(before);
}

std::string Plain(const std::string& start, const std::string& counter, const std::string& end,
                  long time) {
  return start + counter + std::to_string(time) + end;
}

// The time has at least six digits here.
std::string Suffixed(const std::string& start, const std::string& counter, const std::string& end,
                     long time) {
  std::string digits = std::to_string(time);
  if (digits.size() < 6) digits.insert(0, 6 - digits.size(), '0');
  return start + counter + digits + end;
}

TEST_F(ResourceName, OfAnItemIsCounterTimeAndExtension) {
  ExpectName([&] { return names()->GetUniqueURIMA("JPG"); },
             [](long time) { return Plain("/orx", "0001", ".JPG", time); });
}

TEST_F(ResourceName, OfAnItemMayHaveASuffix) {
  ExpectName([&] { return names()->GetUniqueURIMA("JPG", "1000001"); },
             [](long time) { return Suffixed("/orx", "0001", "1000001.JPG", time); });
}

TEST_F(ResourceName, OfAThumbnailHasItsOwnStart) {
  ExpectName([&] { return names()->GetUniqueThumbnailURIMA("JPG"); },
             [](long time) { return Plain("/orxthumb", "0001", ".JPG", time); });
  ExpectName([&] { return names()->GetUniqueThumbnailURIMA("JPG", "s"); },
             [](long time) { return Suffixed("/orxthumb", "0002", "s.JPG", time); });
}

TEST_F(ResourceName, OfAScreennailHasItsOwnStart) {
  ExpectName([&] { return names()->GetUniqueScreennailURIMA("JPG"); },
             [](long time) { return Plain("/orxscreen", "0001", ".JPG", time); });
  ExpectName([&] { return names()->GetUniqueScreennailURIMA("JPG", "s"); },
             [](long time) { return Suffixed("/orxscreen", "0002", "s.JPG", time); });
}

TEST_F(ResourceName, OfAVideoThumbnailHasItsOwnStart) {
  ExpectName([&] { return names()->GetUniqueVideoThumbnailURIMA("MP4"); },
             [](long time) { return Plain("/orxthumbvideo", "0001", ".MP4", time); });
  ExpectName([&] { return names()->GetUniqueVideoThumbnailURIMA("MP4", "s"); },
             [](long time) { return Suffixed("/orxthumbvideo", "0002", "s.MP4", time); });
}

TEST_F(ResourceName, MayBeginWithAPrefix) {
  ExpectName([&] { return names()->GetUniqueThumbnailURIMAWithPrefix("JPG", "/x"); },
             [](long time) { return Plain("/x", "0001", ".JPG", time); });
  ExpectName([&] { return names()->GetUniqueScreennailURIMAWithPrefix("JPG", ""); },
             [](long time) { return Plain("", "0002", ".JPG", time); });
}

TEST_F(ResourceName, BeginsAsUsualForANullPrefix) {
  ExpectName([&] { return names()->GetUniqueThumbnailURIMAWithPrefix("JPG", nullptr); },
             [](long time) { return Plain("/orxthumb", "0001", ".JPG", time); });
  ExpectName([&] { return names()->GetUniqueScreennailURIMAWithPrefix("JPG", nullptr); },
             [](long time) { return Plain("/orxscreen", "0002", ".JPG", time); });
}

TEST_F(ResourceName, EndsInBinWithoutAnExtension) {
  const std::function<char*()> makers[] = {
      [&] { return names()->GetUniqueURIMA(nullptr); },
      [&] { return names()->GetUniqueURIMA(nullptr, "s"); },
      [&] { return names()->GetUniqueThumbnailURIMA(nullptr); },
      [&] { return names()->GetUniqueThumbnailURIMA(nullptr, "s"); },
      [&] { return names()->GetUniqueThumbnailURIMAWithPrefix(nullptr, "/x"); },
      [&] { return names()->GetUniqueScreennailURIMA(nullptr); },
      [&] { return names()->GetUniqueScreennailURIMA(nullptr, "s"); },
      [&] { return names()->GetUniqueScreennailURIMAWithPrefix(nullptr, "/x"); },
      [&] { return names()->GetUniqueVideoThumbnailURIMA(nullptr); },
      [&] { return names()->GetUniqueVideoThumbnailURIMA(nullptr, "s"); },
  };
  for (const auto& make : makers) {
    const std::string name = Taken(make());
    EXPECT_EQ(name.substr(name.size() - 4), ".bin");
  }
}

TEST_F(ResourceName, HasSevenZerosForANullSuffix) {
  ExpectName([&] { return names()->GetUniqueURIMA("JPG", nullptr); },
             [](long time) { return Suffixed("/orx", "0001", "0000000.JPG", time); });
}

TEST_F(ResourceName, KeepsADotForAnEmptyExtension) {
  ExpectName([&] { return names()->GetUniqueURIMA(""); },
             [](long time) { return Plain("/orx", "0001", ".", time); });
}

TEST_F(ResourceName, CountsOnThroughAllOperations) {
  Taken(names()->GetUniqueURIMA("JPG"));
  Taken(names()->GetUniqueThumbnailURIMA("JPG", "s"));
  ExpectName([&] { return names()->GetUniqueScreennailURIMA("JPG"); },
             [](long time) { return Plain("/orxscreen", "0003", ".JPG", time); });
}

TEST_F(ResourceName, HasFiveDigitsFromTheTenThousandthOn) {
  for (int i = 1; i < 9999; ++i) Taken(names()->GetUniqueURIMA("JPG"));
  ExpectName([&] { return names()->GetUniqueURIMA("JPG"); },
             [](long time) { return Plain("/orx", "9999", ".JPG", time); });
  ExpectName([&] { return names()->GetUniqueURIMA("JPG", "s"); },
             [](long time) { return Suffixed("/orx", "10000", "s.JPG", time); });
}

TEST_F(ResourceName, CountsFromOneAgainWithANewInstance) {
  Taken(names()->GetUniqueURIMA("JPG"));
  UniqueValueGenerator::DestroyInstance();
  ExpectName([&] { return names()->GetUniqueURIMA("JPG"); },
             [](long time) { return Plain("/orx", "0001", ".JPG", time); });
}

TEST_F(ResourceName, ComesFromOneInstance) {
  EXPECT_EQ(names(), UniqueValueGenerator::GetInstance());
  UniqueValueGenerator::DestroyInstance();
  UniqueValueGenerator::DestroyInstance();  // there is none any more
}

TEST_F(ResourceName, IsCutAt511Bytes) {
  const std::string text(600, 'e');
  EXPECT_EQ(Taken(names()->GetUniqueURIMA(Exact(text).get())).size(), 511u);
  EXPECT_EQ(Taken(names()->GetUniqueURIMA("JPG", Exact(text).get())).size(), 511u);
  EXPECT_EQ(Taken(names()->GetUniqueThumbnailURIMAWithPrefix("JPG", Exact(text).get())),
            text.substr(0, 511));
}

TEST_F(ResourceName, TakesNoTextForAFormat) {
  ExpectName([&] { return names()->GetUniqueURIMA("%s%n", "%d%s"); },
             [](long time) { return Suffixed("/orx", "0001", "%d%s.%s%n", time); });
  ExpectName([&] { return names()->GetUniqueScreennailURIMAWithPrefix("%d", "%s%n"); },
             [](long time) { return Plain("%s%n", "0002", ".%d", time); });
}

}  // namespace
