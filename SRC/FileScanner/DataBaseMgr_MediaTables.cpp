// The rows of ImageTable, AudioTable and VideoTable: one a file, under the id of its row in the
// object table.
#include <string>

#include "FileScanner/AudioMetaData.h"
#include "FileScanner/DataBaseGuard.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DataBaseSchema.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/PreviewNames.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/VideoMetaData.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/ORXAString.h"
#include "OSAL/ORXLog.h"

namespace {

using orx::SqlStatement;

constexpr int kShared = 1;  // a new item is offered to clients

constexpr char kInsertContainer[] = "insert into ContainerTable values (\"%s\",%d ,%d);";

constexpr char kInsertImage[] =
    "insert into ImageTable values (\"%s\",\"%s\",%d, \"%s\",%lld, \"%s\",\"%s\",\"%s\",%d, %d, "
    "%d, %d, %d, %d,\"%s\",\"%s\",\"%s\", %d, %d, %d, %d,\"%s\", %d, \"%s\");";
constexpr char kUpdateImage[] =
    "update ImageTable SET Title = '%s', class = '%d', date = '%s', size = '%lld', "
    "FullPath = '%s', MimeType = '%s', DLNAProfile = '%s', Height = '%d', Width = '%d', "
    "ThumbnailOffset = '%d', ThumbnailLength = '%d', ThumbnailHeight = '%d', "
    "ThumbnailWidth = '%d', Description = '%s', uri = '%s', Thumbnailuri = '%s' WHERE id = '%s'";

constexpr char kInsertAudio[] =
    "insert into AudioTable values (\"%s\",\"%s\",%d, \"%s\",%lld, \"%s\",\"%s\",\"%s\",\"%s\" "
    ",\"%s\",\"%s\",\"%s\",%d,%d,%d,%d, %d,\"%s\");";
constexpr char kUpdateAudio[] =
    "update AudioTable SET Title = '%s', class = '%d', date = '%s', size = '%lld', "
    "FullPath = '%s', MimeType = '%s', DLNAProfile = '%s', Duration = '%s', AlbumTitle = '%s', "
    "AlbumArtist = '%s', Artist = '%s', Channel = '%d', Bitrate = '%d', Frequency = '%d', "
    "AlbumArtOffset = '%d', AlbumArtLength = '%d', uri = '%s' WHERE id = '%s'";

// Its size is unsigned, unlike that of the others.
constexpr char kInsertVideo[] =
    "insert into VideoTable values (\"%s\",\"%s\",%d, \"%s\",%llu, \"%s\",\"%s\", \"%s\",\"%s\", "
    "%d, %d, %f, %ld, %f, %d, %d,  \"%s\", \"%s\",\"%s\", \"%s\", %d, %d, %d,\"%s\", %d, %d, %d, "
    "%d,\"%s\", %d, \"%s\");";
constexpr char kUpdateVideo[] =
    "update VideoTable SET Title = '%s', class = '%d', date = '%s', size = '%lld', "
    "FullPath = '%s', MimeType = '%s', DLNAProfile = '%s', Duration = '%s', Height = '%d', "
    "Width = '%d', VideoFrameRate = '%f', VideoBitrate = '%ld', VideoLevel = '%f', "
    "AlbumArtOffset = '%d', AlbumArtLength = '%d', AudioDuration = '%s', AudioAlbumTitle = '%s', "
    "AudioAlbumArtist = '%s', AudioArtist = '%s', AudioChannel = '%d', AudioBitrate = '%d', "
    "AudioFrequency = '%d', uri = '%s' WHERE id = '%s'";
constexpr char kUpdateSilentVideo[] =
    "update VideoTable SET Title = '%s', class = '%d', date = '%s', size = '%lld', "
    "FullPath = '%s', MimeType = '%s', DLNAProfile = '%s', Duration = '%s', Height = '%d', "
    "Width = '%d', VideoFrameRate = '%f', VideoBitrate = '%ld', VideoLevel = '%f', "
    "AlbumArtOffset = '%d', AlbumArtLength = '%d', uri = '%s' WHERE id = '%s'";

// What a record that is not of the class its type names has of that class's values: nothing.
template <typename Record>
const Record& KnownOf(const MediaMetaData& record) {
  static const Record kNothing{};
  const auto* known = dynamic_cast<const Record*>(&record);
  return known != nullptr ? *known : kNothing;
}

// The functions below add the values of neighbouring columns, in the order of the tables.

void AddTitleToDate(SqlStatement* to, const MediaMetaData& record) {
  to->TextOrBlank(record.GetTitle()).Int(orx::MediaClassOf(record)).TextOrBlank(record.GetDate());
}

void AddPathToProfile(SqlStatement* to, const MediaMetaData& record) {
  to->TextOrBlank(record.GetFullPath())
      .TextOrBlank(record.GetMimeType())
      .TextOrBlank(record.GetDLNAProfile());
}

void AddTitleToProfile(SqlStatement* to, const MediaMetaData& record) {
  AddTitleToDate(to, record);
  to->Int(record.GetSize());
  AddPathToProfile(to, record);
}

void AddImageUpToThumbnailName(SqlStatement* to, const MediaMetaData& record) {
  const auto& image = KnownOf<ImageMetaData>(record);
  AddTitleToProfile(to, record);
  to->Int(image.GetHeight())
      .Int(image.GetWidth())
      .Int(image.GetThumbnailOffset())
      .Int(image.GetThumbnailLength())
      .Int(image.GetThumbnailHeight())
      .Int(image.GetThumbnailWidth())
      .TextOrBlank(image.GetDescription())
      .TextOrBlank(record.GetURI())
      .TextOrBlank(image.GetThumbnailURI());
}

void AddAudio(SqlStatement* to, const MediaMetaData& record) {
  const auto& audio = KnownOf<AudioMetaData>(record);
  AddTitleToProfile(to, record);
  to->TextOrBlank(audio.GetDuration())
      .TextOrBlank(audio.GetAlbumTitle())
      .TextOrBlank(audio.GetAlbumArtist())
      .TextOrBlank(audio.GetArtist())
      .Int(audio.GetNumChannel())
      .Int(audio.GetBitrate())
      .Int(audio.GetFrequency())
      .Int(audio.GetAlbumArtOffset())
      .Int(audio.GetAlbumArtLength())
      .TextOrBlank(record.GetURI());
}

void AddPicture(SqlStatement* to, const VideoMetaData& video) {
  to->TextOrBlank(video.GetDuration())
      .Int(video.GetHeight())
      .Int(video.GetWidth())
      .Real(video.GetVideoFrameRate())
      .Int(video.GetVideoBitrate())
      .Real(video.GetVideoLevel())
      .Int(video.GetAlbumArtOffset())
      .Int(video.GetAlbumArtLength());
}

void AddSoundTrack(SqlStatement* to, const AudioMetaData& track) {
  to->TextOrBlank(track.GetDuration())
      .TextOrBlank(track.GetAlbumTitle())
      .TextOrBlank(track.GetAlbumArtist())
      .TextOrBlank(track.GetArtist())
      .Int(track.GetNumChannel())
      .Int(track.GetBitrate())
      .Int(track.GetFrequency());
}

SqlStatement InsertImage(const MediaMetaData& record) {
  const auto& image = KnownOf<ImageMetaData>(record);
  SqlStatement insert(kInsertImage);
  insert.TextOrBlank(record.GetUniqueID());
  AddImageUpToThumbnailName(&insert, record);
  insert.Int(image.GetScreennailOffset())
      .Int(image.GetScreennailLength())
      .Int(image.GetScreennailHeight())
      .Int(image.GetScreennailWidth())
      .TextOrBlank(image.GetScreennailURI())
      .Int(kShared)
      .TextOrBlank(record.GetSortIndex());
  return insert;
}

SqlStatement InsertVideo(const MediaMetaData& record) {
  static const AudioMetaData kNoSound{};
  const auto& video = KnownOf<VideoMetaData>(record);
  const AudioMetaData* track = video.GetAudioData();
  SqlStatement insert(kInsertVideo);
  insert.TextOrBlank(record.GetUniqueID());
  AddTitleToDate(&insert, record);
  insert.Unsigned(static_cast<unsigned long long>(record.GetSize()));
  AddPathToProfile(&insert, record);
  AddPicture(&insert, video);
  AddSoundTrack(&insert, track != nullptr ? *track : kNoSound);
  insert.TextOrBlank(record.GetURI())
      .Int(video.GetThumbnailOffset())
      .Int(video.GetThumbnailLength())
      .Int(video.GetThumbnailHeight())
      .Int(video.GetThumbnailWidth())
      .TextOrBlank(video.GetThumbnailURI())
      .Int(kShared)
      .TextOrBlank(record.GetSortIndex());
  return insert;
}

// A missing text is written as a blank, in a message as in a row.
const char* TitleOf(const MediaMetaData& record) {
  return record.GetTitle() != nullptr ? record.GetTitle() : " ";
}

}  // namespace

