// The scanner's life, its profile list and filter, and its forwarding operations.
#include "FileScanner/DirectoryScanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "FileScanner/FileParserFramework.h"
#include "FileScanner/MediaMetaData.h"
#include "OSAL/TextPtr.h"
#include "OSAL/UniqueValueGenerator.h"
#include "support/ScannerFixture.h"

namespace {

using orx::TextPtr;
using testing::ElementsAre;

class DirectoryScannerTest : public orx_test::ScannerTest {};

TEST(ProfileList, HoldsItsEntriesInOrder) {
  const std::string image = ";DLNA.ORG_OP=01;DLNA.ORG_FLAGS=00f00000000000000000000000000000";
  const std::string stream = ";DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000";
  const std::vector<std::string> entries = {
      "image/jpeg:DLNA.ORG_PN=JPEG_SM" + image,
      "audio/mpeg:DLNA.ORG_PN=MP3" + stream,
      "audio/mp4:DLNA.ORG_PN=AAC_ISO_320" + stream,
      "audio/3gpp:DLNA.ORG_PN=AAC_ISO_320" + stream,
      "audio/vnd.dlna.adts:DLNA.ORG_PN=AAC_ADTS_320" + stream,
      "video/mp4:DLNA.ORG_PN=AVC_MP4_BL_CIF15_AAC_520" + stream,
      "video/mp4:DLNA.ORG_PN=AVC_MP4_BL_L2_CIF30_AAC" + stream,
      "audio/mpeg:*",
      "audio/x-ms-wma:*",
      "audio/wav:*",
      "audio/mp4:*",
      "application/ogg:*",
      "image/jpeg:*",
      "image/gif:*",
      "video/mpeg:*",
      "video/x-msvideo:*",
      "video/avi:*",
      "video/MP4V-ES:*",
      "video/x-ms-wmv:*"};
  std::string list;
  for (const std::string& entry : entries)
    list += (list.empty() ? "http-get:*:" : ", \t\t\t\thttp-get:*:") + entry;
  EXPECT_EQ(pProfiles, list);
}

TEST(ExtensionLists, HoldTheirTexts) {
  EXPECT_STREQ(All_Supported_Extensions,
               "m4a, adts, m4b, mp4, 3gp, aac, ac3, m4v, mov, jpg, jpeg, mp3, avi, wmv, wma, wav, "
               "mpeg, mpg, mpo, krz");
  EXPECT_STREQ(MP4_Extension, "mp4, avi");
  EXPECT_STREQ(PC_JPEG_Extension, "jpg, jpeg,mpo, krz");
  EXPECT_STREQ(MRCP_JPEG_Extension, "jpg, jpeg,mpo");
  EXPECT_STREQ(JPEG_Extension, "jpg, jpeg");
}

TEST_F(DirectoryScannerTest, IsOneInstanceUntilItIsDestroyed) {
  DirectoryScanner* one = DirectoryScanner::GetInstance();
  EXPECT_EQ(DirectoryScanner::GetInstance(), one);
  EXPECT_EQ(DirectoryScanner::singleInstance, one);
  DirectoryScanner::DestroyInstance();
  EXPECT_EQ(DirectoryScanner::singleInstance, nullptr);
  DirectoryScanner::DestroyInstance();
  EXPECT_EQ(DirectoryScanner::singleInstance, nullptr);
}

TEST_F(DirectoryScannerTest, StartsWithAParserChainAndNothingElse) {
  DirectoryScanner::DestroyInstance();
  EXPECT_NE(scanner()->_GetFMParserFramework(), nullptr);
  EXPECT_EQ(scanner()->pSupportedProfiles, nullptr);
  EXPECT_FALSE(scanner()->GetCancelFlag());
}

TEST_F(DirectoryScannerTest, CleanUpRelationsDeletesTheParserChain) {
  scanner()->_CleanUpRelations();
  EXPECT_EQ(scanner()->_GetFMParserFramework(), nullptr);
}

TEST_F(DirectoryScannerTest, DestroyInstanceRestartsTheResourceNames) {
  const TextPtr first(UniqueValueGenerator::GetInstance()->GetUniqueURIMA("x"));
  DirectoryScanner::GetInstance();
  DirectoryScanner::DestroyInstance();
  const TextPtr again(UniqueValueGenerator::GetInstance()->GetUniqueURIMA("x"));
  EXPECT_EQ(std::string(again.get()).substr(0, 8), "/orx0001");
  UniqueValueGenerator::DestroyInstance();
}

TEST_F(DirectoryScannerTest, SetDlnaProfilesKeepsACopyAndIgnoresNull) {
  std::string list = "http-get:*:image/png:*";
  scanner()->SetDlnaProfiles(list.c_str());
  list[0] = 'X';
  scanner()->SetDlnaProfiles(nullptr);
  EXPECT_STREQ(scanner()->pSupportedProfiles, "http-get:*:image/png:*");
}

TEST_F(DirectoryScannerTest, AnEarlierProfileListStaysReadable) {
  const char* earlier = scanner()->pSupportedProfiles;
  scanner()->SetDlnaProfiles("later");
  EXPECT_STREQ(earlier, pProfiles);
  EXPECT_STREQ(scanner()->pSupportedProfiles, "later");
}

TEST_F(DirectoryScannerTest, CancelStaysSetUntilDestroyInstance) {
  scanner()->CancelScanDirectory();
  EXPECT_TRUE(scanner()->GetCancelFlag());
  Scan();
  EXPECT_TRUE(scanner()->GetCancelFlag());
  DirectoryScanner::DestroyInstance();
  EXPECT_FALSE(scanner()->GetCancelFlag());
}

TEST_F(DirectoryScannerTest, SupportsAProfileThatTheListNamesWhole) {
  EXPECT_EQ(scanner()->_IsProfileSupported("JPEG_SM"), 1);
  EXPECT_EQ(scanner()->_IsProfileSupported("AVC_MP4_BL_L2_CIF30_AAC"), 1);
}

TEST_F(DirectoryScannerTest, DoesNotSupportThePrefixOfAProfile) {
  EXPECT_EQ(scanner()->_IsProfileSupported("JPEG_S"), 0);
}

TEST_F(DirectoryScannerTest, SupportsTheEndOfAProfileToo) {
  EXPECT_EQ(scanner()->_IsProfileSupported("_SM"), 1);  // a substring search, not a parser
}

TEST_F(DirectoryScannerTest, SupportsAnEmptyProfileWhereTheListHasASeparator) {
  EXPECT_EQ(scanner()->_IsProfileSupported(""), 1);
  scanner()->SetDlnaProfiles("JPEG_SM");
  EXPECT_EQ(scanner()->_IsProfileSupported(""), 0);
  scanner()->SetDlnaProfiles("");
  EXPECT_EQ(scanner()->_IsProfileSupported(""), 0);
}

TEST_F(DirectoryScannerTest, ComparesProfilesCaseSensitively) {
  EXPECT_EQ(scanner()->_IsProfileSupported("jpeg_sm"), 0);
}

TEST_F(DirectoryScannerTest, AlwaysSupportsTheWildcardAndNeverNull) {
  DirectoryScanner::DestroyInstance();
  EXPECT_EQ(scanner()->_IsProfileSupported("*"), 1);
  EXPECT_EQ(scanner()->_IsProfileSupported("JPEG_SM"), 0);
  EXPECT_EQ(scanner()->_IsProfileSupported(nullptr), 0);
}

TEST_F(DirectoryScannerTest, PassesAnItemWithASupportedProfileUnchanged) {
  MediaMetaData item;
  item.SetDLNAProfile("JPEG_SM");
  EXPECT_EQ(scanner()->CheckMediaFileForDLNAContent(&item), 1);
  EXPECT_STREQ(item.GetDLNAProfile(), "JPEG_SM");
}

TEST_F(DirectoryScannerTest, PassesAnItemWithASupportedMimeTypeAsWildcard) {
  MediaMetaData item;
  item.SetDLNAProfile("JPEG_MED");
  item.SetMimeType("image/jpeg");
  EXPECT_EQ(scanner()->CheckMediaFileForDLNAContent(&item), 1);
  EXPECT_STREQ(item.GetDLNAProfile(), "*");
}

TEST_F(DirectoryScannerTest, RefusesAnItemWhoseMimeTypeIsNotInTheList) {
  MediaMetaData item;
  item.SetDLNAProfile("X");
  item.SetMimeType("video/x-m4v");
  EXPECT_EQ(scanner()->CheckMediaFileForDLNAContent(&item), 0);
  EXPECT_STREQ(item.GetDLNAProfile(), "X");
}

TEST_F(DirectoryScannerTest, RefusesNullAndAnItemWithoutProfileOrMimeType) {
  MediaMetaData item;
  item.SetMimeType("image/jpeg");
  EXPECT_EQ(scanner()->CheckMediaFileForDLNAContent(nullptr), 0);
  EXPECT_EQ(scanner()->CheckMediaFileForDLNAContent(&item), 0);
  MediaMetaData untyped;
  untyped.SetDLNAProfile("X");
  EXPECT_EQ(scanner()->CheckMediaFileForDLNAContent(&untyped), 0);
}

TEST_F(DirectoryScannerTest, WithoutAListPassesTheWildcardAlone) {
  DirectoryScanner::DestroyInstance();
  MediaMetaData item;
  item.SetMimeType("image/jpeg");
  item.SetDLNAProfile("JPEG_SM");
  EXPECT_EQ(scanner()->CheckMediaFileForDLNAContent(&item), 0);
  item.SetDLNAProfile("*");
  EXPECT_EQ(scanner()->CheckMediaFileForDLNAContent(&item), 1);
}

TEST_F(DirectoryScannerTest, GetDirPathReturnsTheWholePath) {
  const TextPtr path(scanner()->_GetDirPathFromFullPathMA("/a/b"));
  EXPECT_STREQ(path.get(), "/a/b");
  EXPECT_EQ(scanner()->_GetDirPathFromFullPathMA("ab"), nullptr);
  EXPECT_EQ(scanner()->_GetDirPathFromFullPathMA(nullptr), nullptr);
}

TEST_F(DirectoryScannerTest, GetFileNameReturnsWhatFollowsTheLastSlash) {
  const TextPtr name(scanner()->_GetFileNameFromFullPathMA("/a/b.jpg"));
  EXPECT_STREQ(name.get(), "b.jpg");
  const TextPtr empty(scanner()->_GetFileNameFromFullPathMA("/a/"));
  EXPECT_STREQ(empty.get(), "");
  EXPECT_EQ(scanner()->_GetFileNameFromFullPathMA("b.jpg"), nullptr);
  EXPECT_EQ(scanner()->_GetFileNameFromFullPathMA(nullptr), nullptr);
}

TEST_F(DirectoryScannerTest, GetFileNameRefusesAPathOfMoreThan519Bytes) {
  const TextPtr name(scanner()->_GetFileNameFromFullPathMA(("/" + std::string(518, 'a')).c_str()));
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(std::string(name.get()).size(), 518u);
  EXPECT_EQ(scanner()->_GetFileNameFromFullPathMA(("/" + std::string(519, 'a')).c_str()), nullptr);
}

TEST_F(DirectoryScannerTest, JoinsDirectoryAndName) {
  char out[512];
  EXPECT_EQ(scanner()->_GetFullPathOfFile(out, "/a", "b"), 1);
  EXPECT_STREQ(out, "/a/b");
  EXPECT_EQ(scanner()->_GetFullPathOfFile(out, "/a/", "b"), 1);
  EXPECT_STREQ(out, "/a/b");
  EXPECT_EQ(scanner()->_GetFullPathOfFile(out, "C:\\a\\", "b"), 1);
  EXPECT_STREQ(out, "C:\\a\\b");
}

TEST_F(DirectoryScannerTest, JoiningFailsForNullAndForWhatDoesNotFit) {
  char out[512];
  EXPECT_EQ(scanner()->_GetFullPathOfFile(nullptr, "/a", "b"), 0);
  EXPECT_EQ(scanner()->_GetFullPathOfFile(out, nullptr, "b"), 0);
  const std::string dir = "/" + std::string(300, 'd');
  EXPECT_EQ(scanner()->_GetFullPathOfFile(out, dir.c_str(), std::string(209, 'n').c_str()), 1);
  EXPECT_EQ(std::string(out).size(), 511u);
  EXPECT_EQ(scanner()->_GetFullPathOfFile(out, dir.c_str(), std::string(210, 'n').c_str()), 0);
  EXPECT_STREQ(out, "");
}

class IsInArrayTest : public DirectoryScannerTest {
 protected:
  int Find(const char* path, int* cursor, int count = 4) {
    return scanner()->IsInArray(path, rows_, count, cursor);
  }
  char header_[9] = "FullPath", a_[2] = "a", b_[2] = "b", c_[2] = "c", d_[2] = "d";
  char* rows_[5] = {header_, a_, b_, c_, d_};
};

TEST_F(IsInArrayTest, MovesTheCursorToTheHit) {
  int cursor = 0;
  EXPECT_EQ(Find("a", &cursor), 1);
  EXPECT_EQ(cursor, 1);
  EXPECT_EQ(Find("c", &cursor), 1);
  EXPECT_EQ(cursor, 3);
}

TEST_F(IsInArrayTest, ResetsTheCursorAfterAHitAtTheLastEntry) {
  int cursor = 2;
  EXPECT_EQ(Find("d", &cursor), 1);
  EXPECT_EQ(cursor, 0);
}

TEST_F(IsInArrayTest, WrapsAround) {
  int cursor = 3;
  EXPECT_EQ(Find("a", &cursor), 1);
  EXPECT_EQ(cursor, 1);
}

TEST_F(IsInArrayTest, ComparesTheCursorsOwnEntryLast) {
  int cursor = 2;
  EXPECT_EQ(Find("b", &cursor), 1);
  EXPECT_EQ(cursor, 2);
}

TEST_F(IsInArrayTest, TakesTheFirstOfEqualEntriesBehindTheCursor) {
  rows_[4] = a_;
  int cursor = 1;
  EXPECT_EQ(Find("a", &cursor), 1);
  EXPECT_EQ(cursor, 0);  // entry 4, the last one
}

TEST_F(IsInArrayTest, LeavesTheCursorWithoutAMatch) {
  int cursor = 2;
  EXPECT_EQ(Find("FullPath", &cursor), 0);
  EXPECT_EQ(cursor, 2);
}

TEST_F(IsInArrayTest, FindsNothingInAnEmptyArray) {
  int cursor = 0;
  EXPECT_EQ(Find("a", &cursor, 0), 0);
  EXPECT_EQ(scanner()->IsInArray("a", nullptr, 4, &cursor), 0);
}

TEST_F(DirectoryScannerTest, IsValidIsAlways0) { EXPECT_EQ(scanner()->IsValid("/a"), 0); }

TEST_F(DirectoryScannerTest, AddDirToDBInsertsAContainerRowAndReturnsItsId) {
  Open();
  const TextPtr id(scanner()->AddDirToDB("/card/a", "7"));
  ASSERT_NE(id, nullptr);
  EXPECT_EQ(Select("select id, class, date, parentID, FullPath from ObjectTable"),
            (orx_test::Rows{{id.get(), "0", "17Nov2008", "7", "/card/a"}}));
  EXPECT_TRUE(platform().Logged("The current MEDIA_CONTAINER table is not used!!!"));
  EXPECT_EQ(Cell("select count(*) from ContainerTable"), "0");
}

TEST_F(DirectoryScannerTest, AddDirToDBHangsANewDirectoryWithoutParentUnder0) {
  Open();
  const TextPtr id(scanner()->AddDirToDB("/card/a", nullptr));
  EXPECT_EQ(Cell("select parentID from ObjectTable"), "0");
}

TEST_F(DirectoryScannerTest, AddDirToDBLooksUpTheDirectorysOwnRowAsParent) {
  Open();
  const TextPtr first(scanner()->AddDirToDB("/card/a", nullptr));
  const TextPtr second(scanner()->AddDirToDB("/card/a", nullptr));
  EXPECT_THAT(Column("select parentID from ObjectTable order by id"),
              ElementsAre("0", std::string(first.get())));
}

TEST_F(DirectoryScannerTest, AddDirToDBReturnsNullWhenTheRowCannotBeInserted) {
  Open();
  testing::internal::CaptureStderr();
  EXPECT_EQ(scanner()->AddDirToDB("/card/\"quoted\"", "1"), nullptr);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(scanner()->AddDirToDB(nullptr, "1"), nullptr);
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

TEST_F(DirectoryScannerTest, AddDirToObjTableInDBWritesTheObjectTableAlone) {
  platform().sharingMode = 8;
  Open();
  const TextPtr id(scanner()->AddDirToObjTableInDB("/card/a", "7"));
  ASSERT_NE(id, nullptr);
  EXPECT_EQ(Select("select id, class, date, parentID, FullPath from ObjectTable"),
            (orx_test::Rows{{id.get(), "0", "17Nov2008", "7", "/card/a"}}));
}

TEST_F(DirectoryScannerTest, ForwardsLookupsAndRemovals) {
  DataBaseMgr* database = Open();
  const TextPtr root(scanner()->AddDirToDB("/card", nullptr));
  const TextPtr child(scanner()->AddDirToDB("/card/a", root.get()));
  EXPECT_TRUE(scanner()->IsInDB("/card/a"));
  EXPECT_FALSE(scanner()->IsInDB("/card/b"));
  const TextPtr id(scanner()->GetDirUniqueId("/card/a"));
  EXPECT_STREQ(id.get(), child.get());

  char** rows = nullptr;
  int count = 0;
  EXPECT_EQ(scanner()->GetArrayOfFullPath(root.get(), &rows, &count), 0);
  ASSERT_EQ(count, 1);
  EXPECT_STREQ(rows[1], "/card/a");
  sqlite3_free_table(rows);

  scanner()->InvalidateAllItems("/card");
  EXPECT_EQ(Column("select Valid from ObjectTable order by id"),
            (std::vector<std::string>{"1", "1"}));
  EXPECT_EQ(scanner()->ValidateItem("/card"), 1);
  EXPECT_EQ(Column("select Valid from ObjectTable order by id"),
            (std::vector<std::string>{"0", "1"}));
  EXPECT_EQ(database->ExecSqlStatmentNoValueReturn("update ObjectTable set Valid = 0"), 1);
  scanner()->DeleteItem("/card/a");
  EXPECT_FALSE(scanner()->IsInDB("/card/a"));
  scanner()->RemoveDirFromObjectTableinDB("/card");
  EXPECT_FALSE(scanner()->IsInDB("/card"));
}

TEST_F(DirectoryScannerTest, InvalidateDirectorySweepsWhatItMarked) {
  Open();
  const TextPtr root(scanner()->AddDirToDB("/card", nullptr));
  DataBaseMgr::DestroyInstance();
  int status = 0;
  scanner()->InvalidateDirectory(db_.c_str(), "/card", &status);
  EXPECT_EQ(status, 1);
}

TEST_F(DirectoryScannerTest, InvalidateDirectoryDoesNothingWithoutADatabase) {
  int status = 0;
  testing::internal::CaptureStderr();
  scanner()->InvalidateDirectory("/nonexistent/folder/media.db", "/card", &status);
  testing::internal::GetCapturedStderr();
  scanner()->InvalidateDirectory(nullptr, "/card", &status);
  EXPECT_EQ(status, 0);
}

}  // namespace
