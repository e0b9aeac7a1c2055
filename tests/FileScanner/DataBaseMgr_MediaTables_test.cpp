#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "OSAL/UniqueValueGenerator.h"
#include "support/FailedStatement.h"
#include "support/FakePlatform.h"
#include "support/RecordBuilder.h"
#include "support/ReferenceDatabase.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::LoggedFailureOf;
using orx_test::MakeAudio;
using orx_test::MakeImage;
using orx_test::MakeImageAt;
using orx_test::MakePlain;
using orx_test::MakeRecord;
using orx_test::MakeVideo;
using orx_test::OrBlank;
using orx_test::OrdinaryValues;
using orx_test::RecordValues;
using orx_test::ReferenceDatabase;
using orx_test::Rows;
using orx_test::TestDatabase;
using orx_test::TypedRows;
using testing::MatchesRegex;

const AudioMetaData kNoSound{};

// The default layout, and the names of previews counted from 1.
class MediaTables : public testing::Test {
 protected:
  MediaTables() {
    UniqueValueGenerator::DestroyInstance();
    testing::internal::CaptureStderr();
  }
  ~MediaTables() override {
    testing::internal::GetCapturedStderr();
    UniqueValueGenerator::DestroyInstance();
  }

  Rows Table(const std::string& name) const { return TypedRows(DataBaseMgr::ppDataBase, name); }
  int Count(const std::string& table) const { return static_cast<int>(Table(table).size()); }
  bool Logged(const std::string& message) const { return FakePlatform::Get().Logged(message); }

  TestDatabase database_;
};

// ---- the inserts, against the same values written as SQL text ----

std::string InsertImageText(ReferenceDatabase* to, const ImageMetaData& r) {
  return to->Exec(
      "insert into ImageTable values (\"%s\",\"%s\",%d, \"%s\",%lld, \"%s\",\"%s\",\"%s\",%d, %d, "
      "%d, %d, %d, %d,\"%s\",\"%s\",\"%s\", %d, %d, %d, %d,\"%s\", %d, \"%s\");",
      OrBlank(r.GetUniqueID()), OrBlank(r.GetTitle()), static_cast<int>(r.GetType()),
      OrBlank(r.GetDate()), r.GetSize(), OrBlank(r.GetFullPath()), OrBlank(r.GetMimeType()),
      OrBlank(r.GetDLNAProfile()), r.GetHeight(), r.GetWidth(), r.GetThumbnailOffset(),
      r.GetThumbnailLength(), r.GetThumbnailHeight(), r.GetThumbnailWidth(),
      OrBlank(r.GetDescription()), OrBlank(r.GetURI()), OrBlank(r.GetThumbnailURI()),
      r.GetScreennailOffset(), r.GetScreennailLength(), r.GetScreennailHeight(),
      r.GetScreennailWidth(), OrBlank(r.GetScreennailURI()), 1, OrBlank(r.GetSortIndex()));
}

std::string InsertAudioText(ReferenceDatabase* to, const AudioMetaData& r) {
  return to->Exec(
      "insert into AudioTable values (\"%s\",\"%s\",%d, \"%s\",%lld, \"%s\",\"%s\",\"%s\",\"%s\" "
      ",\"%s\",\"%s\",\"%s\",%d,%d,%d,%d, %d,\"%s\");",
      OrBlank(r.GetUniqueID()), OrBlank(r.GetTitle()), static_cast<int>(r.GetType()),
      OrBlank(r.GetDate()), r.GetSize(), OrBlank(r.GetFullPath()), OrBlank(r.GetMimeType()),
      OrBlank(r.GetDLNAProfile()), OrBlank(r.GetDuration()), OrBlank(r.GetAlbumTitle()),
      OrBlank(r.GetAlbumArtist()), OrBlank(r.GetArtist()), r.GetNumChannel(), r.GetBitrate(),
      r.GetFrequency(), r.GetAlbumArtOffset(), r.GetAlbumArtLength(), OrBlank(r.GetURI()));
}

std::string InsertVideoText(ReferenceDatabase* to, const VideoMetaData& r) {
  const AudioMetaData& a = r.GetAudioData() != nullptr ? *r.GetAudioData() : kNoSound;
  return to->Exec(
      "insert into VideoTable values (\"%s\",\"%s\",%d, \"%s\",%llu, \"%s\",\"%s\", \"%s\",\"%s\", "
      "%d, %d, %f, %ld, %f, %d, %d,  \"%s\", \"%s\",\"%s\", \"%s\", %d, %d, %d,\"%s\", %d, %d, %d, "
      "%d,\"%s\", %d, \"%s\");",
      OrBlank(r.GetUniqueID()), OrBlank(r.GetTitle()), static_cast<int>(r.GetType()),
      OrBlank(r.GetDate()), static_cast<unsigned long long>(r.GetSize()), OrBlank(r.GetFullPath()),
      OrBlank(r.GetMimeType()), OrBlank(r.GetDLNAProfile()), OrBlank(r.GetDuration()),
      r.GetHeight(), r.GetWidth(), r.GetVideoFrameRate(), r.GetVideoBitrate(), r.GetVideoLevel(),
      r.GetAlbumArtOffset(), r.GetAlbumArtLength(), OrBlank(a.GetDuration()),
      OrBlank(a.GetAlbumTitle()), OrBlank(a.GetAlbumArtist()), OrBlank(a.GetArtist()),
      a.GetNumChannel(), a.GetBitrate(), a.GetFrequency(), OrBlank(r.GetURI()),
      r.GetThumbnailOffset(), r.GetThumbnailLength(), r.GetThumbnailHeight(), r.GetThumbnailWidth(),
      OrBlank(r.GetThumbnailURI()), 1, OrBlank(r.GetSortIndex()));
}

TEST_F(MediaTables, WriteAPictureAsItsSqlTextDoes) {
  ReferenceDatabase reference(database_);
  int id = 0;
  for (const RecordValues& values : OrdinaryValues()) {
    SCOPED_TRACE(values.name);
    const auto image = MakeImage(values);
    image->SetUniqueID(std::to_string(++id).c_str());
    EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 1);
    InsertImageText(&reference, *image);
    EXPECT_EQ(Table("ImageTable"), reference.Table("ImageTable"));
  }
}

