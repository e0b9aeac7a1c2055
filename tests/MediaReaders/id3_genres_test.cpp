#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <set>
#include <string>

#include "MediaReaders/mp4_reader.h"

namespace {

std::string Genre(int n) {
  char* text = mp3_getGenre(n);
  const std::string name = text == nullptr ? "(null)" : text;
  free(text);
  return name;
}

TEST(Genres, BeginWithThoseOfId3v1) {
  EXPECT_EQ(Genre(0), "Blues");
  EXPECT_EQ(Genre(1), "Classic Rock");
  EXPECT_EQ(Genre(2), "Country");
  EXPECT_EQ(Genre(3), "Dance");
  EXPECT_EQ(Genre(4), "Disco");
  EXPECT_EQ(Genre(17), "Rock");
  EXPECT_EQ(Genre(79), "Hard Rock");
}

TEST(Genres, GoOnWithTheExtensions) {
  EXPECT_EQ(Genre(80), "Folk");
  EXPECT_EQ(Genre(100), "Humour");
  EXPECT_EQ(Genre(125), "Dance Hall");
  EXPECT_EQ(Genre(126), "Goa");
  EXPECT_EQ(Genre(137), "Heavy Metal");
  EXPECT_EQ(Genre(147), "Synthpop");
}

TEST(Genres, EndAt147) {
  EXPECT_EQ(mp3_getGenre(148), nullptr);
  EXPECT_EQ(mp3_getGenre(-1), nullptr);
  EXPECT_EQ(mp3_getGenre(INT_MAX), nullptr);
  EXPECT_EQ(mp3_getGenre(INT_MIN), nullptr);
}

TEST(Genres, AreAllDifferent) {
  std::set<std::string> names;
  for (int n = 0; n <= 147; ++n) names.insert(Genre(n));
  EXPECT_EQ(names.size(), 148u);
  EXPECT_EQ(names.count(""), 0u);
}

}  // namespace
