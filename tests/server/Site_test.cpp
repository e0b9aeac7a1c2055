#include "Site.h"

#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "server/ServerTest.h"

namespace orx_test {
namespace {

using namespace orxserve;
using testing::HasSubstr;

// What comes in on 10.0.0.1:8200.
class SiteTest : public ServerTest {
 protected:
  void SetUp() override {
    // Below the test's own folder, so that there are files behind the rows.
    bytes_ = std::string(100, 'a') + "\xff\xd8" + std::string(98, 't') + std::string(800, 'b');
    MediaRow picture = Picture(dir_.Write("card/A.JPG", bytes_));
    picture.pieces[0] = {100, 100, 160, 120};
    MediaRow film = Film(dir_.Write("card/titled.MP4", bytes_));
    dir_.Write("card/titled.MP4.srt", "1");
    CatalogueBuilder builder(dir_.Path("card"), state_.get(), look_);
    builder.Add(picture);
    builder.Add(film);
    catalogue_ = builder.Finish();
    holder_.Set(catalogue_);
  }
  HttpAnswer Ask(const std::string& method, const std::string& path,
                 std::map<std::string, std::string> headers = {}, const std::string& body = "") {
    HttpRequest request;
    request.method = method;
    request.path = path;
    request.body = body;
    request.base = "http://10.0.0.1:8200";
    request.local = *IpAddress::Parse("10.0.0.1");
    request.peer = *IpAddress::Parse("10.0.0.2");
    request.port = 8200;
    request.header = [&](const char* name) {
      const auto known = headers.find(name);
      return known == headers.end() ? nullptr : known->second.c_str();
    };
    request.argument = [](const char*) { return nullptr; };
    return site_.Handle(request);
  }
  HttpAnswer Get(const std::string& path, std::map<std::string, std::string> headers = {}) {
    return Ask("GET", path, std::move(headers));
  }
  static std::string Header(const HttpAnswer& answer, const std::string& name) {
    for (const auto& [known, value] : answer.headers)
      if (known == name) return value;
    return "none";
  }
  static std::string Bytes(const HttpAnswer& answer) {
    std::string bytes(answer.length, '\0');
    EXPECT_EQ(
        pread(answer.file.get(), bytes.data(), bytes.size(), static_cast<off_t>(answer.offset)),
        static_cast<ssize_t>(bytes.size()));
    return bytes;
  }
  std::string Original() const { return "/o/" + std::to_string(IdOf("A.JPG")) + ".jpg"; }
  std::string Thumbnail() const { return "/t/" + std::to_string(IdOf("A.JPG")) + ".jpg"; }
  std::string TheFilm() const { return "/o/" + std::to_string(IdOf("titled.MP4")) + ".mp4"; }