TEST_F(MediaTables, WriteASoundAsItsSqlTextDoes) {
  ReferenceDatabase reference(database_);
  int id = 0;
  for (const RecordValues& values : OrdinaryValues()) {
    SCOPED_TRACE(values.name);
    const auto audio = MakeAudio(values);
    audio->SetUniqueID(std::to_string(++id).c_str());
    EXPECT_EQ(database_->InsertAudioMetaData(audio.get()), 1);
    InsertAudioText(&reference, *audio);
    EXPECT_EQ(Table("AudioTable"), reference.Table("AudioTable"));
  }
}

TEST_F(MediaTables, WriteAFilmAsItsSqlTextDoes) {
  ReferenceDatabase reference(database_);
  int id = 0;
  for (const RecordValues& values : OrdinaryValues()) {
    SCOPED_TRACE(values.name);
    const auto video = MakeVideo(values);
    video->SetUniqueID(std::to_string(++id).c_str());
    EXPECT_EQ(database_->InsertVideoMetaData(video.get()), 1);
    InsertVideoText(&reference, *video);
    EXPECT_EQ(Table("VideoTable"), reference.Table("VideoTable"));
  }
}

TEST_F(MediaTables, KeepApostrophesOfAnInsertAsText) {
  RecordValues values = OrdinaryValues()[0];
  values.text = " it's 'quoted'";
  ReferenceDatabase reference(database_);
  const auto image = MakeImage(values);
  const auto audio = MakeAudio(values);
  const auto video = MakeVideo(values);
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 1);
  EXPECT_EQ(database_->InsertAudioMetaData(audio.get()), 1);
  EXPECT_EQ(database_->InsertVideoMetaData(video.get()), 1);
  InsertImageText(&reference, *image);
  InsertAudioText(&reference, *audio);
  InsertVideoText(&reference, *video);
  for (const char* table : {"ImageTable", "AudioTable", "VideoTable"})
    EXPECT_EQ(Table(table), reference.Table(table)) << table;
}

TEST_F(MediaTables, KeepTheTypesOfValues) {
  RecordValues values = OrdinaryValues()[0];
  values.real = 30;
  values.size = 5000000000;
  const auto video = MakeVideo(values);
  video->SetVideoLevel(1.3);
  video->SetSortIndex("0010007");
  EXPECT_EQ(database_->InsertVideoMetaData(video.get()), 1);
  EXPECT_EQ(database_.Select("select typeof(VideoFrameRate), VideoFrameRate, typeof(VideoLevel), "
                             "VideoLevel, typeof(size), size, typeof(SortIndex), SortIndex, "
                             "typeof(id), typeof(class) from VideoTable"),
            (Rows{{"integer", "30", "real", "1.3", "integer", "5000000000", "text", "0010007",
                   "text", "integer"}}));
}

TEST_F(MediaTables, WriteTheSizeOfAFilmUnsigned) {
  RecordValues values = OrdinaryValues()[0];
  values.size = -1;
  database_->InsertVideoMetaData(MakeVideo(values).get());
  database_->InsertPhotoMetaData(MakeImage(values).get());
  EXPECT_EQ(database_.Select("select typeof(size), size from VideoTable"),
            (Rows{{"real", "1.84467440737096e+19"}}));
  EXPECT_EQ(database_.Select("select typeof(size), size from ImageTable"),
            (Rows{{"integer", "-1"}}));
}

TEST_F(MediaTables, WriteNumbersThatAreNotFiniteAsZero) {
  const auto video = MakeVideo(OrdinaryValues()[0]);
  video->SetVideoFrameRate(NAN);
  video->SetVideoLevel(-INFINITY);
  EXPECT_EQ(database_->InsertVideoMetaData(video.get()), 1);
  EXPECT_EQ(database_->UpdateVideoMetaData(video.get(), " "), 1);
  EXPECT_EQ(
      database_.Select("select typeof(VideoFrameRate), VideoFrameRate, VideoLevel from VideoTable"),
      (Rows{{"integer", "0", "0"}}));
}

TEST_F(MediaTables, WriteAVeryLongDescriptionWhole) {
  const auto image = MakeImageAt("/a/b.jpg");
  const std::string description(60000, 'd');
  image->SetDescription(description.c_str());
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 1);
  EXPECT_EQ(database_.Cell("select Description from ImageTable"), description);
}

TEST_F(MediaTables, WriteABlankForAMissingTitle) {
  database_->InsertMetaData(MakeImageAt("/a/b.jpg").get());
  EXPECT_EQ(database_.Cell("select Title from ImageTable"), " ");
}

TEST_F(MediaTables, WriteAnEmptyTextAsAnEmptyText) {
  const auto image = MakeImageAt("/a/b.jpg");
  image->SetTitle("");
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 1);
  EXPECT_EQ(database_.Select("select typeof(Title), Title from ImageTable"), (Rows{{"text", ""}}));
}

TEST_F(MediaTables, WriteABlankDurationAndNoChannelsForASilentFilm) {
  RecordValues values = OrdinaryValues()[0];
  values.soundTrack = false;
  EXPECT_EQ(database_->InsertVideoMetaData(MakeVideo(values).get()), 1);
  EXPECT_EQ(database_.Select("select AudioDuration, AudioAlbumTitle, AudioAlbumArtist, "
                             "AudioArtist, AudioChannel, AudioBitrate, AudioFrequency "
                             "from VideoTable"),
            (Rows{{" ", " ", " ", " ", "0", "0", "0"}}));
}

TEST_F(MediaTables, ShareNewPicturesAndFilms) {
  database_->InsertPhotoMetaData(MakeImage(OrdinaryValues()[0]).get());
  database_->InsertVideoMetaData(MakeVideo(OrdinaryValues()[0]).get());
  EXPECT_EQ(database_.Cell("select Share from ImageTable"), "1");
  EXPECT_EQ(database_.Cell("select Share from VideoTable"), "1");
}

// ---- records whose type and class differ ----