void DataBaseMgr::InsertMetaData(MediaMetaData* record) {
  InsertInBothTables(record, InsertKind::kPlain);
}

void DataBaseMgr::InsertMetaData2(MediaMetaData* record) {
  InsertInBothTables(record, InsertKind::kShared);
}

// The row of the object table comes first: its id is that of the medium, too.
void DataBaseMgr::InsertInBothTables(MediaMetaData* record, InsertKind kind) {
  if (record == nullptr || IsLeftOut(*record)) return;
  orx::WritePair pair(this);
  const bool hadId = record->GetUniqueID() != nullptr;
  InsertMediaInObjTbl(record);
  const int written = InsertInMediaTable(record, kind);
  NoteDamagedItem(*record);
  if (pair.End()) return;
  if (!hadId) record->ClearUniqueID();
  if (written == 1) LogInsertionFailed(*record, kind);
}

// 1 when there is a row, and when there is none to be.
int DataBaseMgr::InsertInMediaTable(const MediaMetaData* record, InsertKind kind) {
  const Guard guard(this);
  switch (orx::MediaClassOf(*record)) {
    case orx::kContainerClass:
      ORX_LOG_INFO("The current MEDIA_CONTAINER table is not used!!!");
      InsertMediaContainer(record);
      return 1;
    case orx::kImageClass:
      return kind == InsertKind::kShared ? InsertPhotoMetaData2(record)
                                         : InsertPhotoMetaData(record);
    case orx::kAudioClass:
      return InsertAudioMetaData(record);
    case orx::kVideoClass:
      return InsertVideoMetaData(record);
    default:
      return 1;
  }
}

