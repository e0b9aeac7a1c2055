// Where the fields of the public records lie.  Programs of other makers are compiled against them.
#include <gtest/gtest.h>

#include <cstddef>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "MediaReaders/exif_reader.h"
#include "MediaReaders/mp4_reader.h"
#include "OSAL/ORXFSHandler.h"
#include "Platform/CameraPlatform.h"
#include "UpnpUtil/upnp_file.h"
#include "UpnpUtil/upnp_string.h"

namespace {

constexpr size_t kPointer = sizeof(void*);

// Numbers of eight bytes lie at multiples of eight, but on 32-bit x86 at multiples of four.
struct WideNumber {
  char byte;
  long long number;
};
constexpr size_t kWide = offsetof(WideNumber, number);

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
  EXPECT_EQ(sizeof(st_UPNP_FILE_STAT), 24U + kWide);
}

TEST(RecordLayout, KeepsADirectorySearch) {
  EXPECT_EQ(offsetof(st_UPNP_FINDFILE, text1), kPointer);
  EXPECT_EQ(offsetof(st_UPNP_FINDFILE, text3), 3 * kPointer);
  EXPECT_EQ(sizeof(st_UPNP_FINDFILE), 4 * kPointer);
}

TEST(RecordLayout, KeepsWhatIsKnownOfAPicture) {
  EXPECT_EQ(offsetof(ExifData, ThumbnailLength), 24U);
  EXPECT_EQ(offsetof(ExifData, FileSize), 32U);
  EXPECT_EQ(offsetof(ExifData, FileTime), 40U);
  EXPECT_EQ(offsetof(ExifData, Description), 40U + sizeof(long));
  EXPECT_EQ(offsetof(ExifData, Date), 40U + sizeof(long) + 3 * kPointer);
  EXPECT_EQ(offsetof(ExifData, UserComment), 40U + sizeof(long) + 8 * kPointer);
}

TEST(RecordLayout, KeepsWhatIsKnownOfAFilm) {
  EXPECT_EQ(offsetof(mp4_metadata_t, BytesRead), 8U);
  EXPECT_EQ(offsetof(mp4_metadata_t, HasVideo), 16U);
  EXPECT_EQ(offsetof(mp4_metadata_t, AvcProfile), 68U);
  EXPECT_EQ(offsetof(mp4_metadata_t, AvcLevel), 72U);
  EXPECT_EQ(offsetof(mp4_metadata_t, VideoDurationMs), 88U);
  EXPECT_EQ(offsetof(mp4_metadata_t, VideoFrameCount), 96U);
  EXPECT_EQ(offsetof(mp4_metadata_t, CoverArtLength), 128U);
  EXPECT_EQ(offsetof(mp4_metadata_t, Language), 132U);
  EXPECT_EQ(offsetof(mp4_metadata_t, Date), 136U);
  EXPECT_EQ(offsetof(mp4_metadata_t, CompatibleBrands), 136U + 7 * kPointer);
  EXPECT_EQ(sizeof(mp4_metadata_t), 136U + 8 * kPointer);
  EXPECT_EQ(sizeof(mp4_dlna_prop_t), 16U);
  EXPECT_EQ(offsetof(mp4_box_t, Type), 4U);
  EXPECT_EQ(sizeof(mp4_box_t), 8U);
}

TEST(RecordLayout, KeepsTheDisplayFields) {
  EXPECT_EQ(offsetof(MediaFileDisplayInfo, ObjectType), 2 * kPointer);
  EXPECT_EQ(offsetof(MediaFileDisplayInfo, Duration), 2 * kPointer + 4);
  EXPECT_EQ(offsetof(MediaFileDisplayInfo, Artist), 2 * kPointer + 8);
  EXPECT_EQ(offsetof(MediaFileDisplayInfo, Res), 4 * kPointer + 8);
  EXPECT_EQ(offsetof(MediaFileDisplayRes, AdditionalInfo), 6 * kPointer);
}

TEST(RecordLayout, KeepsThePlatformsAttributes) {
  EXPECT_EQ(offsetof(sFileAttribute, nWidth), 72U);
  EXPECT_EQ(offsetof(sFileAttribute, szDate), 76U);
  EXPECT_EQ(sizeof(sFileAttribute), 96U);
  EXPECT_EQ(offsetof(sVideoAttribute, szDate), 32U);
  EXPECT_EQ(offsetof(sVideoAttribute, dFrameRate), 56U);
  EXPECT_EQ(sizeof(sVideoAttribute), 64U);
}

TEST(RecordLayout, KeepsTheGrowableText) {
  EXPECT_EQ(offsetof(st_upnp_string, capacity), 4U);
  EXPECT_EQ(offsetof(st_upnp_string, buffer), 8U);
  EXPECT_EQ(sizeof(st_upnp_string), 8U + kPointer);
}

}  // namespace