TEST_F(MediaTables, WriteAPlainRecordWithWhatItHas) {
  ReferenceDatabase reference(database_);
  const RecordValues values = OrdinaryValues()[0];
  const auto plainImage = MakePlain(1, values);
  const auto plainAudio = MakePlain(2, values);
  const auto plainVideo = MakePlain(3, values);
  EXPECT_EQ(database_->InsertPhotoMetaData(plainImage.get()), 1);
  EXPECT_EQ(database_->InsertAudioMetaData(plainAudio.get()), 1);
  EXPECT_EQ(database_->InsertVideoMetaData(plainVideo.get()), 1);

  const RecordValues nothing = {"missing", true, "", values.size, 0, 0, 0, false};
  const auto image = MakeImage(nothing);
  const auto audio = MakeAudio(nothing);
  const auto video = MakeVideo(nothing);
  for (MediaMetaData* record :
       {static_cast<MediaMetaData*>(image.get()), static_cast<MediaMetaData*>(audio.get()),
        static_cast<MediaMetaData*>(video.get())}) {
    record->SetFullPath(plainImage->GetFullPath());
    record->SetURI(plainImage->GetURI());
    record->SetTitle(plainImage->GetTitle());
    record->SetMimeType(plainImage->GetMimeType());
    record->SetDate(plainImage->GetDate());
    record->SetDLNAProfile(plainImage->GetDLNAProfile());
    record->SetSortIndex(plainImage->GetSortIndex());
  }
  InsertImageText(&reference, *image);
  InsertAudioText(&reference, *audio);
  InsertVideoText(&reference, *video);
  for (const char* table : {"ImageTable", "AudioTable", "VideoTable"})
    EXPECT_EQ(Table(table), reference.Table(table)) << table;
}

TEST_F(MediaTables, WriteARecordOfAnotherClassWithWhatBothHave) {
  const auto video = MakeVideo(OrdinaryValues()[0]);
  video->SetType(1);
  database_->InsertMetaData(video.get());
  EXPECT_EQ(database_.Select("select class, Title, Height, Description, Thumbnailuri, "
                             "Screennailuri from ImageTable"),
            (Rows{{"1", "title", "0", " ", " ", " "}}));
}

TEST_F(MediaTables, UpdateFromAPlainRecordWithWhatItHas) {
  const RecordValues values = OrdinaryValues()[0];
  for (unsigned type = 1; type <= 3; ++type) {
    const auto record = MakeRecord(type, values);
    record->SetFullPath(std::to_string(type).c_str());
    database_->InsertMetaData(record.get());
    EXPECT_EQ(database_->UpdateDBForNewItem(MakePlain(type, values).get(), record->GetUniqueID()),
              1);
  }
  EXPECT_EQ(database_.Select("select Title, Height, Description, Thumbnailuri from ImageTable"),
            (Rows{{"title", "0", " ", " "}}));
  EXPECT_EQ(database_.Select("select Title, Duration, Channel from AudioTable"),
            (Rows{{"title", " ", "0"}}));
  EXPECT_EQ(database_.Select("select Title, Height, VideoLevel, AudioDuration from VideoTable"),
            (Rows{{"title", "0", "0", "0:01:02.003"}}));
}

// ---- resource names ----

// A name holds the time between its counter and the rest: a number of whole seconds, in
// milliseconds.

TEST_F(MediaTables, NamePreviewsAfterTheExtension) {
  const auto image = MakeImage(OrdinaryValues()[0]);
  database_->InsertMetaData(image.get());
  EXPECT_THAT(image->GetThumbnailURI(), MatchesRegex("/orxthumb0001[0-9]*0\\.JPG"));
  EXPECT_THAT(image->GetScreennailURI(), MatchesRegex("/orxscreen0002[0-9]*0\\.JPG"));
  EXPECT_EQ(database_.Select("select Thumbnailuri, Screennailuri from ImageTable"),
            (Rows{{image->GetThumbnailURI(), image->GetScreennailURI()}}));
}

TEST_F(MediaTables, NamePreviewsAfterTheSortIndexToo) {
  const auto image = MakeImage(OrdinaryValues()[0]);
  database_->InsertMetaData2(image.get());
  EXPECT_THAT(image->GetThumbnailURI(), MatchesRegex("/orxthumb0001[0-9]{3,}0000010007\\.JPG"));
  EXPECT_THAT(image->GetScreennailURI(), MatchesRegex("/orxscreen0002[0-9]{3,}0000010007\\.JPG"));
  EXPECT_EQ(database_.Select("select Thumbnailuri, Screennailuri from ImageTable"),
            (Rows{{image->GetThumbnailURI(), image->GetScreennailURI()}}));
}

TEST_F(MediaTables, NamePreviewsWithoutExtensionAndSortIndex) {
  const auto first = MakeImageAt("/a");
  database_->InsertMetaData(first.get());
  EXPECT_THAT(first->GetThumbnailURI(), MatchesRegex("/orxthumb0001[0-9]*0\\.bin"));
  EXPECT_THAT(first->GetScreennailURI(), MatchesRegex("/orxscreen0002[0-9]*0\\.bin"));
  const auto second = MakeImageAt("/b");
  database_->InsertMetaData2(second.get());
  EXPECT_THAT(second->GetThumbnailURI(), MatchesRegex("/orxthumb0003[0-9]{3,}0000000000\\.bin"));
  EXPECT_THAT(second->GetScreennailURI(), MatchesRegex("/orxscreen0004[0-9]{3,}0000000000\\.bin"));
}

TEST_F(MediaTables, NameTheThumbnailOfAFilmAfterItsSortIndex) {
  const auto first = MakeVideo(OrdinaryValues()[0]);
  const auto second = MakeVideo(OrdinaryValues()[0]);
  database_->InsertMetaData(first.get());
  database_->InsertMetaData2(second.get());
  EXPECT_THAT(first->GetThumbnailURI(),
              MatchesRegex("/orxthumbvideo0001[0-9]{3,}0000010007\\.jpg"));
  EXPECT_THAT(second->GetThumbnailURI(),
              MatchesRegex("/orxthumbvideo0002[0-9]{3,}0000010007\\.jpg"));
  EXPECT_EQ(database_.Select("select Thumbnailuri from VideoTable"),
            (Rows{{first->GetThumbnailURI()}, {second->GetThumbnailURI()}}));
}

