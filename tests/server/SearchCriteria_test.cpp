#include "SearchCriteria.h"

#include <gmock/gmock.h>

#include <map>

namespace {

using namespace orxserve;

// A film of 1000 bytes.
bool Matches(const std::string& text) {
  const std::map<Property, std::string> film = {{Property::kTitle, "Harbour at \"Dawn\""},
                                                {Property::kClass, "object.item.videoItem"},
                                                {Property::kDate, "2026-11-21"},
                                                {Property::kSize, "1000"}};
  const auto criteria = SearchCriteria::Parse(text);
  EXPECT_TRUE(criteria) << text;
  return criteria && criteria->Matches([&](Property property, std::string* value) {
    const auto known = film.find(property);
    if (known != film.end()) *value = known->second;
    return known != film.end();
  });
}

TEST(SearchCriteria, TakesEverythingForAStar) { EXPECT_TRUE(Matches(" * ")); }
TEST(SearchCriteria, ComparesTextsWithoutCase) {
  EXPECT_TRUE(Matches("dc:title contains \"HARBOUR\""));
  EXPECT_FALSE(Matches("dc:title doesNotContain \"harbour\""));
  EXPECT_TRUE(Matches("upnp:class = \"OBJECT.item.videoItem\""));
}
TEST(SearchCriteria, ComparesSizesAsNumbers) {
  EXPECT_TRUE(Matches("res@size > \"999\""));
  EXPECT_FALSE(Matches("res@size >= \"10000\""));
}
TEST(SearchCriteria, ComparesDates) {
  EXPECT_TRUE(Matches("dc:date>=\"2026-01-01\" and dc:date<\"2027-01-01\""));
}
TEST(SearchCriteria, DerivesClassesAtTheirDots) {
  EXPECT_TRUE(Matches("upnp:class derivedfrom \"object.item\""));
  EXPECT_TRUE(Matches("upnp:class derivedFrom \"object.item.videoItem\""));
  EXPECT_FALSE(Matches("upnp:class derivedfrom \"object.ite\""));
}
TEST(SearchCriteria, BindsAndTighterThanOr) {
  EXPECT_TRUE(Matches("dc:date = \"2026-11-21\" or dc:title = \"x\" and dc:title = \"y\""));
  EXPECT_FALSE(Matches("(dc:date = \"2026-11-21\" or dc:title = \"x\") and dc:title = \"y\""));
}
TEST(SearchCriteria, AsksWhetherPropertiesExist) {
  EXPECT_TRUE(Matches("@refID exists false"));
  EXPECT_TRUE(Matches("dc:title exists \"true\""));
  EXPECT_FALSE(Matches("upnp:album exists true"));
}
TEST(SearchCriteria, MatchesNothingByUnknownProperties) {
  EXPECT_FALSE(Matches("microsoft:thing = \"x\""));
  EXPECT_TRUE(Matches("microsoft:thing exists false"));
}
TEST(SearchCriteria, TakesQuotesBehindABackslash) {
  EXPECT_TRUE(Matches("dc:title contains \"\\\"dawn\\\"\""));
}
TEST(SearchCriteria, NeedsNoBlanks) {
  EXPECT_TRUE(Matches("(upnp:class=\"object.item.videoItem\")and(@refID exists false)"));
}
TEST(SearchCriteria, RefusesWhatIsNoCriteria) {
  for (const char* text :
       {"", "and", "dc:title", "dc:title =", "dc:title = x", "dc:title = \"x", "(dc:title = \"x\"",
        "dc:title = \"x\")", "dc:title = \"x\" dc:title = \"y\"", "* and *", "@id exists maybe",
        "dc:title like \"x\"", "dc:title = \"x\\", "dc:title = \"x\" or"})
    EXPECT_FALSE(SearchCriteria::Parse(text)) << text;
}
TEST(SearchCriteria, RefusesWhatIsTooDeepOrTooLong) {
  const std::string condition = "@id exists true";
  EXPECT_FALSE(SearchCriteria::Parse(std::string(40, '(') + condition + std::string(40, ')')));
  EXPECT_TRUE(SearchCriteria::Parse(std::string(30, '(') + condition + std::string(30, ')')));
  std::string many = condition;
  for (int i = 0; i < 200; ++i) many += " or " + condition;
  EXPECT_FALSE(SearchCriteria::Parse(many));
}

}  // namespace
