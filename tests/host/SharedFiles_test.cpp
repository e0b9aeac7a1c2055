#include <gtest/gtest.h>

#include <cstring>

#include "Platform/CameraPlatform.h"
#include "host/HostPlatform.h"
#include "support/TempDir.h"

namespace {

using orx_test::TempDir;
using Uris = std::vector<std::string>;

class SharedFiles : public testing::Test {
 protected:
  void TearDown() override { HostPlatform::SetSharedFiles({}); }

  void Touch(const std::string& name) { card_.Write(name, "x"); }
  int TypeOf(const std::string& uri) {
    std::string writable = uri;
    return QUILWifi_getFileType(writable.data());
  }

  TempDir card_;
};

TEST_F(SharedFiles, AreNoneAtFirst) {
  EXPECT_EQ(QUILWifi_getFileCount(), 0);
  char* uri = nullptr;
  EXPECT_LT(QUILWifi_getURIFromIndex(0, uri), 0);
}

TEST_F(SharedFiles, AreListedInTheOrderGiven) {
  HostPlatform::SetSharedFiles(
      {"/mnt/mmc/DCIM/100ORXSC/ORXA0002.JPG", "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"});
  EXPECT_EQ(QUILWifi_getFileCount(), 2);
  char* uri = nullptr;
  EXPECT_GE(QUILWifi_getURIFromIndex(0, uri), 0);
  EXPECT_STREQ(uri, "/mnt/mmc/DCIM/100ORXSC/ORXA0002.JPG");
  EXPECT_GE(QUILWifi_getURIFromIndex(1, uri), 0);
  EXPECT_STREQ(uri, "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG");
}

TEST_F(SharedFiles, FailForAnIndexOutsideTheList) {
  HostPlatform::SetSharedFiles({"/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"});
  char text[] = "left over";
  char* uri = text;
  EXPECT_LT(QUILWifi_getURIFromIndex(1, uri), 0);
  EXPECT_EQ(uri, nullptr);
  EXPECT_LT(QUILWifi_getURIFromIndex(-1, uri), 0);
}

TEST_F(SharedFiles, KeepTheirNamesWhenTheLibraryOverwritesAnEnding) {
  HostPlatform::SetSharedFiles({"/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"});
  char* uri = nullptr;
  QUILWifi_getURIFromIndex(0, uri);
  memcpy(uri + strlen(uri) - 3, "KRZ", 3);
  QUILWifi_getURIFromIndex(0, uri);
  EXPECT_STREQ(uri, "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG");
}

TEST_F(SharedFiles, StayReadableWhileAnotherIsAskedFor) {
  HostPlatform::SetSharedFiles({"/mnt/mmc/a", "/mnt/mmc/b"});
  char *first = nullptr, *second = nullptr;
  QUILWifi_getURIFromIndex(0, first);
  QUILWifi_getURIFromIndex(1, second);
  EXPECT_STREQ(first, "/mnt/mmc/a");
  EXPECT_STREQ(second, "/mnt/mmc/b");
}

TEST_F(SharedFiles, HaveTheTypeOfTheirKind) {
  EXPECT_EQ(TypeOf("/mnt/mmc/DCIM/100ORXSC/ORXA0001.MP4"), 2);
  EXPECT_EQ(TypeOf("/mnt/mmc/DCIM/100ORXSC/ORXA0001.AVI"), 2);
  EXPECT_EQ(TypeOf("/mnt/mmc/DCIM/100ORXSC/ORXA0001.mp4"), 2);
  EXPECT_EQ(TypeOf("/mnt/mmc/DCIM/100ORXSC/ORXA0001.MPO"), 6);
  EXPECT_EQ(TypeOf("/mnt/mmc/DCIM/100ORXSC/ORXA0001.KRZ"), 4);
  EXPECT_EQ(TypeOf("/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"), 1);
  EXPECT_EQ(TypeOf("/mnt/mmc/DCIM/100ORXSC/ORXA0001"), 1);
  EXPECT_EQ(TypeOf(""), 1);
  EXPECT_EQ(QUILWifi_getFileType(nullptr), 0);
}

TEST_F(SharedFiles, KnowTheRawCompanionThatLiesBesideThem) {
  Touch("ORXA0001.JPG");
  Touch("ORXA0001.KRZ");
  Touch("ORXA0002.JPG");
  EXPECT_EQ(TypeOf(card_.Path("ORXA0001.JPG")), 5);
  EXPECT_EQ(TypeOf(card_.Path("ORXA0002.JPG")), 1);
}

TEST_F(SharedFiles, OfAWholeCardComeNewestFirst) {
  for (const char* name :
       {"100ORXSC/ORXA0001.JPG", "100ORXSC/ORXA0010.JPG", "100ORXSC/ORXA0002.MP4",
        "101ABCDE/ZZZZ0003.MPO", "099ORXSC/ORXA9999.KRZ"})
    Touch(std::string("DCIM/") + name);
  ASSERT_TRUE(HostPlatform::ShareWholeCard(card_.path()));
  EXPECT_EQ(HostPlatform::SharedFiles(),
            (Uris{"/mnt/mmc/DCIM/101ABCDE/ZZZZ0003.MPO", "/mnt/mmc/DCIM/100ORXSC/ORXA0010.JPG",
                  "/mnt/mmc/DCIM/100ORXSC/ORXA0002.MP4", "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG",
                  "/mnt/mmc/DCIM/099ORXSC/ORXA9999.KRZ"}));
}

TEST_F(SharedFiles, OfAWholeCardLeaveOutNamesThatAreNotDcf) {
  for (const char* name :
       {"10AORXSC/ORXA0001.JPG", "100ORXS/ORXA0001.JPG", "100ORXSCX/ORXA0001.JPG",
        "100ORXSC/ORXA001.JPG", "100ORXSC/ORXA00001.JPG", "100ORXSC/ORXA000A.JPG",
        "100ORXSC/ORXA0001", "100ORXSC/ORXA0001.TXT", "100ORXSC/ORXA0001.", "100ORXSC/.ORXA000",
        "100ORXSC/ORXA0001.X.JPG", "100ORXSC/SUB/ORXA0001.JPG", "ORXA0001.JPG"})
    Touch(std::string("DCIM/") + name);
  card_.MakeDir("DCIM/100ORXSC/ORXA0005.JPG");
  Touch("MISC/ORXA0001.JPG");
  ASSERT_TRUE(HostPlatform::ShareWholeCard(card_.path()));
  EXPECT_EQ(HostPlatform::SharedFiles(), Uris());
}

TEST_F(SharedFiles, OfAWholeCardListARawCompanionOnceWithItsPicture) {
  Touch("DCIM/100ORXSC/ORXA0001.JPG");
  Touch("DCIM/100ORXSC/ORXA0001.KRZ");
  Touch("DCIM/100ORXSC/ORXA0002.KRZ");
  ASSERT_TRUE(HostPlatform::ShareWholeCard(card_.path()));
  EXPECT_EQ(HostPlatform::SharedFiles(),
            (Uris{"/mnt/mmc/DCIM/100ORXSC/ORXA0002.KRZ", "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"}));
  EXPECT_EQ(TypeOf("/mnt/mmc/DCIM/100ORXSC/ORXA0002.KRZ"), 4);
  EXPECT_EQ(TypeOf("/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"), 5);
}

TEST_F(SharedFiles, StayAsTheyWereWhenACardCannotBeRead) {
  HostPlatform::SetSharedFiles({"/mnt/mmc/a"});
  EXPECT_FALSE(HostPlatform::ShareWholeCard(card_.path()));
  EXPECT_EQ(HostPlatform::SharedFiles(), Uris{"/mnt/mmc/a"});
}

}  // namespace