TEST_F(MediaTables, RefuseAPreviewNameWithAQuoteInItsExtension) {
  const auto image = MakeImageAt("/a/b.j\"pg");
  image->SetFullPath("/a/b");
  image->SetEXT("j\"pg");
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 0);
  EXPECT_EQ(Count("ImageTable"), 0);
}

// ---- both tables ----

TEST_F(MediaTables, DoNothingForANullRecord) {
  database_->InsertMetaData(nullptr);
  database_->InsertMetaData2(nullptr);
  EXPECT_EQ(database_->InsertMediaContainer(nullptr), 0);
  EXPECT_EQ(database_->InsertPhotoMetaData(nullptr), 0);
  EXPECT_EQ(database_->InsertPhotoMetaData2(nullptr), 0);
  EXPECT_EQ(database_->InsertAudioMetaData(nullptr), 0);
  EXPECT_EQ(database_->InsertVideoMetaData(nullptr), 0);
  EXPECT_EQ(database_->UpdateImageMetaData(nullptr, "1"), 0);
  EXPECT_EQ(database_->UpdateAudioMetaData(nullptr, "1"), 0);
  EXPECT_EQ(database_->UpdateVideoMetaData(nullptr, "1"), 0);
  EXPECT_EQ(database_->UpdateDBForNewItem(nullptr, "1"), 0);
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(MediaTables, ShareTheIdOfTheObjectTable) {
  for (const bool second : {false, true})
    for (unsigned type = 1; type <= 3; ++type) {
      const auto record = MakeRecord(type, OrdinaryValues()[0]);
      second ? database_->InsertMetaData2(record.get()) : database_->InsertMetaData(record.get());
    }
  EXPECT_EQ(database_.Select("select id, class from ObjectTable"),
            (Rows{{"1", "1"}, {"2", "2"}, {"3", "3"}, {"4", "1"}, {"5", "2"}, {"6", "3"}}));
  EXPECT_EQ(database_.Select("select id from ImageTable"), (Rows{{"1"}, {"4"}}));
  EXPECT_EQ(database_.Select("select id from AudioTable"), (Rows{{"2"}, {"5"}}));
  EXPECT_EQ(database_.Select("select id from VideoTable"), (Rows{{"3"}, {"6"}}));
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(MediaTables, KeepOnlyTheObjectRowOfAContainer) {
  for (const bool second : {false, true}) {
    FakePlatform::Get().log.clear();
    const auto folder = MakePlain(0, OrdinaryValues()[0]);
    second ? database_->InsertMetaData2(folder.get()) : database_->InsertMetaData(folder.get());
    const std::string id = folder->GetUniqueID();
    EXPECT_EQ(FakePlatform::Get().Messages(),
              (std::vector<std::string>{
                  "The current MEDIA_CONTAINER table is not used!!!",
                  "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : insert into "
                  "ContainerTable values (\"" +
                      id +
                      "\",0 ,1);\n\texec failed [1]\n\terrmsg : [table ContainerTable has 6 "
                      "columns but 3 values were supplied]"}));
  }
  EXPECT_EQ(FakePlatform::Get().log[0].priority, 4);
  EXPECT_EQ(Count("ObjectTable"), 2);
  EXPECT_EQ(Count("ContainerTable"), 0);
}

TEST_F(MediaTables, AnswerZeroForAContainerRow) {
  EXPECT_EQ(database_->InsertMediaContainer(MakePlain(0, OrdinaryValues()[0]).get()), 0);
}

TEST_F(MediaTables, KeepOnlyTheObjectRowOfAnUnknownClass) {
  database_->InsertMetaData(MakePlain(4, OrdinaryValues()[0]).get());
  database_->InsertMetaData2(MakePlain(0xFFFFFFFFu, OrdinaryValues()[0]).get());
  EXPECT_EQ(database_.Select("select class from ObjectTable"), (Rows{{"4"}, {"-1"}}));
  for (const char* table : {"ImageTable", "AudioTable", "VideoTable"}) EXPECT_EQ(Count(table), 0);
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(MediaTables, KeepTheObjectRowWhenTheMediaRowFails) {
  const auto image = MakeImage(OrdinaryValues()[0]);
  image->SetTitle("5\" floppy");
  database_->InsertMetaData(image.get());
  EXPECT_EQ(Count("ObjectTable"), 1);
  EXPECT_EQ(Count("ImageTable"), 0);
}

// ---- failures ----

TEST_F(MediaTables, NameTheTitleOfAPictureThatWasNotWritten) {
  const auto image = MakeImage(OrdinaryValues()[0]);
  image->SetTitle("5\" floppy");
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 0);
  EXPECT_TRUE(
      Logged("[DataBaseMgr::InsertPhotoMetaData] Media file [5\" floppy] insertion failed"));
  EXPECT_EQ(database_->InsertPhotoMetaData2(image.get()), 0);
  EXPECT_TRUE(
      Logged("[DataBaseMgr::InsertPhotoMetaData] Media file [5\" floppy] insertion Failed"));
  EXPECT_EQ(FakePlatform::Get().log.size(), 4u);
  EXPECT_EQ(FakePlatform::Get().log[1].priority, 4);
  EXPECT_EQ(FakePlatform::Get().log[3].priority, 4);
}

TEST_F(MediaTables, NameTheTitleOfAFilmThatWasNotWritten) {
  const auto video = MakeVideo(OrdinaryValues()[0]);
  video->SetTitle("a \"b\" c");
  EXPECT_EQ(database_->InsertVideoMetaData(video.get()), 0);
  EXPECT_TRUE(Logged("[DataBaseMgr::InsertVideoMetaData] Media file [a \"b\" c] insertion failed"));
}

TEST_F(MediaTables, SayNothingMoreOfASoundThatWasNotWritten) {
  const auto audio = MakeAudio(OrdinaryValues()[0]);
  audio->SetTitle("a \"b\" c");
  EXPECT_EQ(database_->InsertAudioMetaData(audio.get()), 0);
  EXPECT_EQ(FakePlatform::Get().log.size(), 1u);
}

TEST_F(MediaTables, NameABlankForAPictureWithoutTitleThatWasNotWritten) {
  const auto image = MakeImageAt("/a\"b");
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 0);
  EXPECT_TRUE(Logged("[DataBaseMgr::InsertPhotoMetaData] Media file [ ] insertion failed"));
}

TEST_F(MediaTables, RefuseASecondRowWithOneId) {
  const auto image = MakeImage(OrdinaryValues()[0]);
  image->SetUniqueID("9");
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 1);
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 0);
  EXPECT_EQ(Count("ImageTable"), 1);
  EXPECT_TRUE(Logged("[DataBaseMgr::InsertPhotoMetaData] Media file [title] insertion failed"));
}

