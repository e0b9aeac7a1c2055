#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::ProcessResult;

class InfoCommand : public orx_test::CommandTest {
 protected:
  static json Info(const std::string& path) {
    const ProcessResult result = Run({"info", path, "--json"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return json::parse(result.output);
  }
};

TEST_F(InfoCommand, ShowsAPicture) {
  const ProcessResult result = Run({"info", Picture()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  for (const char* line :
       {"kind          picture\n", "title         ORXA0001\n", "date          2026-03-14\n",
        "mimeType      image/jpeg\n", "profile       JPEG_SM\n", "description   Harbour at dawn\n",
        "thumbnail     160x120, "})
    EXPECT_NE(result.output.find(line), std::string::npos) << line << "in\n" << result.output;
}

TEST_F(InfoCommand, ShowsAPictureToPrograms) {
  const json info = Info(card_ + "/DCIM/100ORXSC/ORXA0003.JPG");
  EXPECT_EQ(info["kind"], "picture");
  EXPECT_EQ(info["width"], 1600);
  EXPECT_EQ(info["height"], 1200);
  EXPECT_EQ(info["profile"], "JPEG_LRG");
  EXPECT_EQ(info["protocolInfo"], "DLNA.ORG_PN=JPEG_LRG;DLNA.ORG_OP=01");
  EXPECT_EQ(info["screennail"]["width"], 640);
  EXPECT_EQ(info["screennail"]["height"], 480);
  EXPECT_EQ(info["thumbnail"]["width"], 160);
}

TEST_F(InfoCommand, LeavesOutWhatAPictureHasNot) {
  EXPECT_TRUE(Info(Picture())["screennail"].is_null());
}

TEST_F(InfoCommand, ShowsAFilm) {
  const json info = Info(Film());
  EXPECT_EQ(info["kind"], "film");
  EXPECT_EQ(info["mimeType"], "video/mp4");
  EXPECT_EQ(info["profile"], "AVC_MP4_BL_CIF15_AAC_520");
  EXPECT_EQ(info["width"], 320);
  EXPECT_EQ(info["samplesPerSecond"], 44100);
  EXPECT_TRUE(info["duration"].is_string());
}

TEST_F(InfoCommand, ShowsASound) {
  const json info = Info(Sound());
  EXPECT_EQ(info["kind"], "sound");
  EXPECT_EQ(info["mimeType"], "audio/mp4");
  EXPECT_EQ(info["artist"], "The Lighthouse Keepers");
  EXPECT_EQ(info["album"], "Sounds of the Coast");
}

TEST_F(InfoCommand, LetsNoControlCharactersOfANameThrough) {
  const std::string path = dir_.Path("\x1b[2J\xff.jpg");
  std::filesystem::copy(Picture(), path);
  const ProcessResult result = Run({"info", path});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output.find('\x1b'), std::string::npos);
  EXPECT_NE(result.output.find("\\x1b[2J\\xff.jpg"), std::string::npos) << result.output;
  EXPECT_EQ(Info(path)["path"], dir_.path() + "/\x1b[2J\xEF\xBF\xBD.jpg");
}

TEST_F(InfoCommand, TellsWhyAFileIsRefused) {
  ExpectFailure({"info", card_ + "/README.TXT"},
                "'" + card_ + "/README.TXT': not recognised as a picture, film or sound");
  ExpectFailure({"info", card_}, "'" + card_ + "' is a folder, not a file");
  ExpectFailure({"info", dir_.Path("gone")},
                "file '" + dir_.Path("gone") + "': No such file or directory");
}

}  // namespace
