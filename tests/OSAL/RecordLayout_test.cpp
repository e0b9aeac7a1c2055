// Where the fields of the public records lie.  Programs of other makers are compiled against them.
#include <gtest/gtest.h>

#include <cstddef>

#include "FileScanner/DataBaseMgr.h"
#include "OSAL/ORXFSHandler.h"
#include "UpnpUtil/upnp_file.h"
#include "UpnpUtil/upnp_string.h"

namespace {

constexpr size_t kPointer = sizeof(void*);

TEST(RecordLayout, KeepsTheColumnsOfATable) {
  EXPECT_EQ(offsetof(TableColumn, szType), 30U);
  EXPECT_EQ(offsetof(TableColumn, nSize), 40U);
  EXPECT_EQ(offsetof(TableColumn, szConstraint), 44U);
  EXPECT_EQ(sizeof(TableColumn), 60U);
}

TEST(RecordLayout, KeepsTheElementsOfTheBackupList) {
  EXPECT_EQ(offsetof(BackupClassElement, szFullPath), 128U);
  EXPECT_EQ(offsetof(BackupClassElement, pNext), 384U);
  EXPECT_EQ(sizeof(BackupClassElement), 384U + kPointer);
}

TEST(RecordLayout, KeepsTheEntriesOfADirectory) {
  using Entry = ORXFSHandler::PTFile;
  EXPECT_EQ(offsetof(Entry, type), 1024U);
  EXPECT_EQ(offsetof(Entry, size), 1028U);
  EXPECT_EQ(offsetof(Entry, year), 1032U);
  EXPECT_EQ(offsetof(Entry, hour), 1048U);
  EXPECT_EQ(sizeof(Entry), 1060U);
}

TEST(RecordLayout, KeepsTheFileHandle) {
  EXPECT_EQ(offsetof(st_UPNP_FILE, size), 8U);
  EXPECT_EQ(offsetof(st_UPNP_FILE, position), 16U);
  EXPECT_EQ(offsetof(st_UPNP_FILE, buffers), 24U);
  EXPECT_EQ(offsetof(st_UPNP_FILE, reserved2), 24U + kPointer);
}

TEST(RecordLayout, KeepsTheStatusOfAFile) {
  EXPECT_EQ(offsetof(st_UPNP_FILE_STAT, modification_time), 4U);
  EXPECT_EQ(offsetof(st_UPNP_FILE_STAT, size), 16U);
  EXPECT_EQ(offsetof(st_UPNP_FILE_STAT, mode), 24U);
}

TEST(RecordLayout, KeepsTheGrowableText) {
  EXPECT_EQ(offsetof(st_upnp_string, capacity), 4U);
  EXPECT_EQ(offsetof(st_upnp_string, buffer), 8U);
  EXPECT_EQ(sizeof(st_upnp_string), 8U + kPointer);
}

}  // namespace