// The log shows the beginning of the statement with its spaces, so the text is short.
TEST_F(MediaTables, LogTheStatementOfAPictureThatWasNotWritten) {
  const auto image = std::make_unique<ImageMetaData>();
  image->SetType(1);
  image->SetTitle("\"");
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 0);
  EXPECT_TRUE(
      LoggedFailureOf("insert into ImageTable values (\" \",\"\"\",1, \" \",0, \" \",\" \",\" \","
                      "0, 0, 0, 0, 0, 0,\" \",\" \",\"/orxthumb0001"));
}

TEST_F(MediaTables, LogTheStatementOfASoundThatWasNotWritten) {
  AudioMetaData audio;
  audio.SetType(2);
  database_.Run("drop table AudioTable");
  EXPECT_EQ(database_->InsertAudioMetaData(&audio), 0);
  EXPECT_TRUE(
      LoggedFailureOf("insert into AudioTable values (\" \",\" \",2, \" \",0, \" \",\" \",\" \","
                      "\" \" ,\" \",\" \",\" \",0,0,0,0, 0,\" \");\n\texec failed [1]\n\t"
                      "errmsg : [no such table: AudioTable]"));
}

TEST_F(MediaTables, LogTheStatementOfAFilmThatWasNotWritten) {
  VideoMetaData video;
  video.SetType(3);
  video.SetSize(-1);
  database_.Run("drop table VideoTable");
  EXPECT_EQ(database_->InsertVideoMetaData(&video), 0);
  EXPECT_TRUE(
      LoggedFailureOf("insert into VideoTable values (\" \",\" \",3, \" \",18446744073709551615, "
                      "\" \",\" \", \" \",\" \", 0, 0, 0.000000, 0, 0.000000, 0, 0,  \" \", \" \","
                      "\" \", \" \", 0, 0, 0,\" \", 0, 0, 0, 0,\"/orxthumbvideo0001"));
}

TEST_F(MediaTables, LogTheStatementsOfUpdatesThatWereNotMade) {
  const auto record = MakePlain(0, {"missing", true, "", 3, 0, 0, 0, false});
  struct {
    int (DataBaseMgr::*update)(const MediaMetaData*, const char*);
    const char* start;
  } const updates[] = {
      {&DataBaseMgr::UpdateImageMetaData,
       "update ImageTable SET Title = ' ', class = '0', date = ' ', size = '3', FullPath = ' ', "
       "MimeType = ' ', DLNAProfile = ' ', Height = '0', Width = '0', ThumbnailOffset = '0', "
       "Thumbnail"},
      {&DataBaseMgr::UpdateAudioMetaData,
       "update AudioTable SET Title = ' ', class = '0', date = ' ', size = '3', FullPath = ' ', "
       "MimeType = ' ', DLNAProfile = ' ', Duration = ' ', AlbumTitle = ' ', AlbumArtist = ' ', "
       "Artist = "},
      {&DataBaseMgr::UpdateVideoMetaData,
       "update VideoTable SET Title = ' ', class = '0', date = ' ', size = '3', FullPath = ' ', "
       "MimeType = ' ', DLNAProfile = ' ', Duration = ' ', Height = '0', Width = '0', "
       "VideoFrameRate = "},
  };
  for (const auto& update : updates) {
    FakePlatform::Get().log.clear();
    EXPECT_EQ((database_.manager()->*update.update)(record.get(), "it's"), 0);
    EXPECT_TRUE(LoggedFailureOf(update.start)) << update.start;
  }
}

// ---- the updates, against the same values written as SQL text ----

void UpdateImageText(ReferenceDatabase* to, const ImageMetaData& r, const char* id) {
  to->Exec(
      "update ImageTable SET Title = '%s', class = '%d', date = '%s', size = '%lld', FullPath = "
      "'%s', MimeType = '%s', DLNAProfile = '%s', Height = '%d', Width = '%d', ThumbnailOffset = "
      "'%d', ThumbnailLength = '%d', ThumbnailHeight = '%d', ThumbnailWidth = '%d', Description = "
      "'%s', uri = '%s', Thumbnailuri = '%s' WHERE id = '%s'",
      OrBlank(r.GetTitle()), static_cast<int>(r.GetType()), OrBlank(r.GetDate()), r.GetSize(),
      OrBlank(r.GetFullPath()), OrBlank(r.GetMimeType()), OrBlank(r.GetDLNAProfile()),
      r.GetHeight(), r.GetWidth(), r.GetThumbnailOffset(), r.GetThumbnailLength(),
      r.GetThumbnailHeight(), r.GetThumbnailWidth(), OrBlank(r.GetDescription()),
      OrBlank(r.GetURI()), OrBlank(r.GetThumbnailURI()), id);
}

void UpdateAudioText(ReferenceDatabase* to, const AudioMetaData& r, const char* id) {
  to->Exec(
      "update AudioTable SET Title = '%s', class = '%d', date = '%s', size = '%lld', FullPath = "
      "'%s', MimeType = '%s', DLNAProfile = '%s', Duration = '%s', AlbumTitle = '%s', AlbumArtist "
      "= '%s', Artist = '%s', Channel = '%d', Bitrate = '%d', Frequency = '%d', AlbumArtOffset = "
      "'%d', AlbumArtLength = '%d', uri = '%s' WHERE id = '%s'",
      OrBlank(r.GetTitle()), static_cast<int>(r.GetType()), OrBlank(r.GetDate()), r.GetSize(),
      OrBlank(r.GetFullPath()), OrBlank(r.GetMimeType()), OrBlank(r.GetDLNAProfile()),
      OrBlank(r.GetDuration()), OrBlank(r.GetAlbumTitle()), OrBlank(r.GetAlbumArtist()),
      OrBlank(r.GetArtist()), r.GetNumChannel(), r.GetBitrate(), r.GetFrequency(),
      r.GetAlbumArtOffset(), r.GetAlbumArtLength(), OrBlank(r.GetURI()), id);
}

