#include <gmock/gmock.h>

#include "SsdpMessage.h"
#include "SsdpPlan.h"

namespace {

using namespace orxserve;
using testing::HasSubstr;

std::string Search(const std::string& target, const std::string& more = "MX: 3\r\n") {
  return "M-SEARCH * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nMAN: \"ssdp:discover\"\r\n" + more +
         "ST: " + target + "\r\n\r\n";
}

TEST(ParseSearch, ReadsTargetAndWait) {
  const auto search = ParseSearch(Search("ssdp:all"), true);
  ASSERT_TRUE(search);
  EXPECT_EQ(search->target, "ssdp:all");
  EXPECT_EQ(search->wait, 3U);
}
TEST(ParseSearch, BoundsTheWait) {
  EXPECT_EQ(ParseSearch(Search("ssdp:all", "MX: 120\r\n"), true)->wait, 5U);
  EXPECT_EQ(ParseSearch(Search("ssdp:all", "MX: 0\r\n"), true)->wait, 1U);
}
TEST(ParseSearch, WantsNoWaitWhenItIsAskedDirectly) {
  EXPECT_EQ(ParseSearch(Search("ssdp:all", ""), false)->wait, 0U);
  EXPECT_FALSE(ParseSearch(Search("ssdp:all", ""), true));
}
TEST(ParseSearch, RefusesWhatIsNoSearch) {
  for (const std::string& datagram :
       {std::string(), std::string("NOTIFY * HTTP/1.1\r\n\r\n"),
        std::string("M-SEARCH * HTTP/1.1\r\nST: ssdp:all\r\nMX: 1\r\n\r\n"),
        Search("ssdp:all", "MX: x\r\n"), Search(""), Search(std::string(300, 'a')),
        Search("ssdp:all") + std::string(kLargestSsdp, 'a')})
    EXPECT_FALSE(ParseSearch(datagram, true)) << datagram;
}
TEST(ParseSearch, LooksAtTheHeadAlone) {
  EXPECT_FALSE(
      ParseSearch("M-SEARCH * HTTP/1.1\r\n\r\nMAN: \"ssdp:discover\"\r\nST: a\r\nMX: 1\r\n", true));
}
TEST(SsdpDevice, AnswersForItselfItsTypeAndItsServices) {
  const SsdpDevice device("abc", 1800);
  EXPECT_EQ(device.Matching("ssdp:all").size(), 6U);
  EXPECT_EQ(device.Matching("upnp:rootdevice").size(), 1U);
  EXPECT_EQ(device.Matching("uuid:abc").size(), 1U);
  EXPECT_EQ(device.Matching("urn:schemas-upnp-org:device:MediaServer:1").size(), 1U);
  EXPECT_TRUE(device.Matching("urn:schemas-upnp-org:device:MediaRenderer:1").empty());
}
TEST(SsdpDevice, TellsWhereItIsAndForHowLong) {
  const SsdpDevice device("abc", 1800);
  const std::string alive =
      device.Alive(device.targets()[0], "239.255.255.250:1900", "http://10.0.0.1:8200/device.xml");
  EXPECT_THAT(alive, HasSubstr("CACHE-CONTROL: max-age=1800\r\n"));
  EXPECT_THAT(alive, HasSubstr("LOCATION: http://10.0.0.1:8200/device.xml\r\n"));
  EXPECT_THAT(alive, HasSubstr("USN: uuid:abc::upnp:rootdevice\r\nNTS: ssdp:alive\r\n\r\n"));
  EXPECT_THAT(device.Found(device.targets()[1], "x", 0), HasSubstr("EXT:\r\n"));
}

PendingAnswer From(const std::string& address, uint16_t port, double due) {
  return {due, *IpAddress::Parse(address), port, 1, "ssdp:all"};
}

TEST(AnswerPlan, GivesAnswersWhenTheyAreDue) {
  AnswerPlan plan;
  EXPECT_TRUE(plan.Add(From("10.0.0.2", 5, 2), 1));
  EXPECT_TRUE(plan.TakeDue(1.5).empty());
  EXPECT_EQ(plan.NextDue(9), 2);
  EXPECT_EQ(plan.TakeDue(2).size(), 1U);
  EXPECT_TRUE(plan.TakeDue(3).empty());
}
TEST(AnswerPlan, AnswersARepeatedSearchOnce) {
  AnswerPlan plan;
  EXPECT_TRUE(plan.Add(From("10.0.0.2", 5, 2), 1));
  EXPECT_FALSE(plan.Add(From("10.0.0.2", 5, 2.5), 1));
  EXPECT_TRUE(plan.Add(From("10.0.0.2", 6, 2), 1));
}
TEST(AnswerPlan, AnswersOneAddressFiveTimesASecond) {
  AnswerPlan plan;
  int admitted = 0;
  for (uint16_t i = 0; i < 10000; ++i) {
    if (plan.Add(From("10.0.0.2", i, 1), 1)) ++admitted;
    plan.TakeDue(1);
  }
  EXPECT_EQ(admitted, 20);
  EXPECT_TRUE(plan.Add(From("10.0.0.2", 1, 2), 1.3));
}
TEST(AnswerPlan, AnswersManyAddressesThirtyTimesASecond) {
  AnswerPlan plan;
  int admitted = 0;
  for (int i = 0; i < 10000; ++i) {
    const std::string from = "10.0." + std::to_string(i / 250) + "." + std::to_string(i % 250);
    if (plan.Add(From(from, 1, 1), 1)) ++admitted;
    plan.TakeDue(1);
  }
  EXPECT_EQ(admitted, 60);
}

}  // namespace
