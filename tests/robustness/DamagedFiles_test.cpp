// Media of every kind, cut short and with bytes changed: whatever becomes of them, their undamaged
// neighbours are recorded.
#include <algorithm>
#include <filesystem>
#include <random>

#include "robustness/Card.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"

namespace orx_test {
namespace {

struct Medium {
  std::string extension;
  std::string content;
};

void AddPictures(std::vector<Medium>* media) {
  for (const TiffOrder order : {TiffOrder::kLittle, TiffOrder::kBig})
    for (const int thumbnail : {0, 160})
      for (const char* extension : {"JPG", "jpeg", "MPO", "KRZ"}) {
        media->push_back({extension, JpegBuilder()
                                         .Order(order)
                                         .Thumbnail(thumbnail, thumbnail * 3 / 4)
                                         .Description("harbour")
                                         .Build()});
        media->push_back({extension, JpegBuilder().Order(order).Jfif().Orientation(6).Build()});
      }
}

void AddFilms(std::vector<Medium>* media) {
  for (const char* extension : {"MP4", "3gp", "mov", "m4v"})
    for (const unsigned profile : {66u, 77u}) {
      Mp4File film;
      film.profileIdc = profile;
      film.frames = 5;
      media->push_back({extension, MakeMp4(film)});
      film.audio = false;
      film.title = "Harbour";
      media->push_back({extension, MakeMp4(film)});
    }
}

void AddSounds(std::vector<Medium>* media) {
  for (const char* extension : {"m4a", "m4b", "aac"}) {
    Mp4File song;
    song.brand = "M4A ";
    song.video = false;
    song.artist = "A. Singer";
    song.cover = "jpeg";
    song.track = 3;
    media->push_back({extension, MakeMp4(song)});
    media->push_back({extension, SmallSong()});
  }
  for (const char* extension : {"aac", "adts"})
    for (const unsigned frequency : {3u, 4u, 7u}) media->push_back({extension, Adts(1, frequency)});
}

std::vector<Medium> AllMedia() {
  std::vector<Medium> media;
  AddPictures(&media);
  AddFilms(&media);
  AddSounds(&media);
  return media;
}

class DamagedFilesTest : public CardTest {
 protected:
  // The file cut at `cuts` places and changed at `changes`, each in a file of its own.
  void WriteDamaged(const Medium& medium, size_t cuts, size_t changes) {
    const size_t size = medium.content.size();
    for (size_t i = 0; i < cuts; ++i)
      Write("200PHOTO/CUTA" + std::to_string(1000 + i) + "." + medium.extension,
            medium.content.substr(0, size * i / cuts));
    for (size_t i = 0; i < changes; ++i) {
      std::string changed = medium.content;
      const char values[] = {0, 1, '\x7F', '\x80', '\xFF', static_cast<char>(random_())};
      for (size_t bytes = 1 + random_() % 4; bytes > 0; --bytes)
        changed[random_() % size] = values[random_() % sizeof values];
      Write("200PHOTO/BADA" + std::to_string(1000 + i) + "." + medium.extension, changed);
    }
  }

  std::minstd_rand random_{20261121};
};

TEST_F(DamagedFilesTest, UndamagedNeighboursAreRecorded) {
  WriteSmallCard();
  Write("200PHOTO/AAAA0001.JPG", MakeJpeg());
  Write("200PHOTO/BBBB0001.MP4", SmallFilm());
  Write("200PHOTO/ZZZZ0001.m4a", SmallSong());
  Scan();
  const std::vector<std::string> neighbours = Contents();
  const std::vector<Medium> media = AllMedia();
  EXPECT_GE(media.size(), 60u);
  size_t damaged = 0;
  for (size_t i = 0; i < media.size(); i += IsSoak() ? 1 : 5) {
    SCOPED_TRACE(media[i].extension + " " + std::to_string(i));
    WriteDamaged(media[i], 20, IsSoak() ? 200 : 20);
    RestoreDatabase("");
    Scan();
    const std::vector<std::string> all = Contents();
    EXPECT_TRUE(std::includes(all.begin(), all.end(), neighbours.begin(), neighbours.end()));
    for (const auto& file : std::filesystem::directory_iterator(InCard("200PHOTO"))) {
      const std::string name = file.path().filename().string();
      if (name.compare(0, 4, "CUTA") == 0 || name.compare(0, 4, "BADA") == 0) {
        std::filesystem::remove(file.path());
        ++damaged;
      }
    }
    Scan();  // takes the rows of the damaged files away again
    ASSERT_EQ(Difference(Contents(), neighbours), "");
  }
  EXPECT_EQ(damaged, IsSoak() ? 60u * (20 + 200) : 12u * (20 + 20));
}

}  // namespace
}  // namespace orx_test