void UpdateVideoText(ReferenceDatabase* to, const VideoMetaData& r, const char* id) {
  const AudioMetaData* a = r.GetAudioData();
  if (a == nullptr) {
    to->Exec(
        "update VideoTable SET Title = '%s', class = '%d', date = '%s', size = '%lld', FullPath = "
        "'%s', MimeType = '%s', DLNAProfile = '%s', Duration = '%s', Height = '%d', Width = '%d', "
        "VideoFrameRate = '%f', VideoBitrate = '%ld', VideoLevel = '%f', AlbumArtOffset = '%d', "
        "AlbumArtLength = '%d', uri = '%s' WHERE id = '%s'",
        OrBlank(r.GetTitle()), static_cast<int>(r.GetType()), OrBlank(r.GetDate()), r.GetSize(),
        OrBlank(r.GetFullPath()), OrBlank(r.GetMimeType()), OrBlank(r.GetDLNAProfile()),
        OrBlank(r.GetDuration()), r.GetHeight(), r.GetWidth(), r.GetVideoFrameRate(),
        r.GetVideoBitrate(), r.GetVideoLevel(), r.GetAlbumArtOffset(), r.GetAlbumArtLength(),
        OrBlank(r.GetURI()), id);
    return;
  }
  to->Exec(
      "update VideoTable SET Title = '%s', class = '%d', date = '%s', size = '%lld', FullPath = "
      "'%s', MimeType = '%s', DLNAProfile = '%s', Duration = '%s', Height = '%d', Width = '%d', "
      "VideoFrameRate = '%f', VideoBitrate = '%ld', VideoLevel = '%f', AlbumArtOffset = '%d', "
      "AlbumArtLength = '%d', AudioDuration = '%s', AudioAlbumTitle = '%s', AudioAlbumArtist = "
      "'%s', AudioArtist = '%s', AudioChannel = '%d', AudioBitrate = '%d', AudioFrequency = '%d', "
      "uri = '%s' WHERE id = '%s'",
      OrBlank(r.GetTitle()), static_cast<int>(r.GetType()), OrBlank(r.GetDate()), r.GetSize(),
      OrBlank(r.GetFullPath()), OrBlank(r.GetMimeType()), OrBlank(r.GetDLNAProfile()),
      OrBlank(r.GetDuration()), r.GetHeight(), r.GetWidth(), r.GetVideoFrameRate(),
      r.GetVideoBitrate(), r.GetVideoLevel(), r.GetAlbumArtOffset(), r.GetAlbumArtLength(),
      OrBlank(a->GetDuration()), OrBlank(a->GetAlbumTitle()), OrBlank(a->GetAlbumArtist()),
      OrBlank(a->GetArtist()), a->GetNumChannel(), a->GetBitrate(), a->GetFrequency(),
      OrBlank(r.GetURI()), id);
}

constexpr char kTwoImages[] =
    "insert into ImageTable (id, class, date, size, FullPath, Share, SortIndex) "
    "values ('7', 1, 'd', 1, 'p', 0, '0000001'), ('8', 1, 'd', 1, 'p', 0, '0000002')";
constexpr char kTwoAudios[] =
    "insert into AudioTable (id, class, date, size, FullPath) "
    "values ('7', 2, 'd', 1, 'p'), ('8', 2, 'd', 1, 'p')";
constexpr char kTwoVideos[] =
    "insert into VideoTable (id, class, date, size, FullPath, Share, SortIndex, AudioDuration) "
    "values ('7', 3, 'd', 1, 'p', 0, '0000001', 'a'), ('8', 3, 'd', 1, 'p', 0, '0000002', 'a')";

TEST_F(MediaTables, UpdateAPictureAsItsSqlTextDoes) {
  ReferenceDatabase reference(database_);
  database_.Run(kTwoImages);
  reference.Exec(kTwoImages);
  for (const RecordValues& values : OrdinaryValues()) {
    SCOPED_TRACE(values.name);
    const auto image = MakeImage(values);
    EXPECT_EQ(database_->UpdateImageMetaData(image.get(), "7"), 1);
    UpdateImageText(&reference, *image, "7");
    EXPECT_EQ(Table("ImageTable"), reference.Table("ImageTable"));
  }
}

TEST_F(MediaTables, UpdateASoundAsItsSqlTextDoes) {
  ReferenceDatabase reference(database_);
  database_.Run(kTwoAudios);
  reference.Exec(kTwoAudios);
  for (const RecordValues& values : OrdinaryValues()) {
    SCOPED_TRACE(values.name);
    const auto audio = MakeAudio(values);
    EXPECT_EQ(database_->UpdateAudioMetaData(audio.get(), "7"), 1);
    UpdateAudioText(&reference, *audio, "7");
    EXPECT_EQ(Table("AudioTable"), reference.Table("AudioTable"));
  }
}

TEST_F(MediaTables, UpdateAFilmAsItsSqlTextDoes) {
  ReferenceDatabase reference(database_);
  database_.Run(kTwoVideos);
  reference.Exec(kTwoVideos);
  for (const RecordValues& values : OrdinaryValues()) {
    SCOPED_TRACE(values.name);
    const auto video = MakeVideo(values);
    EXPECT_EQ(database_->UpdateVideoMetaData(video.get(), "7"), 1);
    UpdateVideoText(&reference, *video, "7");
    EXPECT_EQ(Table("VideoTable"), reference.Table("VideoTable"));
  }
}

TEST_F(MediaTables, LeaveShareAndSortIndexAloneInAnUpdate) {
  database_.Run(kTwoImages);
  database_.Run(kTwoVideos);
  database_->UpdateImageMetaData(MakeImage(OrdinaryValues()[0]).get(), "7");
  database_->UpdateVideoMetaData(MakeVideo(OrdinaryValues()[0]).get(), "7");
  for (const char* table : {"ImageTable", "VideoTable"})
    EXPECT_EQ(database_.Select(std::string("select Title, Share, SortIndex from ") + table +
                               " where id = '7'"),
              (Rows{{"title", "0", "0000001"}}));
}

