#include "Soap.h"

#include <gmock/gmock.h>

namespace {

using namespace orxserve;

std::string Envelope(const std::string& body) {
  return "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\">"
         "<s:Body>" +
         body + "</s:Body></s:Envelope>";
}

TEST(ParseSoap, ReadsActionAndArguments) {
  SoapAction action;
  ASSERT_TRUE(ParseSoap(Envelope("<u:Browse xmlns:u=\"urn:x\"><ObjectID>5$17</ObjectID>"
                                 "<Filter>a&amp;b</Filter><Empty/></u:Browse>"),
                        &action));
  EXPECT_EQ(action.service, "urn:x");
  EXPECT_EQ(action.name, "Browse");
  EXPECT_EQ(*action.Argument("ObjectID"), "5$17");
  EXPECT_EQ(*action.Argument("Filter"), "a&b");
  EXPECT_EQ(*action.Argument("Empty"), "");
  EXPECT_EQ(action.Argument("Other"), nullptr);
}
TEST(ParseSoap, RefusesDeclaredEntities) {
  SoapAction action;
  EXPECT_FALSE(ParseSoap(
      "<!DOCTYPE x [<!ENTITY a \"aaaa\">]>" + Envelope("<u:Browse xmlns:u=\"urn:x\"/>").substr(21),
      &action));
}
TEST(ParseSoap, RefusesWhatIsNoEnvelope) {
  for (const char* body : {"", "x", "<a/>", "<Envelope><Body><b/></Body></Envelope>"}) {
    SoapAction action;
    EXPECT_FALSE(ParseSoap(body, &action)) << body;
  }
}
TEST(ParseSoap, RefusesTwoActions) {
  SoapAction action;
  EXPECT_FALSE(ParseSoap(Envelope("<a/><b/>"), &action));
}
TEST(ParseSoap, RefusesAnEnvelopeCutOff) {
  const std::string whole = Envelope("<u:Browse xmlns:u=\"urn:x\"><a>b</a></u:Browse>");
  for (size_t size = 0; size < whole.size(); ++size) {
    SoapAction action;
    EXPECT_FALSE(ParseSoap(whole.substr(0, size), &action)) << size;
  }
}
TEST(ParseSoap, RefusesTooMuch) {
  std::string deep;
  std::string many;
  for (int i = 0; i < 40; ++i) deep += "<a>";
  for (int i = 0; i < 40; ++i) deep += "</a>";
  for (int i = 0; i < 40; ++i) many += "<a/>";
  for (const std::string& body :
       {deep, "<x>" + many + "</x>", "<x>" + std::string(kLargestSoapBody, 'a') + "</x>"}) {
    SoapAction action;
    EXPECT_FALSE(ParseSoap(Envelope(body), &action));
  }
}
TEST(SoapFault, NamesTheError) {
  EXPECT_THAT(SoapFault(kNoSuchObject),
              testing::HasSubstr("<errorCode>701</errorCode>"
                                 "<errorDescription>No such object</errorDescription>"));
}

}  // namespace
