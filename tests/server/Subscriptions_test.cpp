#include "Subscriptions.h"

#include <gmock/gmock.h>

#include "Events.h"

namespace {

using namespace orxserve;

Subscription From(const std::string& address, size_t service = 0) {
  Subscription subscription;
  subscription.service = service;
  subscription.peer = *IpAddress::Parse(address);
  return subscription;
}

TEST(ParseCallback, TakesTheFirstOfSeveralAddresses) {
  const auto url = ParseCallback(" <http://10.0.0.2:49152/a?b> <http://10.0.0.2/c>");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->host.Text(), "10.0.0.2");
  EXPECT_EQ(url->port, 49152);
  EXPECT_EQ(url->path, "/a?b");
  EXPECT_EQ(ParseCallback("<http://10.0.0.2>")->path, "/");
  EXPECT_EQ(ParseCallback("<http://10.0.0.2?a#b>")->path, "/?a");
  EXPECT_EQ(ParseCallback("<http://10.0.0.2>")->port, 80);
  EXPECT_EQ(ParseCallback("<http://[fe80::2]:80/>")->host.Text(), "fe80::2");
}
TEST(ParseCallback, RefusesEverythingButPlainNumericAddresses) {
  for (const char* header :
       {"", "http://10.0.0.2/", "<http://10.0.0.2/", "<https://10.0.0.2/>", "<http://tv.local/>",
        "<http://user@10.0.0.2/>", "<http://10.0.0.2:0/>", "<http://10.0.0.2:99999/>",
        "<http://10.0.0.2:x/>", "<http:///a>", "<file:///etc/passwd>", "<http://10.0.0.2/\r\nX: y>",
        "<http://10.0.0.2/ a>", "<http://[10.0.0.2]/>", "<http://10.0.0.2/><http://10.0.0.3/>",
        "<http://0x0a000002/>", "<http://[fe80::2%25eth0]/>", "<http://10.0.0.2\\@8.8.8.8/>"})
    EXPECT_FALSE(ParseCallback(header)) << header;
  EXPECT_FALSE(ParseCallback("<http://10.0.0.2/" + std::string(600, 'a') + ">"));
}
TEST(ParseTimeout, IsBounded) {
  EXPECT_EQ(ParseTimeout("Second-300"), 300U);
  EXPECT_EQ(ParseTimeout("Second-1"), 60U);
  EXPECT_EQ(ParseTimeout("Second-infinite"), 1800U);
  EXPECT_EQ(ParseTimeout("Second-99999999999"), 1800U);
  EXPECT_EQ(ParseTimeout(""), 1800U);
}
TEST(Subscriptions, GivesEachAnIdOfItsOwn) {
  Subscriptions all;
  const auto first = all.Subscribe(From("10.0.0.2"), 300, 0);
  const auto second = all.Subscribe(From("10.0.0.2"), 300, 0);
  EXPECT_EQ(first.status, 200);
  EXPECT_NE(first.sid, second.sid);
  EXPECT_THAT(first.sid, testing::StartsWith("uuid:"));
}
TEST(Subscriptions, TakesEightOfOneAddress) {
  Subscriptions all;
  for (int i = 0; i < 8; ++i) EXPECT_EQ(all.Subscribe(From("10.0.0.2"), 300, 0).status, 200);
  EXPECT_EQ(all.Subscribe(From("10.0.0.2"), 300, 0).status, 503);
  EXPECT_EQ(all.Subscribe(From("10.0.0.3"), 300, 0).status, 200);
  EXPECT_EQ(all.Subscribe(From("10.0.0.2"), 300, 301).status, 200);
}
TEST(Subscriptions, TakesNoMoreThanItsLimit) {
  Subscriptions all;
  for (int i = 0; i < 5000; ++i)
    all.Subscribe(From("10.0." + std::to_string(i / 250) + "." + std::to_string(i % 250)), 300, 0);
  EXPECT_EQ(all.size(), Subscriptions::kMost);
}
TEST(Subscriptions, EndsWhenItsTimeIsOver) {
  Subscriptions all;
  const std::string sid = all.Subscribe(From("10.0.0.2"), 300, 0).sid;
  const IpAddress peer = *IpAddress::Parse("10.0.0.2");
  EXPECT_EQ(all.Renew(sid, 0, peer, 300, 200).status, 200);
  EXPECT_EQ(all.Renew(sid, 0, peer, 300, 499).status, 200);
  EXPECT_EQ(all.Renew(sid, 0, peer, 300, 800).status, 412);
}
TEST(Subscriptions, BelongsToItsServiceAndPeer) {
  Subscriptions all;
  const std::string sid = all.Subscribe(From("10.0.0.2"), 300, 0).sid;
  EXPECT_EQ(all.Unsubscribe(sid, 1, *IpAddress::Parse("10.0.0.2")), 412);
  EXPECT_EQ(all.Unsubscribe(sid, 0, *IpAddress::Parse("10.0.0.3")), 412);
  EXPECT_EQ(all.Unsubscribe(sid, 0, *IpAddress::Parse("10.0.0.2")), 200);
  EXPECT_EQ(all.Unsubscribe(sid, 0, *IpAddress::Parse("10.0.0.2")), 412);
}
TEST(NextSequence, PassesOverZeroWhenItWraps) {
  EXPECT_EQ(NextSequence(0), 1U);
  EXPECT_EQ(NextSequence(UINT32_MAX), 1U);
}
TEST(NotifyRequest, CarriesTheNumberOfTheEvent) {
  Subscription to = From("10.0.0.2");
  to.sid = "uuid:1";
  to.sequence = 7;
  to.callback = *ParseCallback("<http://10.0.0.2:5/a>");
  const std::string request = NotifyRequest(to, "body");
  EXPECT_THAT(request, testing::StartsWith("NOTIFY /a HTTP/1.1\r\nHOST: 10.0.0.2:5\r\n"));
  EXPECT_THAT(request, testing::HasSubstr("SID: uuid:1\r\nSEQ: 7\r\n"));
  EXPECT_THAT(request, testing::HasSubstr("CONTENT-LENGTH: 4\r\n"));
  EXPECT_THAT(request, testing::EndsWith("\r\n\r\nbody"));
}
TEST(EventBody, EscapesItsValues) {
  EXPECT_THAT(EventBody({{"A", "1<2"}}),
              testing::HasSubstr("<e:property><A>1&lt;2</A></e:property>"));
}

}  // namespace