// A sound has no line of its own, in this case either.
void DataBaseMgr::LogInsertionFailed(const MediaMetaData& record, InsertKind kind) {
  const int mediaClass = orx::MediaClassOf(record);
  if (mediaClass == orx::kVideoClass) {
    ORX_LOG_INFO("[DataBaseMgr::InsertVideoMetaData] Media file [%s] insertion failed",
                 TitleOf(record));
  } else if (mediaClass == orx::kImageClass && kind == InsertKind::kShared) {
    ORX_LOG_INFO("[DataBaseMgr::InsertPhotoMetaData] Media file [%s] insertion Failed\n",
                 TitleOf(record));
  } else if (mediaClass == orx::kImageClass) {
    ORX_LOG_INFO("[DataBaseMgr::InsertPhotoMetaData] Media file [%s] insertion failed",
                 TitleOf(record));
  }
}

// Three values for six columns: SQLite turns it down, and directories have no second row.
int DataBaseMgr::InsertMediaContainer(const MediaMetaData* record) {
  if (record == nullptr) return 0;
  return Run(SqlStatement(kInsertContainer).TextOrBlank(record->GetUniqueID()).Int(0).Int(1));
}

int DataBaseMgr::InsertPhotoMetaData(const MediaMetaData* record) {
  if (record == nullptr) return 0;
  const Guard guard(this);
  orx::NameImageThumbnail(*record, orx::NamedAfter::kExtension);
  orx::NameImageScreennail(*record, orx::NamedAfter::kExtension);
  if (Run(InsertImage(*record)) == 1) return 1;
  LogInsertionFailed(*record, InsertKind::kPlain);
  return 0;
}