TEST_F(MediaTables, GiveAnUpdatedPictureANewThumbnailNameAlone) {
  database_.Run(kTwoImages);
  const auto image = MakeImage(OrdinaryValues()[0]);
  image->SetScreennailURI("/old");
  database_->UpdateImageMetaData(image.get(), "7");
  EXPECT_THAT(image->GetThumbnailURI(), MatchesRegex("/orxthumb0001[0-9]*0\\.JPG"));
  EXPECT_STREQ(image->GetScreennailURI(), "/old");
  EXPECT_EQ(database_.Select("select Thumbnailuri, Screennailuri from ImageTable where id = '7'"),
            (Rows{{image->GetThumbnailURI(), " "}}));
}

TEST_F(MediaTables, KeepTheThumbnailNameOfAnUpdatedFilm) {
  database_.Run(kTwoVideos);
  const auto video = MakeVideo(OrdinaryValues()[0]);
  database_->UpdateVideoMetaData(video.get(), "7");
  EXPECT_EQ(video->GetThumbnailURI(), nullptr);
}

TEST_F(MediaTables, KeepTheSoundColumnsOfAFilmUpdatedWithoutSound) {
  database_.Run(kTwoVideos);
  RecordValues values = OrdinaryValues()[0];
  values.soundTrack = false;
  EXPECT_EQ(database_->UpdateVideoMetaData(MakeVideo(values).get(), "7"), 1);
  EXPECT_EQ(database_.Cell("select AudioDuration from VideoTable where id = '7'"), "a");
}

TEST_F(MediaTables, TakeDoubleQuotesInAnUpdateAsText) {
  database_.Run(kTwoImages);
  const auto image = MakeImage(OrdinaryValues()[0]);
  image->SetTitle("5\" \"floppy\"");
  EXPECT_EQ(database_->UpdateImageMetaData(image.get(), "7"), 1);
  EXPECT_EQ(database_.Cell("select Title from ImageTable where id = '7'"), "5\" \"floppy\"");
}

TEST_F(MediaTables, AnswerOneForAnUpdateOfARowThatIsNotThere) {
  EXPECT_EQ(database_->UpdateImageMetaData(MakeImageAt("/a").get(), "99"), 1);
  EXPECT_EQ(Count("ImageTable"), 0);
}

TEST_F(MediaTables, AnswerZeroForAnUpdateWithoutId) {
  EXPECT_EQ(database_->UpdateImageMetaData(MakeImageAt("/a").get(), nullptr), 0);
  EXPECT_EQ(database_->UpdateAudioMetaData(MakeAudio(OrdinaryValues()[0]).get(), nullptr), 0);
  EXPECT_EQ(database_->UpdateVideoMetaData(MakeVideo(OrdinaryValues()[0]).get(), nullptr), 0);
}

// ---- items that a client created ----

TEST_F(MediaTables, UpdateTheTableOfTheStoredClass) {
  const RecordValues values = OrdinaryValues()[0];
  const RecordValues missing = {"missing", true, "", 0, 0, 0, 0, true};
  const char* const tables[] = {"", "ImageTable", "AudioTable", "VideoTable"};
  for (unsigned type = 1; type <= 3; ++type) {
    const auto record = MakeRecord(type, missing);
    record->SetFullPath(tables[type]);
    database_->InsertMetaData(record.get());
    EXPECT_EQ(database_->UpdateDBForNewItem(MakeRecord(type, values).get(), record->GetUniqueID()),
              1);
    EXPECT_EQ(database_.Cell(std::string("select Title from ") + tables[type]), "title");
    EXPECT_TRUE(DataBaseMgr::vdata.empty());
  }
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(MediaTables, AnswerOneWhateverTheUpdateOfAnItemGave) {
  const auto image = MakeImage(OrdinaryValues()[0]);
  database_->InsertMetaData(image.get());
  image->SetTitle("it's");
  EXPECT_EQ(database_->UpdateDBForNewItem(image.get(), "1"), 1);
  EXPECT_EQ(database_.Cell("select Title from ImageTable"), "title");
  EXPECT_EQ(FakePlatform::Get().log.size(), 1u);
}

TEST_F(MediaTables, RefuseAnItemWithoutRow) {
  for (const char* id : {"99", "", "abc", "id", "class"}) {
    FakePlatform::Get().log.clear();
    EXPECT_EQ(database_->UpdateDBForNewItem(MakeImageAt("/a").get(), id), 0);
    EXPECT_EQ(
        FakePlatform::Get().Messages(),
        (std::vector<std::string>{"[DataBaseMgr::UpdateDBForNewItem] Media class not found"}));
    EXPECT_EQ(FakePlatform::Get().log[0].priority, 4);
  }
  EXPECT_EQ(database_->UpdateDBForNewItem(MakeImageAt("/a").get(), nullptr), 0);
}

TEST_F(MediaTables, RefuseAnItemOfAnotherClass) {
  const auto image = MakeImage(OrdinaryValues()[0]);
  database_->InsertMetaData(image.get());
  const Rows before = Table("ImageTable");
  EXPECT_EQ(database_->UpdateDBForNewItem(MakeVideo(OrdinaryValues()[0]).get(), "1"), 0);
  EXPECT_EQ(FakePlatform::Get().Messages(),
            (std::vector<std::string>{
                "[DataBaseMgr::UpdateDBForNewItem] media type received from Create Object and "
                "media type identified by the ORX file parser are not matching"}));
  EXPECT_EQ(Table("ImageTable"), before);
  EXPECT_EQ(Count("VideoTable"), 0);
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
}

TEST_F(MediaTables, RefuseAnItemOfAClassWithoutTable) {
  for (const unsigned type : {0u, 4u}) {
    const auto record = MakePlain(type, OrdinaryValues()[0]);
    database_->InsertMediaInObjTbl(record.get());
    FakePlatform::Get().log.clear();
    EXPECT_EQ(database_->UpdateDBForNewItem(record.get(), record->GetUniqueID()), 0);
    EXPECT_TRUE(Logged("[DataBaseMgr::UpdateDBForNewItem] Media class not found"));
  }
}

TEST_F(MediaTables, TakeAnIdThatIsACellOfTheResult) {
  database_->InsertMetaData(MakeImageAt("/a").get());
  database_->ExecSqlStatment("select id from ObjectTable");
  EXPECT_EQ(database_->UpdateDBForNewItem(MakeImage(OrdinaryValues()[0]).get(),
                                          DataBaseMgr::vdata[0].c_str()),
            1);
  EXPECT_EQ(database_.Cell("select Title from ImageTable"), "title");
}

// ---- hostile values ----

const char* const kDoubleQuoted[] = {
    "\"",         "a\"b",      "a\"\"b", "a\" or \"1\"=\"1", "x\"); drop table ImageTable; --",
    "\",\"\",\"", "\"||id||\""};
const char* const kSingleQuoted[] = {
    "'", "a'b", "a''b", "a' or '1'='1", "x'; drop table ImageTable; --", "', Title='", "'||id||'"};

TEST_F(MediaTables, WriteNothingForATextWithADoubleQuote) {
  const RecordValues values = OrdinaryValues()[0];
  for (const char* text : kDoubleQuoted) {
    SCOPED_TRACE(text);
    RecordValues hostile = values;
    hostile.text = text;
    EXPECT_EQ(database_->InsertPhotoMetaData(MakeImage(hostile).get()), 0);
    EXPECT_EQ(database_->InsertPhotoMetaData2(MakeImage(hostile).get()), 0);
    EXPECT_EQ(database_->InsertAudioMetaData(MakeAudio(hostile).get()), 0);
    EXPECT_EQ(database_->InsertVideoMetaData(MakeVideo(hostile).get()), 0);
    const auto image = MakeImage(values);
    image->SetUniqueID(text);
    EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 0);
    EXPECT_EQ(database_->InsertMediaContainer(image.get()), 0);
  }
  for (const char* table : {"ImageTable", "AudioTable", "VideoTable", "ContainerTable"})
    EXPECT_EQ(Count(table), 0) << table;
}

