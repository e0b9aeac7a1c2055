#include "MediaReader.h"

#include <algorithm>
#include <limits>

#include "Failure.h"
#include "Sqlite.h"
#include "Texts.h"

namespace orxserve {
namespace {

using Take = std::function<void(const MediaRow&)>;

// The columns of each table in one order; those that a table lacks are given as constants.
enum Column {
  kPath,
  kClass,
  kSize,
  kDate,
  kMime,
  kProfile,
  kDuration,
  kWidth,
  kHeight,
  kBitRate,
  kFrequency,
  kChannels,
  kDescription,
  kArtist,
  kAlbum,
  kSort,
  kPieces,  // twelve of them
};

constexpr char kPictures[] =
    "SELECT FullPath, 1, size, date, MimeType, DLNAProfile, '', Width, Height, 0, 0, 0,"
    " Description, '', '', SortIndex,"
    " ThumbnailOffset, ThumbnailLength, ThumbnailWidth, ThumbnailHeight,"
    " ScreennailOffset, ScreennailLength, ScreennailWidth, ScreennailHeight, 0, 0"
    " FROM ImageTable WHERE Share = 1";
constexpr char kFilms[] =
    "SELECT FullPath, 3, size, date, MimeType, DLNAProfile, Duration, Width, Height,"
    " VideoBitrate + AudioBitrate, AudioFrequency, AudioChannel, '', AudioArtist, AudioAlbumTitle,"
    " SortIndex, ThumbnailOffset, ThumbnailLength, ThumbnailWidth, ThumbnailHeight, 0, 0, 0, 0,"
    " AlbumArtOffset, AlbumArtLength FROM VideoTable WHERE Share = 1";
constexpr char kSounds[] =
    "SELECT FullPath, 2, size, date, MimeType, DLNAProfile, Duration, 0, 0, Bitrate, Frequency,"
    " Channel, '', Artist, AlbumTitle, '', 0, 0, 0, 0, 0, 0, 0, 0, AlbumArtOffset, AlbumArtLength"
    " FROM AudioTable";
constexpr char kObjectsAlone[] =  // the layout of mode 8
    "SELECT FullPath, class, size, date, '', '', '', Width, Height, 0, 0, 0, '', '', '', SortIndex,"
    " 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 FROM ObjectTable WHERE class <> 0";
constexpr char kBackupObjects[] =  // that of mode 6
    "SELECT FullPath, class, size, date, MimeType, '', '', 0, 0, 0, 0, 0, '', '', '', SortIndex,"
    " 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 FROM ObjectTable WHERE class <> 0";

template <typename Number = uint32_t>
Number Unsigned(const Statement& row, int column) {
  const int64_t number = std::max<int64_t>(row.Number(column), 0);
  const uint64_t largest = std::numeric_limits<Number>::max();
  return static_cast<uint64_t>(number) > largest ? Number{0} : static_cast<Number>(number);
}

PiecePlace Place(const Statement& row, int column) {
  return {Unsigned<uint64_t>(row, column), Unsigned(row, column + 1),
          Unsigned<uint16_t>(row, column + 2), Unsigned<uint16_t>(row, column + 3)};
}

MediaRow RowOf(const Statement& row) {
  MediaRow media;
  media.path = row.Text(kPath);
  media.kind = static_cast<Kind>(row.Number(kClass));
  media.size = Unsigned<uint64_t>(row, kSize);
  media.date = ParseDate(row.Text(kDate));
  media.mimeType = CorrectedMimeType(media.kind, media.path, row.Text(kMime));
  media.profile = CertainProfile(media.mimeType, row.Text(kProfile));
  media.duration = ParseDuration(row.Text(kDuration));
  media.width = Unsigned(row, kWidth);
  media.height = Unsigned(row, kHeight);
  media.bitRate = Unsigned(row, kBitRate);
  media.frequency = Unsigned(row, kFrequency);
  media.channels = Unsigned(row, kChannels);
  media.description = KnownText(row.Text(kDescription));
  media.artist = KnownText(row.Text(kArtist));
  media.album = KnownText(row.Text(kAlbum));
  uint64_t sort = 0;
  if (ParseNumber(Trim(row.Text(kSort)), &sort) && sort < UINT32_MAX)
    media.sortNumber = static_cast<int64_t>(sort);
  media.pieces = {
      Place(row, kPieces), Place(row, kPieces + 4),
      CoverPlace(Unsigned<uint64_t>(row, kPieces + 8), Unsigned<uint64_t>(row, kPieces + 9))};
  return media;
}

bool IsMedia(int64_t mediaClass) { return mediaClass >= 1 && mediaClass <= 3; }

void ReadTable(Database* database, const char* select, const Take& take) {
  Statement rows = database->Prepare(select);
  while (rows.Next())
    if (IsMedia(rows.Number(kClass)) && !rows.Text(kPath).empty()) take(RowOf(rows));
}

bool Exists(Database* database, const char* select) { return database->Prepare(select).Next(); }

}  // namespace

void ReadMediaRows(const std::string& path, const Take& take) {
  Database database(path, Database::Access::kRead);
  Transaction snapshot(&database);
  if (Exists(&database, "SELECT 1 FROM sqlite_master WHERE name = 'ImageTable'")) {
    for (const char* select : {kPictures, kFilms, kSounds}) ReadTable(&database, select, take);
  } else if (Exists(&database,
                    "SELECT 1 FROM pragma_table_info('ObjectTable')"
                    " WHERE name = 'IsBackup'")) {
    ReadTable(&database, kBackupObjects, take);
  } else if (Exists(&database, "SELECT 1 FROM sqlite_master WHERE name = 'ObjectTable'")) {
    ReadTable(&database, kObjectsAlone, take);
  }
}

bool AllowReadersDuringScans(const std::string& path) {
  try {
    Database database(path, Database::Access::kWrite);
    Statement mode = database.Prepare("PRAGMA journal_mode = wal");
    return mode.Next() && mode.Text(0) == "wal";
  } catch (const Failure&) {
    return false;
  }
}

}  // namespace orxserve
