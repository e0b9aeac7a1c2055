// Writes the first inputs of every fuzz target: make_corpus FOLDER
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"

namespace {

using orx_test::JpegBuilder;

std::string folder;

void Write(const std::string& name, const std::string& content) {
  const std::filesystem::path path = folder + "/" + name;
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

std::string Counted(const std::string& text) { return static_cast<char>(text.size()) + text; }

std::string Picture(orx_test::TiffOrder order) {
  return JpegBuilder()
      .Order(order)
      .Jfif()
      .Description("harbour")
      .Orientation(6)
      .Thumbnail(160, 120)
      .Padding(8)
      .Build();
}

// All the pointers to directories lead to the one that holds the comment.
std::string WithComment(orx_test::TiffOrder order) {
  const std::string comment = std::string("ASCII\0\0\0", 8) + "a comment";
  orx_test::TiffBuilder tiff(order);
  for (const int pointer : {34665, 34853, 40965}) tiff.Long(static_cast<uint16_t>(pointer), 8);
  tiff.Data(37510, orx_test::kUndefined, static_cast<uint32_t>(comment.size()), comment);
  return orx_test::StartOfImage() + orx_test::ExifSegment(tiff.Build()) +
         orx_test::FrameHeader(640, 480) + orx_test::EndOfImage();
}

std::string Film() {
  orx_test::Mp4File film;
  film.frames = 5;
  film.title = "Harbour";
  film.artist = "A. Singer";
  film.cover = "jpeg";
  film.track = 3;
  return orx_test::MakeMp4(film);
}

std::string Song() {
  orx_test::Mp4File song;
  song.brand = "M4A ";
  song.video = false;
  song.genre = "Jazz";
  song.year = "2026";
  return orx_test::MakeMp4(song);
}

void WriteMedia() {
  const std::string little = Picture(orx_test::TiffOrder::kLittle);
  const std::string big = Picture(orx_test::TiffOrder::kBig);
  Write("jpeg/little_endian", little);
  Write("jpeg/big_endian", big);
  for (const orx_test::TiffOrder order : {orx_test::TiffOrder::kLittle, orx_test::TiffOrder::kBig})
    Write(order == orx_test::TiffOrder::kBig ? "jpeg/comment_big" : "jpeg/comment_little",
          WithComment(order));
  Write("jpeg/no_exif", JpegBuilder().NoExif().Build());
  Write("mp4/film", Film());
  Write("mp4/song", Song());
  Write("mp4/adts", orx_test::Adts());
  Write("mp4/large_box", orx_test::Ftyp("mp42", "isom") + orx_test::LargeBox("moov", ""));
  Write("file/picture", std::string(1, '\0') + little);
  Write("file/film", "\1" + Film());
  Write("file/film_certified", "\201" + Film());
  Write("file/song", "\5" + Song());
  Write("file/adts", "\3" + orx_test::Adts());
  Write("file/multi_picture", "\4" + big);
}

void WriteTexts() {
  const std::string korean = "\xB0\xA1\xB3\xAA";
  const std::string japanese = "\x83\x65\x83\x58\x83\x67";
  const std::string utf8 =
      "Gr\xC3\xBC\xC3\x9F"
      "e \xEA\xB0\x80 \xF0\x9F\x93\xB7";
  for (char conversion = 0; conversion < 7; ++conversion) {
    const std::string name = std::to_string(int{conversion});
    Write("charset/utf8_" + name, std::string(1, conversion) + '\x20' + utf8);
    Write("charset/legacy_" + name, std::string(1, conversion) + '\x20' + korean + japanese);
  }
  Write("charset/growing", "\7" + Counted("text") + '\4' + '\0' + Counted("more") + '\1' +
                               Counted(utf8) + '\6' + Counted(utf8) + '\3');
  const std::string number(8, '\x11');
  Write("text/path", number + Counted("DSC00001.JPG") + "/mnt/mmc/DCIM/100PHOTO/DSC00001.JPG");
  Write("text/time", number + Counted("id") + "01:02:03:004");
  Write("text/request", number + Counted("id") + "/item?id=17&size=large");
  Write("text/base64", number + Counted("*") + "aGFyYm91cg==");
  Write("text/number", number + Counted("*") + "FFEE17");
}

// Rows of ObjectTable, cell by cell as the target reads them, and steps over them.
void WriteRows() {
  for (char mode = 0; mode < 4; ++mode) {
    std::string input(1, mode);
    input += '\3';
    for (char row = 1; row <= 3; ++row) {
      input += '\0';                                             // ObjectTable
      input += std::string("\0", 1) + row;                       // id
      input += std::string("\0", 1) + (row == 3 ? '\1' : '\0');  // class
      input += '\5' + Counted("17Nov2008");
      input += '\5' + Counted(row == 1 ? "0" : "1");  // parent
      input += '\4' + std::string(1, static_cast<char>(row - 1));
      input += std::string("\0\0\0\0\0\0", 6);
    }
    for (char step = 0; step < 8; ++step)
      input += static_cast<char>(128 + step * 2 + mode % 2) +
               Counted(std::string(static_cast<size_t>(step) % 6, '1'));
    Write("rows/mode_" + std::to_string(int{mode}), input);
  }
}

// Rows of all tables that fit together, a folder with one item of each class, and then one purge.
void WriteFittingRows() {
  const std::string directory = {'\1', '\0', '\0', '\0', '\6', '\0', '\0', '\0'};
  constexpr size_t kColumns[] = {24, 18, 31};  // of the tables of pictures, sound and films
  for (int purge = 0; purge < 8; ++purge) {
    std::string input = std::string(1, '\0') + '\7' + '\202' + directory;
    for (char mediaClass = 1; mediaClass <= 3; ++mediaClass) {
      const char id = static_cast<char>(mediaClass + 1);
      input += '\202' + std::string(1, id) + mediaClass + '\0' + '\1' + '\7' + '\1' + '\0' + '\0';
      // The tables' numbers are 1 to 3; the path is the sixth column.
      const std::string start = {id, '\0', mediaClass, '\0', '\0', '\7'};
      input += static_cast<char>(130 + mediaClass) + start +
               std::string(kColumns[mediaClass - 1] - start.size(), '\0');
    }
    input += static_cast<char>(128 + 5 * purge) + Counted("111111");  // the path "/proc"
    Write("rows/purge_" + std::to_string(purge), input);
  }
}

void WriteUris() {
  const std::string numbers(24, '\x01');
  for (char scan = 0; scan < 8; ++scan) {
    std::string input(1, scan);
    input += scan;  // the sharing mode
    input += '\7';
    input += numbers + "2026:11:21 09:34:26\n";
    for (int file = 0; file < 12; ++file)
      input += std::string(1, static_cast<char>(file * 23 | 1)) + static_cast<char>(file);
    input += '\0' + Counted("/mnt/mmc/DCIM/short");
    Write("uris/scan_" + std::to_string(int{scan}), input);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_corpus FOLDER\n";
    return 2;
  }
  folder = argv[1];
  WriteMedia();
  WriteTexts();
  WriteRows();
  WriteFittingRows();
  WriteUris();
}
