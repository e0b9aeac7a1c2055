#include "Net.h"

#include <gmock/gmock.h>

namespace {

using namespace orxserve;

bool Contains(const char* subnet, const char* address) {
  return Subnet::Parse(subnet)->Contains(*IpAddress::Parse(address));
}

TEST(IpAddress, TakesNumericAddressesAlone) {
  for (const char* text : {"", "localhost", "10.0.0", "10.0.0.256", "010.0.0.1x", "::1%lo", "[::1]",
                           "0x7f000001", "2130706433"})
    EXPECT_FALSE(IpAddress::Parse(text)) << text;
  EXPECT_EQ(IpAddress::Parse("10.0.0.1")->Text(), "10.0.0.1");
  EXPECT_EQ(IpAddress::Parse("fe80::1")->UrlHost(), "[fe80::1]");
}
TEST(IpAddress, SeesTheSameMachineBehindBothFormsOfAnAddress) {
  EXPECT_EQ(*IpAddress::Parse("::ffff:10.0.0.1"), *IpAddress::Parse("10.0.0.1"));
  EXPECT_TRUE(IpAddress::Parse("::ffff:127.0.0.1")->isLoopback());
}
TEST(IpAddress, KnowsLoopbackAndLink) {
  EXPECT_TRUE(IpAddress::Parse("127.9.9.9")->isLoopback());
  EXPECT_TRUE(IpAddress::Parse("::1")->isLoopback());
  EXPECT_FALSE(IpAddress::Parse("::2")->isLoopback());
  EXPECT_TRUE(IpAddress::Parse("febf::1")->isLinkLocal());
  EXPECT_FALSE(IpAddress::Parse("fec0::1")->isLinkLocal());
}
TEST(Subnet, ContainsWhatSharesItsPrefix) {
  EXPECT_TRUE(Contains("192.168.1.7/24", "192.168.1.255"));
  EXPECT_FALSE(Contains("192.168.1.7/24", "192.168.2.1"));
  EXPECT_TRUE(Contains("10.0.0.0/12", "10.15.0.1"));
  EXPECT_FALSE(Contains("10.0.0.0/12", "10.16.0.1"));
  EXPECT_TRUE(Contains("0.0.0.0/0", "8.8.8.8"));
  EXPECT_FALSE(Contains("0.0.0.0/0", "fe80::1"));
  EXPECT_TRUE(Contains("fe80::/10", "fe80::5"));
  EXPECT_TRUE(Contains("10.0.0.1", "10.0.0.1"));
  EXPECT_FALSE(Contains("10.0.0.1", "10.0.0.2"));
}
TEST(Subnet, RefusesWhatIsNone) {
  for (const char* text : {"", "/24", "10.0.0.0/", "10.0.0.0/33", "fe80::/129", "10.0.0.0/-1"})
    EXPECT_FALSE(Subnet::Parse(text)) << text;
}

}  // namespace
