#include "FileScanner/DataBaseSchema.h"

#include "FileScanner/MediaMetaData.h"

namespace orx {
namespace {

constexpr TableColumn kObjectTableObjectOnlyColumns[] = {
    {"id", "INTEGER", 0, "PRIMARY KEY"},
    {"Title", "VARCHAR", 256, "DEFAULT ' '"},
    {"class", "INTEGER", 0, "NOT NULL"},
    {"date", "VARCHAR", 64, "NOT NULL"},
    {"size", "INTEGER", 0, "NOT NULL"},
    {"parentID", "VARCHAR", 16, "NOT NULL"},
    {"FullPath", "VARCHAR", 600, "NOT NULL"},
    {"uri", "VARCHAR", 600, "DEFAULT ' '"},
    {"Thumbnailuri", "VARCHAR", 600, "DEFAULT ' '"},
    {"Screennailuri", "VARCHAR", 600, "DEFAULT ' '"},
    {"Height", "INTEGER", 0, "DEFAULT 0"},
    {"Width", "INTEGER", 0, "DEFAULT 0"},
    {"VideoFrameRate", "INTEGER", 0, "DEFAULT 0"},
    {"VideoBitrate", "INTEGER", 0, "DEFAULT 0"},
    {"SortIndex", "VARCHAR", 16, "DEFAULT ' '"},
};

constexpr TableColumn kObjectTableBackupColumns[] = {
    {"id", "INTEGER", 0, "PRIMARY KEY"},         {"Title", "VARCHAR", 256, "DEFAULT ' '"},
    {"class", "INTEGER", 0, "NOT NULL"},         {"date", "VARCHAR", 64, "NOT NULL"},
    {"size", "INTEGER", 0, "NOT NULL"},          {"parentID", "VARCHAR", 16, "NOT NULL"},
    {"FullPath", "VARCHAR", 600, "NOT NULL"},    {"MimeType", "VARCHAR", 32, "DEFAULT ' '"},
    {"SortIndex", "VARCHAR", 16, "DEFAULT ' '"}, {"Valid", "INTEGER", 0, "DEFAULT 0"},
    {"BackupID", "VARCHAR", 128, "DEFAULT 0"},   {"IsBackup", "INTEGER", 0, "DEFAULT 0"},
};

constexpr TableColumn kObjectTableColumns[] = {
    {"id", "INTEGER", 0, "PRIMARY KEY"},       {"class", "INTEGER", 0, "NOT NULL"},
    {"date", "VARCHAR", 64, "NOT NULL"},       {"parentID", "VARCHAR", 16, "NOT NULL"},
    {"FullPath", "VARCHAR", 600, "NOT NULL"},  {"Valid", "INTEGER", 0, "DEFAULT 0"},
    {"BackupID", "VARCHAR", 128, "DEFAULT 0"}, {"IsBackup", "INTEGER", 0, "DEFAULT 0"},
};

constexpr TableColumn kContainerTableColumns[] = {
    {"id", "VARCHAR", 16, "PRIMARY KEY"},      {"class", "INTEGER", 0, "NOT NULL"},
    {"date", "VARCHAR", 64, "NOT NULL"},       {"FullPath", "VARCHAR", 600, "NOT NULL"},
    {"searchable", "INTEGER", 0, "DEFAULT 0"}, {"writeStatus", "INTEGER", 0, "DEFAULT 0"},
};

constexpr TableColumn kAudioTableColumns[] = {
    {"id", "VARCHAR", 16, "PRIMARY KEY"},
    {"Title", "VARCHAR", 256, "DEFAULT ' '"},
    {"class", "INTEGER", 0, "NOT NULL"},
    {"date", "VARCHAR", 64, "NOT NULL"},
    {"size", "INTEGER", 0, "NOT NULL"},
    {"FullPath", "VARCHAR", 600, "NOT NULL"},
    {"MimeType", "VARCHAR", 32, "DEFAULT ' '"},
    {"DLNAProfile", "VARCHAR", 64, "DEFAULT ' '"},
    {"Duration", "VARCHAR", 64, "DEFAULT ' '"},
    {"AlbumTitle", "VARCHAR", 256, "DEFAULT ' '"},
    {"AlbumArtist", "VARCHAR", 256, "DEFAULT ' '"},
    {"Artist", "VARCHAR", 256, "DEFAULT ' '"},
    {"Channel", "INTEGER", 0, "DEFAULT 0"},
    {"Bitrate", "INTEGER", 0, "DEFAULT 0"},
    {"Frequency", "INTEGER", 0, "DEFAULT 0"},
    {"AlbumArtOffset", "INTEGER", 0, "DEFAULT 0"},
    {"AlbumArtLength", "INTEGER", 0, "DEFAULT 0"},
    {"uri", "VARCHAR", 600, "DEFAULT ' '"},
};

constexpr TableColumn kVideoTableColumns[] = {
    {"id", "VARCHAR", 16, "PRIMARY KEY"},
    {"Title", "VARCHAR", 256, "DEFAULT ' '"},
    {"class", "INTEGER", 0, "NOT NULL"},
    {"date", "VARCHAR", 64, "NOT NULL"},
    {"size", "INTEGER", 0, "NOT NULL"},
    {"FullPath", "VARCHAR", 600, "NOT NULL"},
    {"MimeType", "VARCHAR", 32, "DEFAULT ' '"},
    {"DLNAProfile", "VARCHAR", 64, "DEFAULT ' '"},
    {"Duration", "VARCHAR", 64, "DEFAULT ' '"},
    {"Height", "INTEGER", 0, "DEFAULT 0"},
    {"Width", "INTEGER", 0, "DEFAULT 0"},
    {"VideoFrameRate", "INTEGER", 0, "DEFAULT 0"},
    {"VideoBitrate", "INTEGER", 0, "DEFAULT 0"},
    {"VideoLevel", "INTEGER", 0, "DEFAULT 0"},
    {"AlbumArtOffset", "INTEGER", 0, "DEFAULT 0"},
    {"AlbumArtLength", "INTEGER", 0, "DEFAULT 0"},
    {"AudioDuration", "VARCHAR", 64, "DEFAULT ' '"},
    {"AudioAlbumTitle", "VARCHAR", 256, "DEFAULT ' '"},
    {"AudioAlbumArtist", "VARCHAR", 256, "DEFAULT ' '"},
    {"AudioArtist", "VARCHAR", 256, "DEFAULT ' '"},
    {"AudioChannel", "INTEGER", 0, "DEFAULT 0"},
    {"AudioBitrate", "INTEGER", 0, "DEFAULT 0"},
    {"AudioFrequency", "INTEGER", 0, "DEFAULT 0"},
    {"uri", "VARCHAR", 600, "DEFAULT ' '"},
    {"ThumbnailOffset", "INTEGER", 0, "DEFAULT 0"},
    {"ThumbnailLength", "INTEGER", 0, "DEFAULT 0"},
    {"ThumbnailHeight", "INTEGER", 0, "DEFAULT 0"},
    {"ThumbnailWidth", "INTEGER", 0, "DEFAULT 0"},
    {"Thumbnailuri", "VARCHAR", 600, "DEFAULT ' '"},
    {"Share", "INTEGER", 0, "DEFAULT 0"},
    {"SortIndex", "VARCHAR", 16, "DEFAULT ' '"},
};

constexpr TableColumn kImageTableColumns[] = {
    {"id", "VARCHAR", 16, "PRIMARY KEY"},
    {"Title", "VARCHAR", 256, "DEFAULT ' '"},
    {"class", "INTEGER", 0, "NOT NULL"},
    {"date", "VARCHAR", 64, "NOT NULL"},
    {"size", "INTEGER", 0, "NOT NULL"},
    {"FullPath", "VARCHAR", 600, "NOT NULL"},
    {"MimeType", "VARCHAR", 32, "DEFAULT ' '"},
    {"DLNAProfile", "VARCHAR", 64, "DEFAULT ' '"},
    {"Height", "INTEGER", 0, "DEFAULT 0"},
    {"Width", "INTEGER", 0, "DEFAULT 0"},
    {"ThumbnailOffset", "INTEGER", 0, "DEFAULT 0"},
    {"ThumbnailLength", "INTEGER", 0, "DEFAULT 0"},
    {"ThumbnailHeight", "INTEGER", 0, "DEFAULT 0"},
    {"ThumbnailWidth", "INTEGER", 0, "DEFAULT 0"},
    {"Description", "VARCHAR", 512, "DEFAULT ' '"},
    {"uri", "VARCHAR", 600, "DEFAULT ' '"},
    {"Thumbnailuri", "VARCHAR", 600, "DEFAULT ' '"},
    {"ScreennailOffset", "INTEGER", 0, "DEFAULT 0"},
    {"ScreennailLength", "INTEGER", 0, "DEFAULT 0"},
    {"ScreennailHeight", "INTEGER", 0, "DEFAULT 0"},
    {"ScreennailWidth", "INTEGER", 0, "DEFAULT 0"},
    {"Screennailuri", "VARCHAR", 600, "DEFAULT ' '"},
    {"Share", "INTEGER", 0, "DEFAULT 0"},
    {"SortIndex", "VARCHAR", 16, "DEFAULT ' '"},
};

template <int kCount>
constexpr TableLayout Layout(const char* name, const TableColumn (&columns)[kCount]) {
  return {name, kCount, columns};
}

}  // namespace

int MediaClassOf(const MediaMetaData& record) { return static_cast<int>(record.GetType()); }

const TableLayout kObjectTableObjectOnly = Layout("ObjectTable", kObjectTableObjectOnlyColumns);
const TableLayout kObjectTableBackup = Layout("ObjectTable", kObjectTableBackupColumns);
const TableLayout kObjectTable = Layout("ObjectTable", kObjectTableColumns);
const TableLayout kContainerTable = Layout("ContainerTable", kContainerTableColumns);
const TableLayout kAudioTable = Layout("AudioTable", kAudioTableColumns);
const TableLayout kVideoTable = Layout("VideoTable", kVideoTableColumns);
const TableLayout kImageTable = Layout("ImageTable", kImageTableColumns);

}  // namespace orx
