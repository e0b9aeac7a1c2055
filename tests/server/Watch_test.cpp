#include "Watch.h"

#include <gmock/gmock.h>

#include "FileLook.h"
#include "support/TempDir.h"

namespace orx_test {
namespace {

using namespace orxserve;

TEST(Watch, NoticesAFileThatWasWritten) {
  const TempDir dir;
  Watch watch(dir.path());
  EXPECT_TRUE(watch.complete());
  EXPECT_FALSE(watch.Take());
  dir.Write("a.jpg", "x");
  EXPECT_TRUE(watch.Take());
  EXPECT_FALSE(watch.Take());
}
TEST(Watch, FollowsFoldersThatCome) {
  const TempDir dir;
  Watch watch(dir.path());
  dir.MakeDir("new");
  EXPECT_TRUE(watch.Take());
  dir.Write("new/a.jpg", "x");
  EXPECT_TRUE(watch.Take());
}
TEST(Watch, PassesOverHiddenNames) {
  const TempDir dir;
  Watch watch(dir.path());
  dir.Write(".part", "x");
  EXPECT_FALSE(watch.Take());
}
TEST(Watch, PassesOverWhatTheServerWrites) {
  const TempDir dir;
  Watch watch(dir.path(), {"media.db"});
  dir.Write("media.db", "x");
  dir.Write("media.db-wal", "x");
  EXPECT_FALSE(watch.Take());
}
TEST(FileLook, FindsSubtitlesBesideAFilm) {
  const TempDir dir;
  const std::string film = dir.Write("a.b.mp4", "x");
  EXPECT_EQ(FileLook().Captions(film), "");
  dir.Write("a.b.srt", "x");
  EXPECT_EQ(FileLook().Captions(film), dir.Path("a.b.srt"));
}
TEST(FileLook, LooksWhetherPiecesBeginAsAJpegDoes) {
  const TempDir dir;
  const std::string cover =
      std::string("\xff\xd8\xff\xe0\x00\x04xx\xff\xc0\x00\x0b\x08\x00\x10\x00\x20\x03", 18);
  const std::string file = dir.Write("a.m4a", "0123" + cover + "tail");
  const PieceFacts facts =
      FileLook().Pieces(file, {{{0, 10, 1, 1}, {4, 1000, 1, 1}, {4, 18, 0, 0}}});
  EXPECT_EQ(facts.sound, 4);
  EXPECT_EQ(facts.cover.width, 32);
  EXPECT_EQ(facts.cover.height, 16);
}
TEST(JpegSize, IsNotFoundInWhatIsCutShort) {
  const std::string whole("\xff\xd8\xff\xc0\x00\x0b\x08\x00\x10\x00\x20\x03", 12);
  EXPECT_EQ(JpegSize(whole).width, 32);
  for (size_t size = 0; size < 11; ++size) EXPECT_EQ(JpegSize(whole.substr(0, size)).width, 0);
}

}  // namespace
}  // namespace orx_test