  std::string bytes_;
  AccessList access_{{*Subnet::Parse("10.0.0.0/24")}};
  Site site_{holder_, access_, {"name", "uuid", "machine"}};
};

TEST_F(SiteTest, SendsTheWholeFile) {
  const HttpAnswer answer = Get(Original());
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(Bytes(answer), bytes_);
  EXPECT_EQ(Header(answer, "Content-Type"), "image/jpeg");
  EXPECT_EQ(Header(answer, "Accept-Ranges"), "bytes");
  EXPECT_THAT(Header(answer, "contentFeatures.dlna.org"), HasSubstr("DLNA.ORG_OP=01"));
}
TEST_F(SiteTest, SendsARange) {
  const HttpAnswer answer = Get(Original(), {{"Range", "bytes=100-109"}});
  EXPECT_EQ(answer.status, 206);
  EXPECT_EQ(Header(answer, "Content-Range"), "bytes 100-109/1000");
  EXPECT_EQ(Bytes(answer), bytes_.substr(100, 10));
}
TEST_F(SiteTest, TellsTheSizeWhereARangeLiesBehindTheEnd) {
  const HttpAnswer answer = Get(Original(), {{"Range", "bytes=1000-"}});
  EXPECT_EQ(answer.status, 416);
  EXPECT_EQ(Header(answer, "Content-Range"), "bytes */1000");
}
TEST_F(SiteTest, SendsARangeOfTheSameResourceAlone) {
  const std::string tag = Header(Get(Original()), "ETag");
  EXPECT_EQ(Get(Original(), {{"Range", "bytes=0-1"}, {"If-Range", tag}}).status, 206);
  EXPECT_EQ(Get(Original(), {{"Range", "bytes=0-1"}, {"If-Range", "\"other\""}}).status, 200);
  EXPECT_EQ(Get(Original(), {{"If-None-Match", tag}}).status, 304);
}
TEST_F(SiteTest, CutsAThumbnailOutOfItsFile) {
  const HttpAnswer answer = Get(Thumbnail(), {{"Range", "bytes=0-1"}});
  EXPECT_EQ(Bytes(answer), "\xff\xd8");
  EXPECT_EQ(Header(answer, "Content-Range"), "bytes 0-1/100");
  EXPECT_THAT(Header(answer, "contentFeatures.dlna.org"), HasSubstr("JPEG_TN"));
}
TEST_F(SiteTest, SendsNoThumbnailThatDoesNotBeginAsOne) {
  bytes_[100] = 'x';
  dir_.Write("card/A.JPG", bytes_);
  EXPECT_EQ(Get(Thumbnail()).status, 404);
}
TEST_F(SiteTest, SendsNoFileThatIsNotWhatTheDatabaseDescribes) {
  dir_.Write("card/A.JPG", bytes_ + "more");
  EXPECT_EQ(Get(Original()).status, 404);
  unlink(dir_.Path("card/A.JPG").c_str());
  EXPECT_EQ(Get(Original()).status, 404);
  mkfifo(dir_.Path("card/A.JPG").c_str(), 0600);
  EXPECT_EQ(Get(Original()).status, 404);
}
TEST_F(SiteTest, KnowsTransferModes) {
  EXPECT_EQ(Header(Get(Original()), "transferMode.dlna.org"), "Interactive");
  EXPECT_EQ(Header(Get(TheFilm()), "transferMode.dlna.org"), "Streaming");
  EXPECT_EQ(
      Header(Get(TheFilm(), {{"transferMode.dlna.org", "Background"}}), "transferMode.dlna.org"),
      "Background");
  EXPECT_EQ(Get(Original(), {{"transferMode.dlna.org", "Streaming"}}).status, 406);
  EXPECT_EQ(Get(TheFilm(), {{"transferMode.dlna.org", "Interactive"}}).status, 406);
  EXPECT_EQ(Get(TheFilm(), {{"transferMode.dlna.org", "Fast"}}).status, 400);
}
TEST_F(SiteTest, RefusesToSeekByTime) {
  EXPECT_EQ(Get(TheFilm(), {{"TimeSeekRange.dlna.org", "npt=1-"}}).status, 406);
  EXPECT_EQ(Get(TheFilm(), {{"PlaySpeed.dlna.org", "speed=2"}}).status, 406);
  EXPECT_EQ(Get(TheFilm(), {{"TimeSeekRange.dlna.org", "npt=1-"}, {"Range", "bytes=1-"}}).status,
            206);
}
TEST_F(SiteTest, KnowsNoOtherQuestionForFeaturesThanOne) {
  EXPECT_EQ(Get(TheFilm(), {{"getcontentFeatures.dlna.org", "1"}}).status, 200);
  EXPECT_EQ(Get(TheFilm(), {{"getcontentFeatures.dlna.org", "0"}}).status, 400);
}
TEST_F(SiteTest, TellsOfSubtitles) {
  EXPECT_EQ(Header(Get(TheFilm(), {{"getCaptionInfo.sec", "1"}}), "CaptionInfo.sec"),
            "http://10.0.0.1:8200/c/" + std::to_string(IdOf("titled.MP4")) + ".srt");
  EXPECT_EQ(Header(Get(TheFilm()), "CaptionInfo.sec"), "none");
}
TEST_F(SiteTest, LetsNoPathReachTheFileSystem) {
  const std::string id = std::to_string(IdOf("A.JPG"));
  for (const std::string& path :
       {std::string("/o/../../etc/passwd"), std::string("/o//etc/passwd"), "/o/" + id,
        "/o/" + id + "/x.jpg", "/x/" + id + ".jpg", "/o/-" + id + ".jpg", std::string("/o/.jpg"),
        std::string("/o/99999999999.jpg"), std::string("/etc/passwd"), std::string("/%2e%2e/x")})
    EXPECT_EQ(Get(path).status, 404) << path;
}
TEST_F(SiteTest, AnswersNoForeignNames) {
  const auto status = [&](const char* host) { return Get("/device.xml", {{"Host", host}}).status; };
  for (const char* host : {"evil.example", "evil.example:8200", "10.0.0.9:8200", "10.0.0.1:80",
                           "10.0.0.1.evil.example", "[", "localhost:8200", "10.0.0.1:8200:1"})
    EXPECT_EQ(status(host), 403) << host;
  for (const char* host : {"10.0.0.1", "10.0.0.1:8200", "machine:8200", "MACHINE.local:8200"})
    EXPECT_EQ(status(host), 200) << host;
}
TEST_F(SiteTest, KnowsItsMethods) {
  EXPECT_EQ(Ask("POST", "/device.xml").status, 405);
  EXPECT_EQ(Ask("DELETE", Original()).status, 405);
  EXPECT_EQ(Ask("GET", "/control/cd").status, 405);
  EXPECT_EQ(Ask("GET", "/event/cd").status, 405);
  EXPECT_EQ(Ask("HEAD", "/device.xml").status, 200);
}
TEST_F(SiteTest, AnswersControlWithFaultsOfUpnp) {
  EXPECT_EQ(Ask("POST", "/control/cd", {}, "x").status, 400);
  const std::string body =
      "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body>"
      "<u:IsAuthorized xmlns:u=\"urn:microsoft.com:service:X_MS_MediaReceiverRegistrar:1\"/>"
      "</s:Body></s:Envelope>";
  EXPECT_EQ(Ask("POST", "/control/rr", {}, body).status, 200);
  const HttpAnswer wrong = Ask("POST", "/control/cd", {}, body);
  EXPECT_EQ(wrong.status, 500);
  EXPECT_THAT(wrong.text, HasSubstr("<errorCode>401</errorCode>"));
}
TEST_F(SiteTest, SendsEventsToNeighboursAlone) {
  access_.SetInterfaces({{"eth0", 1, {*Subnet::Parse("10.0.0.1/24")}}});
  const auto subscribe = [&](const char* callback) {
    return Ask("SUBSCRIBE", "/event/cd", {{"CALLBACK", callback}, {"NT", "upnp:event"}}).status;
  };
  EXPECT_EQ(subscribe("<http://8.8.8.8/>"), 412);
  EXPECT_EQ(subscribe("<http://tv.local/>"), 412);
  EXPECT_EQ(subscribe("<http://127.0.0.1:22/>"), 412);
  EXPECT_EQ(subscribe(""), 412);
  EXPECT_EQ(subscribe("<http://10.0.0.2:1/>"), 200);
  EXPECT_EQ(Ask("SUBSCRIBE", "/event/cd", {{"SID", "uuid:x"}}).status, 412);
  EXPECT_EQ(Ask("SUBSCRIBE", "/event/cd", {{"SID", "uuid:x"}, {"NT", "upnp:event"}}).status, 400);
  EXPECT_EQ(Ask("UNSUBSCRIBE", "/event/cd", {{"SID", "uuid:x"}}).status, 412);
}
TEST_F(SiteTest, DescribesItself) {
  EXPECT_THAT(std::string(Get("/device.xml").shared), HasSubstr("<dlna:X_DLNADOC>DMS-1.50<"));
  for (const char* path : {"/cd.xml", "/cm.xml", "/rr.xml"})
    EXPECT_THAT(std::string(Get(path).shared), HasSubstr("<scpd")) << path;
  for (const char* path : {"/icon/48.png", "/icon/120.png", "/icon/48.jpg", "/icon/120.jpg"})
    EXPECT_GT(Get(path).shared.size(), 100U) << path;
}

}  // namespace
}  // namespace orx_test