int DataBaseMgr::InsertPhotoMetaData2(const MediaMetaData* record) {
  if (record == nullptr) return 0;
  const Guard guard(this);
  orx::NameImageThumbnail(*record, orx::NamedAfter::kExtensionAndSortIndex);
  orx::NameImageScreennail(*record, orx::NamedAfter::kExtensionAndSortIndex);
  if (Run(InsertImage(*record)) == 1) return 1;
  LogInsertionFailed(*record, InsertKind::kShared);
  return 0;
}

int DataBaseMgr::InsertAudioMetaData(const MediaMetaData* record) {
  if (record == nullptr) return 0;
  SqlStatement insert(kInsertAudio);
  insert.TextOrBlank(record->GetUniqueID());
  AddAudio(&insert, *record);
  return Run(insert);
}

int DataBaseMgr::InsertVideoMetaData(const MediaMetaData* record) {
  if (record == nullptr) return 0;
  const Guard guard(this);
  orx::NameVideoThumbnail(*record);
  if (Run(InsertVideo(*record)) == 1) return 1;
  LogInsertionFailed(*record, InsertKind::kPlain);
  return 0;
}

// The updates leave Share and SortIndex as they are.

int DataBaseMgr::UpdateImageMetaData(const MediaMetaData* record, const char* id) {
  if (record == nullptr || id == nullptr) return 0;
  const Guard guard(this);
  orx::NameImageThumbnail(*record, orx::NamedAfter::kExtension);
  SqlStatement update(kUpdateImage);
  AddImageUpToThumbnailName(&update, *record);
  return Run(update.Text(id));
}

int DataBaseMgr::UpdateAudioMetaData(const MediaMetaData* record, const char* id) {
  if (record == nullptr || id == nullptr) return 0;
  SqlStatement update(kUpdateAudio);
  AddAudio(&update, *record);
  return Run(update.Text(id));
}

int DataBaseMgr::UpdateVideoMetaData(const MediaMetaData* record, const char* id) {
  if (record == nullptr || id == nullptr) return 0;
  const auto& video = KnownOf<VideoMetaData>(*record);
  const AudioMetaData* track = video.GetAudioData();
  SqlStatement update(track != nullptr ? kUpdateVideo : kUpdateSilentVideo);
  AddTitleToProfile(&update, *record);
  AddPicture(&update, video);
  if (track != nullptr) AddSoundTrack(&update, *track);
  return Run(update.TextOrBlank(record->GetURI()).Text(id));
}

int DataBaseMgr::UpdateDBForNewItem(MediaMetaData* record, const TChar* id) try {
  if (record == nullptr || id == nullptr) return 0;
  const std::string row(id);  // the caller's text may be a cell of the result, which changes
  Query(SqlStatement("select class from ObjectTable where id = \"%s\"").Text(row));
  if (vdata.empty()) {
    ORX_LOG_INFO("[DataBaseMgr::UpdateDBForNewItem] Media class not found");
    return 0;
  }
  const int storedClass = ORXAString::Integer(vdata[0].c_str());
  vdata.clear();
  if (storedClass != orx::MediaClassOf(*record)) {
    ORX_LOG_INFO(
        "[DataBaseMgr::UpdateDBForNewItem] media type received from Create Object and media type "
        "identified by the ORX file parser are not matching");
    return 0;
  }
  switch (storedClass) {
    case orx::kImageClass:
      UpdateImageMetaData(record, row.c_str());
      return 1;
    case orx::kAudioClass:
      UpdateAudioMetaData(record, row.c_str());
      return 1;
    case orx::kVideoClass:
      UpdateVideoMetaData(record, row.c_str());
      return 1;
    default:
      ORX_LOG_INFO("[DataBaseMgr::UpdateDBForNewItem] Media class not found");
      return 0;
  }
} catch (const std::exception&) {
  OutOfMemory(__func__);
  return 0;
}