TEST_F(MediaTables, RefuseADoubleQuoteInEachTextOfAFilmAlone) {
  void (VideoMetaData::*const setters[])(const char*) = {&VideoMetaData::SetDuration};
  for (const auto setter : setters) {
    const auto video = MakeVideo(OrdinaryValues()[0]);
    (video.get()->*setter)("\"");
    EXPECT_EQ(database_->InsertVideoMetaData(video.get()), 0);
  }
  void (AudioMetaData::*const soundSetters[])(const char*) = {
      &AudioMetaData::SetDuration, &AudioMetaData::SetAlbumTitle, &AudioMetaData::SetAlbumArtist,
      &AudioMetaData::SetArtist};
  for (const auto setter : soundSetters) {
    const auto video = MakeVideo(OrdinaryValues()[0]);
    (video->GetAudioData()->*setter)("\"");
    EXPECT_EQ(database_->InsertVideoMetaData(video.get()), 0);
  }
  void (MediaMetaData::*const commonSetters[])(const char*) = {
      &MediaMetaData::SetUniqueID,    &MediaMetaData::SetTitle,     &MediaMetaData::SetDate,
      &MediaMetaData::SetFullPath,    &MediaMetaData::SetMimeType,  &MediaMetaData::SetURI,
      &MediaMetaData::SetDLNAProfile, &MediaMetaData::SetSortIndex,
  };
  for (const auto setter : commonSetters) {
    const auto video = MakeVideo(OrdinaryValues()[0]);
    (video.get()->*setter)("\"");
    EXPECT_EQ(database_->InsertVideoMetaData(video.get()), 0);
  }
  EXPECT_EQ(Count("VideoTable"), 0);
}

TEST_F(MediaTables, ChangeNothingForATextWithASingleQuote) {
  database_.Run(kTwoImages);
  database_.Run(kTwoAudios);
  database_.Run(kTwoVideos);
  const Rows images = Table("ImageTable"), audios = Table("AudioTable"),
             videos = Table("VideoTable");
  const RecordValues values = OrdinaryValues()[0];
  for (const char* text : kSingleQuoted) {
    SCOPED_TRACE(text);
    RecordValues hostile = values;
    hostile.text = text;
    EXPECT_EQ(database_->UpdateImageMetaData(MakeImage(hostile).get(), "7"), 0);
    EXPECT_EQ(database_->UpdateAudioMetaData(MakeAudio(hostile).get(), "7"), 0);
    EXPECT_EQ(database_->UpdateVideoMetaData(MakeVideo(hostile).get(), "7"), 0);
    EXPECT_EQ(database_->UpdateImageMetaData(MakeImage(values).get(), text), 0);
    EXPECT_EQ(database_->UpdateAudioMetaData(MakeAudio(values).get(), text), 0);
    EXPECT_EQ(database_->UpdateVideoMetaData(MakeVideo(values).get(), text), 0);
  }
  EXPECT_EQ(Table("ImageTable"), images);
  EXPECT_EQ(Table("AudioTable"), audios);
  EXPECT_EQ(Table("VideoTable"), videos);
}

TEST_F(MediaTables, ChangeNoRowForAnIdThatLooksLikeSql) {
  const auto image = MakeImage(OrdinaryValues()[0]);
  database_->InsertMetaData(image.get());
  const Rows before = Table("ImageTable");
  RecordValues other = OrdinaryValues()[0];
  other.text = " other";
  for (const char* id : {"1 or 1=1", "id", "\" or \"1\"=\"1", "1\" or \"a\"=\"a", "%", "_", "1;"}) {
    EXPECT_EQ(database_->UpdateDBForNewItem(MakeImage(other).get(), id), 0) << id;
    database_->UpdateImageMetaData(MakeImage(other).get(), id);
  }
  EXPECT_EQ(Table("ImageTable"), before);
}

TEST_F(MediaTables, AnswerZeroWithoutADatabase) {
  DataBaseMgr::DestroyInstance();
  const auto image = MakeImage(OrdinaryValues()[0]);
  database_->InsertMetaData(image.get());
  EXPECT_EQ(database_->InsertPhotoMetaData(image.get()), 0);
  EXPECT_EQ(database_->UpdateImageMetaData(image.get(), "1"), 0);
  EXPECT_EQ(database_->UpdateDBForNewItem(image.get(), "1"), 0);
  EXPECT_EQ(image->GetUniqueID(), nullptr);
}

}  // namespace
