#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <string>

#include "MediaReaders/mp4_reader.h"
#include "support/Mp4Builder.h"
#include "support/Mp4Reading.h"

namespace {

using namespace orx_test;

const std::string kSound = Hdlr("soun");

// ---- isBoxToLarge ----

TEST(IsBoxToLarge, AnswersThreeWithoutFileBoxOrRecord) {
  const OpenedFile file("abc");
  mp4_box_t box = {1, {}};
  mp4_metadata_t meta = {};
  EXPECT_EQ(isBoxToLarge(nullptr, &box, &meta), 3);
  EXPECT_EQ(isBoxToLarge(file.get(), &box, nullptr), 3);
  EXPECT_EQ(isBoxToLarge(file.get(), nullptr, &meta), 3);
}

TEST(IsBoxToLarge, LeavesAnOrdinaryBoxAlone) {
  const OpenedFile file(Zeros(100));
  for (const unsigned size : {2u, 8u, 0xFFFFFFFFu}) {
    mp4_box_t box = {size, {'m', 'o', 'o', 'v'}};
    mp4_metadata_t meta = {};
    EXPECT_EQ(isBoxToLarge(file.get(), &box, &meta), 0);
    EXPECT_EQ(meta.BytesRead, 0);
    EXPECT_EQ(file.get()->position, 0);
  }
}

TEST(IsBoxToLarge, PassesOverABoxOfA64BitSize) {
  const OpenedFile file(LargeBox("mdat", Zeros(84)) + "next");
  upnp_file_seek(file.get(), 8, SEEK_SET);
  mp4_box_t box = {1, {'m', 'd', 'a', 't'}};
  mp4_metadata_t meta = {};
  meta.BytesRead = 8;
  EXPECT_EQ(isBoxToLarge(file.get(), &box, &meta), 1);
  EXPECT_EQ(file.get()->position, 100);
  EXPECT_EQ(meta.BytesRead, 8 + 84);  // what was passed over is counted, the size is not
}

TEST(IsBoxToLarge, GoesToTheEndOfTheFileForASizeOfZero) {
  const OpenedFile file(Zeros(100));
  upnp_file_seek(file.get(), 8, SEEK_SET);
  mp4_box_t box = {0, {'m', 'd', 'a', 't'}};
  mp4_metadata_t meta = {};
  EXPECT_EQ(isBoxToLarge(file.get(), &box, &meta), 1);
  EXPECT_EQ(file.get()->position, 100);
  EXPECT_EQ(meta.BytesRead, 100);
}

TEST(IsBoxToLarge, StaysBehindAnImpossible64BitSize) {
  for (const uint64_t size : {uint64_t{0}, uint64_t{15}, UINT64_MAX, uint64_t{INT64_MAX} + 1}) {
    const OpenedFile file(BoxOfSize(1, "mdat", U64(size)) + Zeros(50));
    upnp_file_seek(file.get(), 8, SEEK_SET);
    mp4_box_t box = {1, {'m', 'd', 'a', 't'}};
    mp4_metadata_t meta = {};
    EXPECT_EQ(isBoxToLarge(file.get(), &box, &meta), 1);
    EXPECT_EQ(file.get()->position, 16);
    EXPECT_EQ(meta.BytesRead, 0);
  }
}

// ---- the walk ----

TEST(Mp4Walk, CountsEveryByteOnce) {
  const std::string film = MakeMp4();
  const Mp4Reading reading(film);
  EXPECT_EQ(reading->BytesRead, static_cast<long long>(film.size()));
}

TEST(Mp4Walk, PassesOverABoxOfA64BitSizeAndGoesOn) {
  const std::string film = LargeBox("mdat", Zeros(100)) + kSound;
  const Mp4Reading reading(film);
  EXPECT_EQ(reading.result(), 1);
  EXPECT_EQ(reading->BytesRead, static_cast<long long>(film.size()));
}

TEST(Mp4Walk, DoesNotEnterABoxOfA64BitSize) {
  EXPECT_EQ(Mp4Reading(LargeBox("moov", kSound)).result(), 0);
  EXPECT_EQ(Mp4Reading(LargeBox("moov", kSound) + kSound).result(), 1);
}

TEST(Mp4Walk, TakesAnEmptyBoxOfA64BitSize) {
  EXPECT_EQ(Mp4Reading(LargeBox("mdat", "") + kSound).result(), 1);
}

TEST(Mp4Walk, EndsAtABoxThatRunsToTheEndOfTheFile) {
  const std::string film = kSound + BoxOfSize(0, "mdat", Hdlr("vide"));
  const Mp4Reading reading(film);
  EXPECT_EQ(reading.result(), 1);
  EXPECT_EQ(reading->HasVideo, 0);
  EXPECT_EQ(reading->BytesRead, static_cast<long long>(film.size()));
}

TEST(Mp4Walk, EndsAltogetherAtSuchABoxInsideAnother) {
  const std::string film = Box("moov", BoxOfSize(0, "free", Zeros(8))) + kSound;
  const Mp4Reading reading(film);
  EXPECT_EQ(reading.result(), 0);
  EXPECT_EQ(reading->BytesRead, static_cast<long long>(film.size()));
}

TEST(Mp4Walk, EndsALevelAtABoxSmallerThanItsHeader) {
  for (uint64_t size = 2; size < 8; ++size) {
    SCOPED_TRACE(size);
    EXPECT_EQ(Mp4Reading(BoxOfSize(size, "free", "") + kSound).result(), 0);
    const Mp4Reading inner(Box("moov", BoxOfSize(size, "free", "") + Hdlr("vide")) + kSound);
    EXPECT_EQ(inner->HasVideo, 0);
    EXPECT_EQ(inner->HasAudio, 1);
  }
}

TEST(Mp4Walk, EndsALevelAtA64BitSizeSmallerThanItsHeader) {
  for (uint64_t size = 0; size < 16; ++size) {
    SCOPED_TRACE(size);
    const std::string box = BoxOfSize(1, "free", U64(size));
    EXPECT_EQ(Mp4Reading(box + kSound).result(), 0);
    const Mp4Reading inner(Box("moov", box + Hdlr("vide")) + kSound);
    EXPECT_EQ(inner->HasVideo, 0);
    EXPECT_EQ(inner->HasAudio, 1);
  }
}

TEST(Mp4Walk, EndsALevelAtABoxThatReachesBehindTheFile) {
  EXPECT_EQ(Mp4Reading(BoxOfSize(0xFFFFFFFF, "moov", kSound)).result(), 0);
  EXPECT_EQ(Mp4Reading(BoxOfSize(8 + kSound.size() + 1, "moov", kSound)).result(), 0);
  const Mp4Reading inner(Box("moov", Hdlr("vide") + BoxOfSize(0xFFFFFFFF, "trak", Zeros(40))) +
                         kSound);
  EXPECT_EQ(inner->HasVideo, 1);
  EXPECT_EQ(inner->HasAudio, 1);
}

// A container whose size is `tooSmall` bytes too small.
std::string Overrun(const std::string& type, const std::string& payload, size_t tooSmall) {
  return BoxOfSize(8 + payload.size() - tooSmall, type, payload);
}

TEST(Mp4Walk, ReadsABoxThatReachesBehindTheBoxAroundItWholeAndGoesOnBehindIt) {
  const std::string film = Overrun("moov", Box("trak", Hdlr("vide")), 20) + kSound;
  const Mp4Reading reading(film);
  EXPECT_EQ(reading->HasVideo, 1);
  EXPECT_EQ(reading->HasAudio, 1);
  EXPECT_EQ(reading->BytesRead, static_cast<long long>(film.size()));
}

TEST(Mp4Walk, ReadsABoxThatReachesBehindSeveralAroundIt) {
  const std::string track = Overrun("trak", Overrun("mdia", Hdlr("vide"), 10), 10);
  const std::string film = Overrun("moov", track, 10) + kSound;
  const Mp4Reading reading(film);
  EXPECT_EQ(reading->HasVideo, 1);
  EXPECT_EQ(reading->HasAudio, 1);
  EXPECT_EQ(reading->BytesRead, static_cast<long long>(film.size()));
}

TEST(Mp4Walk, NeverGoesBackIntoABoxThatReachedBehindTheOneAroundIt) {
  const std::string inside = Zeros(4) + kSound;
  const std::string film = Overrun("moov", Box("free", inside), kSound.size()) + Hdlr("vide");
  const Mp4Reading reading(film);
  EXPECT_EQ(reading->HasAudio, 0);
  EXPECT_EQ(reading->HasVideo, 1);
  EXPECT_EQ(reading->BytesRead, static_cast<long long>(film.size()));
}

TEST(Mp4Walk, NeverGoesBackIntoSuchABoxOfA64BitSize) {
  const std::string film = Overrun("moov", LargeBox("free", kSound), kSound.size()) + Hdlr("vide");
  const Mp4Reading reading(film);
  EXPECT_EQ(reading->HasAudio, 0);
  EXPECT_EQ(reading->HasVideo, 1);
  EXPECT_EQ(reading->BytesRead, static_cast<long long>(film.size()));
}

TEST(Mp4Walk, TakesNothingBehindSuchABoxForAChildOfThatAroundIt) {
  const std::string items = Overrun("ilst", Box("free", Zeros(40)), 30);
  const std::string film = Box("udta", items + TextItem("\251nam", "title"));
  EXPECT_EQ(Mp4Reading(film)->Title, nullptr);
}

TEST(Mp4Walk, GoesOnInTheNextOuterBoxThatIsLongEnough) {
  const std::string items = Box("ilst", Overrun("meta", Zeros(4) + Box("free", Zeros(40)), 30) +
                                            TextItem("\251nam", "title"));
  EXPECT_STREQ(Mp4Reading(items)->Title, "title");
}

TEST(Mp4Walk, GoesOnBehindTheBoxAroundAHeaderOfABad64BitSize) {
  // The number is the header of the next box, which is read for itself afterwards.
  const std::string film = Overrun("moov", BoxOfSize(1, "free", ""), 0) + kSound;
  EXPECT_EQ(Mp4Reading(film).result(), 1);
}

TEST(Mp4Walk, CountsSixteenBytesOfABoxOfA64BitSizeWhateverTheSize) {
  for (const uint64_t size : {uint64_t{0}, uint64_t{15}, uint64_t{1000}, uint64_t{1} << 40,
                              uint64_t{INT64_MAX}, uint64_t{INT64_MAX} + 1, UINT64_MAX}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(Mp4Reading(BoxOfSize(1, "free", U64(size)) + Zeros(50))->BytesRead, 16);
    const std::string film = Box("moov", BoxOfSize(1, "free", U64(size)) + Zeros(3)) + kSound;
    EXPECT_EQ(Mp4Reading(film)->BytesRead, static_cast<long long>(film.size()));
  }
}

TEST(Mp4Walk, PlacesACoverBehindABad64BitSizeWhereItStands) {
  const std::string film = Box("udta", BoxOfSize(1, "free", U64(3))) +
                           Ilst(Box("covr", DataBox(std::string(100, 'p'), 13)));
  EXPECT_EQ(Mp4Reading(film)->CoverArtOffset, static_cast<int>(film.size()) - 16);
}

TEST(Mp4Walk, EndsALevelAtA64BitSizeThatReachesBehindIt) {
  for (const uint64_t size : {uint64_t{1000}, uint64_t{1} << 40, uint64_t{INT64_MAX}, UINT64_MAX}) {
    SCOPED_TRACE(size);
    const std::string film = Box("moov", BoxOfSize(1, "free", U64(size)) + Hdlr("vide")) + kSound;
    const Mp4Reading reading(film);
    EXPECT_EQ(reading->HasVideo, 0);
    EXPECT_EQ(reading->HasAudio, 1);
  }
}

TEST(Mp4Walk, CountsOnBehindABoxThatWasLeftEarly) {
  const std::string film =
      Box("moov", BoxOfSize(1, "free", U64(1 << 20)) + Zeros(20)) + Box("free", Zeros(5)) + kSound;
  EXPECT_EQ(Mp4Reading(film)->BytesRead, static_cast<long long>(film.size()));
}

TEST(Mp4Walk, TakesUpToSevenBytesBehindTheLastBoxForPadding) {
  for (size_t size = 0; size < 8; ++size) {
    SCOPED_TRACE(size);
    const Mp4Reading reading(Box("udta", Hdlr("vide") + Zeros(size)) + kSound);
    EXPECT_EQ(reading->HasVideo, 1);
    EXPECT_EQ(reading->HasAudio, 1);
  }
}

std::string Nested(int depth, const std::string& innermost) {
  std::string boxes = innermost;
  for (int i = 0; i < depth; ++i) boxes = Box("moov", boxes);
  return boxes;
}

TEST(Mp4Walk, EntersSixtyFourLevelsAndPassesOverWhatIsDeeper) {
  EXPECT_EQ(Mp4Reading(Nested(64, kSound)).result(), 1);
  EXPECT_EQ(Mp4Reading(Nested(65, kSound)).result(), 0);
  EXPECT_EQ(Mp4Reading(Nested(65, kSound) + Hdlr("vide")).result(), 1);
  EXPECT_EQ(Mp4Reading(Nested(20000, kSound)).result(), 0);
}

TEST(Mp4Walk, StopsAtTheGivenLimit) {
  const std::string first = Hdlr("vide");
  const OpenedFile file(first + kSound);
  mp4_metadata_t meta = {};
  EXPECT_EQ(m4a_atom_get_metadata(file.get(), static_cast<long long>(first.size()), &meta), 1);
  EXPECT_EQ(meta.HasVideo, 1);
  EXPECT_EQ(meta.HasAudio, 0);
  EXPECT_EQ(meta.BytesRead, static_cast<long long>(first.size()));
  m4a_free_metadata(&meta);
}

TEST(Mp4Walk, ReadsTheBoxThatBeginsBeforeTheGivenLimitWhole) {
  const OpenedFile file(Hdlr("vide") + kSound);
  mp4_metadata_t meta = {};
  EXPECT_EQ(m4a_atom_get_metadata(file.get(), 12, &meta), 1);
  EXPECT_EQ(meta.HasVideo, 1);
  EXPECT_EQ(meta.HasAudio, 0);
  m4a_free_metadata(&meta);
}

TEST(Mp4Walk, StopsAtTheEndOfTheFileWhateverTheLimit) {
  const OpenedFile file(kSound);
  mp4_metadata_t meta = {};
  EXPECT_EQ(m4a_atom_get_metadata(file.get(), LLONG_MAX, &meta), 1);
  m4a_free_metadata(&meta);
}

TEST(Mp4Walk, ReadsNothingForANegativeLimit) {
  for (const long long limit : {-1LL, -8LL, LLONG_MIN + 8, LLONG_MIN + 7, LLONG_MIN}) {
    SCOPED_TRACE(limit);
    const OpenedFile file(kSound);
    mp4_metadata_t meta = {};
    EXPECT_EQ(m4a_atom_get_metadata(file.get(), limit, &meta), 0);
    EXPECT_EQ(file.get()->position, 0);
    EXPECT_EQ(meta.BytesRead, 0);
    meta.HasVideo = 1;  // found before
    EXPECT_EQ(m4a_atom_get_metadata(file.get(), limit, &meta), 1);
  }
}

TEST(Mp4Walk, AnswersZeroWithoutFileOrRecord) {
  const OpenedFile file(kSound);
  mp4_metadata_t meta = {};
  EXPECT_EQ(m4a_atom_get_metadata(nullptr, 100, &meta), 0);
  EXPECT_EQ(m4a_atom_get_metadata(file.get(), 100, nullptr), 0);
}

// ---- damaged files ----

Mp4File RichFilm() {
  Mp4File film;
  film.frames = 4;
  film.title = "title";
  film.artist = "artist";
  film.album = "album";
  film.genre = "genre";
  film.year = "2026";
  film.track = 3;
  film.cover = "picture";
  return film;
}

// A record that is in order, whatever the file was.
void ExpectSane(int result, const mp4_metadata_t& meta) {
  EXPECT_EQ(result, meta.HasVideo != 0 || meta.HasAudio != 0 ? 1 : 0);
  EXPECT_EQ(meta.HasTracks, result);
  EXPECT_NE(meta.Date, nullptr);
  EXPECT_GE(meta.VideoFrameCount, 0);
  EXPECT_GE(meta.VideoByteTotal, 0);
  EXPECT_GE(meta.VideoBitrate, 0);
  EXPECT_GE(meta.AudioBitrate, 0);
  EXPECT_GE(meta.FrameRate, 0.0);
  EXPECT_TRUE(meta.VideoId == 0 || (meta.VideoId >= 11 && meta.VideoId <= 19));
}

TEST(Mp4Walk, ReadsEveryTruncationUpToTheLastWholeBox) {
  const std::string whole = MakeMp4(RichFilm());
  const size_t movieEnd = whole.size() - 24;  // "mdat" of 24 bytes is the last box
  for (size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    const Mp4Reading film(whole.substr(0, size));
    ExpectSane(film.result(), film.meta());
    EXPECT_EQ(film->FileSize, static_cast<long long>(size));
    EXPECT_EQ(film.result(), size >= movieEnd ? 1 : 0);
  }
}

TEST(Mp4Walk, ReadsEveryTruncationInsideTheMovieUpToThere) {
  // The outer box claims what is there, so that the cut falls into the inner ones.
  const std::string whole = MakeMp4(RichFilm());
  const std::string movie = whole.substr(whole.find("moov") + 4);
  const size_t tracks = movie.find("trak") - 4;  // the movie header is whole from here on
  for (size_t size = 0; size < movie.size(); ++size) {
    SCOPED_TRACE(size);
    const Mp4Reading film(Box("moov", movie.substr(0, size)));
    ExpectSane(film.result(), film.meta());
    EXPECT_EQ(film->DurationText != nullptr, size >= tracks);
  }
}

TEST(Mp4Walk, StaysSaneWhenAnyByteIsChanged) {
  const std::string whole = MakeMp4(RichFilm());
  for (size_t at = 0; at < whole.size(); ++at) {
    SCOPED_TRACE(at);
    for (const char value : {'\x00', '\x01', '\x7F', '\xFF'}) {
      std::string damaged = whole;
      damaged[at] = value;
      const Mp4Reading film(damaged);
      ExpectSane(film.result(), film.meta());
    }
  }
}

TEST(Mp4Walk, StaysSaneWhenManyBytesAreChanged) {
  const std::string whole = MakeMp4(RichFilm());
  std::mt19937 random(20261121);
  for (int round = 0; round < 4000; ++round) {
    SCOPED_TRACE(round);
    std::string damaged = whole;
    for (int i = 0; i < 12; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
    const Mp4Reading film(damaged);
    ExpectSane(film.result(), film.meta());
  }
}

}  // namespace
