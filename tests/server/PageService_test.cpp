#include "PageService.h"

#include <map>
#include <nlohmann/json.hpp>

#include "EventStreams.h"
#include "server/ServerTest.h"

namespace orx_test {
namespace {

using namespace orxserve;
using testing::HasSubstr;
using testing::Not;

class PageServiceTest : public ServerTest {
 protected:
  HttpAnswer Get(const std::string& path, const std::string& tag = "",
                 const std::string& wanted = "") {
    HttpRequest request;
    request.method = "GET";
    request.path = path;
    request.header = [&](const char* name) {
      return std::string_view(name) == "If-None-Match" ? tag.c_str() : nullptr;
    };
    request.argument = [&](const char*) { return wanted.empty() ? nullptr : wanted.c_str(); };
    return page_.Get(request);
  }
  static std::string Header(const HttpAnswer& answer, const std::string& name) {
    for (const auto& [known, value] : answer.headers)
      if (known == name) return value;
    return "none";
  }
  PageService page_{holder_, "My <pictures>"};
};

TEST_F(PageServiceTest, TellsEveryItemInTheCamerasOrder) {
  Make({Picture("/card/B/2.JPG", "2026-01-02", 5), Picture("/card/B/1.JPG", "2026-01-02", 9),
        Sound("/card/A/s.M4A", "Gulls", "Coast")});
  const auto json = nlohmann::json::parse(ItemsJson(*catalogue_));
  ASSERT_EQ(json["items"].size(), 3U);
  EXPECT_EQ(json["folders"], nlohmann::json({"A", "B"}));
  EXPECT_EQ(json["items"][0][2], "s");
  EXPECT_EQ(json["items"][0][11], "Gulls");
  EXPECT_EQ(json["items"][1][2], "2");
  EXPECT_EQ(json["items"][1][4], "2026-01-02");
  EXPECT_EQ(json["types"]["jpg"], "image/jpeg");
}
TEST_F(PageServiceTest, SurvivesHostileNames) {
  Make({Picture("/card/\xff\"<script>\x01/a</script>\"\xfe.JPG")});
  const auto json = nlohmann::json::parse(ItemsJson(*catalogue_));
  EXPECT_EQ(json["items"].size(), 1U);
  EXPECT_THAT(PlainList(*catalogue_, 0), Not(HasSubstr("<script")));
}
TEST_F(PageServiceTest, GoesThroughTheListPageByPage) {
  std::vector<MediaRow> rows;
  for (int i = 0; i < 450; ++i) rows.push_back(Picture("/card/" + std::to_string(i) + ".JPG"));
  Make(rows);
  EXPECT_THAT(PlainList(*catalogue_, 0), HasSubstr("href=\"/?page=2\">The next page"));
  EXPECT_THAT(PlainList(*catalogue_, 2), HasSubstr("href=\"/?page=2\">The page before"));
  EXPECT_THAT(PlainList(*catalogue_, 2), Not(HasSubstr("next page")));
  EXPECT_THAT(PlainList(*catalogue_, UINT64_MAX), Not(HasSubstr("<li>")));
  EXPECT_EQ(Get("/", "", "0").status, 404);
  EXPECT_EQ(Get("/", "", "x").status, 404);
}
TEST_F(PageServiceTest, EscapesItsName) {
  Make({});
  EXPECT_THAT(Get("/").text, HasSubstr("<h1>My &lt;pictures&gt;</h1>"));
}
TEST_F(PageServiceTest, LetsNothingForeignInto) {
  Make({});
  for (const char* path : {"/", "/page.js", "/page.css", "/items.json", "/events"}) {
    EXPECT_THAT(Header(Get(path), "Content-Security-Policy"), HasSubstr("default-src 'none'"))
        << path;
    EXPECT_EQ(Header(Get(path), "X-Content-Type-Options"), "nosniff") << path;
  }
}
TEST_F(PageServiceTest, SendsNothingAgainThatTheBrowserHas) {
  Make({Picture("/card/A.JPG")});
  for (const char* path : {"/page.js", "/page.css", "/items.json"})
    EXPECT_EQ(Get(path, Header(Get(path), "ETag")).status, 304) << path;
}

// A stream that counts how often it was put to sleep and woken.
class EventStreamsTest : public testing::Test {
 protected:
  std::string Take(bool* ended) {
    std::string text;
    streams_.Take(stream_.get(), 1000, &text, ended);
    return text;
  }
  int slept_ = 0;
  int woken_ = 0;
  EventStreams streams_;
  std::shared_ptr<EventStream> stream_ = streams_.Open([this] { ++slept_; }, [this] { ++woken_; });
};

TEST_F(EventStreamsTest, SleepsUntilSomethingChanges) {
  bool ended = false;
  EXPECT_EQ(Take(&ended), "retry: 3000\n\n");
  EXPECT_EQ(Take(&ended), "");
  EXPECT_EQ(slept_, 1);
  streams_.Changed(7);
  EXPECT_EQ(woken_, 1);
  EXPECT_EQ(Take(&ended), "event: changed\ndata: 7\n\n");
  EXPECT_FALSE(ended);
}
TEST_F(EventStreamsTest, WakesOnlyWhatSleeps) {
  streams_.Changed(1);
  streams_.KeepAlive();
  EXPECT_EQ(woken_, 0);
}
TEST_F(EventStreamsTest, TellsOfItsEnd) {
  bool ended = false;
  Take(&ended);
  Take(&ended);
  streams_.End();
  EXPECT_EQ(woken_, 1);
  Take(&ended);
  EXPECT_TRUE(ended);
  EXPECT_EQ(streams_.Open([] {}, [] {}), nullptr);
}
TEST_F(EventStreamsTest, KeepsLittleForWhoDoesNotRead) {
  for (uint32_t i = 0; i < 100000; ++i) streams_.Changed(i);
  EXPECT_LT(stream_->waiting.size(), 5000U);
}
TEST_F(EventStreamsTest, OpensThirtyTwoAtMost) {
  for (size_t i = 1; i < EventStreams::kMost; ++i) EXPECT_NE(streams_.Open([] {}, [] {}), nullptr);
  EXPECT_EQ(streams_.Open([] {}, [] {}), nullptr);
  streams_.Close(stream_);
  EXPECT_NE(streams_.Open([] {}, [] {}), nullptr);
}

}  // namespace
}  // namespace orx_test
