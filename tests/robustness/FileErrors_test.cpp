// What every single error of a file call means to the library: an ordinary answer, or a machine
// that failed, which is noted with a line that names the file.
#include <dirent.h>
#include <fcntl.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "FileScanner/DirectoryScanner.h"
#include "MediaReaders/exif_reader.h"
#include "MediaReaders/mp4_reader.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXFSHandler.h"
#include "UpnpUtil/upnp_file.h"
#include "robustness/Card.h"
#include "robustness/Injection.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"

namespace orx_test {
namespace {

struct Error {
  const char* name;
  int number;
  bool ordinaryAtOpening;
};

const Error kErrors[] = {
    {"EIO", EIO, false},
    {"ENOMEM", ENOMEM, false},
    {"EINTR", EINTR, false},
    {"EMFILE", EMFILE, false},
    {"ENFILE", ENFILE, false},
    {"ESTALE", ESTALE, false},
    {"ENODEV", ENODEV, false},
    {"EUCLEAN", EUCLEAN, false},
    {"ENOTCONN", ENOTCONN, false},
    {"EROFS", EROFS, false},
    {"ETIMEDOUT", ETIMEDOUT, false},
    {"ENOENT", ENOENT, true},
    {"ENOTDIR", ENOTDIR, true},
    {"EACCES", EACCES, true},
    {"EPERM", EPERM, true},
    {"ELOOP", ELOOP, true},
    {"ENAMETOOLONG", ENAMETOOLONG, true},
};

void PrintTo(const Error& error, std::ostream* out) { *out << error.name; }

struct Reader {
  const char* name;
  std::string (*content)();
  void (*run)(const std::string& folder, const std::string& file);
};

void PrintTo(const Reader& reader, std::ostream* out) { *out << reader.name; }

void ReadPicture(const std::string& /*folder*/, const std::string& file) {
  ExifData data = {};
  exif_get_metadata_orig(file.c_str(), &data);
  exif_free_metadata(&data);
  free(data.UserComment);
}

void ReadFilm(const std::string& /*folder*/, const std::string& file) {
  mp4_metadata_t meta = {};
  m4a_get_metadata(file.c_str(), &meta);
  m4a_free_metadata(&meta);
}

void ReadWithAHandle(const std::string& /*folder*/, const std::string& file) {
  const std::unique_ptr<st_UPNP_FILE, void (*)(st_UPNP_FILE*)> handle(
      upnp_file_open_read(file.c_str()), upnp_file_close);
  if (handle == nullptr) return;
  char bytes[16];
  upnp_file_seek(handle.get(), 0, SEEK_END);
  upnp_file_seek(handle.get(), 0, SEEK_SET);
  upnp_file_read(handle.get(), bytes, sizeof bytes);
}

void AppendWithAHandle(const std::string& /*folder*/, const std::string& file) {
  const int descriptor = open_append(file.c_str());  // failing, it answers so, and that is all
  if (descriptor >= 0) close_file(descriptor);
}

void ListFolder(const std::string& folder, const std::string& /*file*/) {
  ORXFSHandler handler;
  if (handler.OpenDir(folder.c_str()) == 0) return;
  ORXFSHandler::PTFile entry = {};
  while (handler.Read(&entry) == 1) {
  }
  handler.CloseDir();
}

void CheckFile(const std::string& /*folder*/, const std::string& file) {
  ORXFSHandler handler;
  handler.IsValidFile(file.c_str());
  handler.IsValidFile(file.c_str(), 1u);
  handler.IsValidFile(file.c_str(), 1ul);
}

void AskForSizeAndDate(const std::string& /*folder*/, const std::string& file) {
  long long size = 0;
  char date[16] = "";
  DirectoryScanner::GetInstance()->__ExtractFileSizeAndDateFromName(file.c_str(), &size, date);
}

void AskForStatus(const std::string& /*folder*/, const std::string& file) {
  st_UPNP_FILE_STAT status = {};
  upnp_file_stat(file.c_str(), &status);
}

const Reader kReaders[] = {
    {"Picture", [] { return JpegBuilder().Description("a").Thumbnail(160, 120).Build(); },
     ReadPicture},
    {"Film", [] { return SmallFilm(); }, ReadFilm},
    {"Handle", [] { return std::string(100, 'x'); }, ReadWithAHandle},
    {"Folder", [] { return std::string("x"); }, ListFolder},
    {"Check", [] { return std::string("x"); }, CheckFile},
    {"SizeAndDate", [] { return std::string("x"); }, AskForSizeAndDate},
    {"Status", [] { return std::string("x"); }, AskForStatus},
};

// The lines about a failing call that name the folder of the test.
std::string folderOfTest;
int linesThatName = 0;
void CountLinesThatName(const char* line) {
  const std::string_view text(line);
  if (text.find("failed, errno") != std::string_view::npos &&
      text.find(folderOfTest) != std::string_view::npos)
    ++linesThatName;
}

class FileErrorTest : public testing::TestWithParam<std::tuple<Reader, Error>> {
 protected:
  FileErrorTest() {
    folderOfTest = folder_.path();
    QuietPlatform::Reset().onLine = CountLinesThatName;
    DirectoryScanner::GetInstance();
  }
  ~FileErrorTest() override {
    Injection::Disarm();
    QuietPlatform::Reset();
    DirectoryScanner::DestroyInstance();
  }
  const TempDir folder_;
};

TEST_P(FileErrorTest, IsTheMachinesUnlessItIsAnOrdinaryAnswerToAnOpening) {
  const auto& [reader, error] = GetParam();
  const std::string path = folder_.Write("file", reader.content());
  long call = 1;
  for (bool struck = true; struck; ++call) {
    SCOPED_TRACE("call " + std::to_string(call));
    linesThatName = 0;
    const orx::FaultWatch watch;
    Injection::Arm(Layer::kFiles, call, Behaviour::kFailOnce, error.number);
    reader.run(folder_.path(), path);
    struck = Injection::Disarm();
    const bool ordinary = error.ordinaryAtOpening && Injection::StruckAtOpening();
    EXPECT_EQ(watch.Seen(), struck && !ordinary);
    EXPECT_EQ(linesThatName, struck && !ordinary ? 1 : 0);
  }
  EXPECT_GT(call, 2);
}

INSTANTIATE_TEST_SUITE_P(Machine, FileErrorTest,
                         testing::Combine(testing::ValuesIn(kReaders), testing::ValuesIn(kErrors)),
                         [](const auto& test) {
                           return std::string(std::get<Reader>(test.param).name) +
                                  std::get<Error>(test.param).name;
                         });

TEST(FileError, OfAnOpeningToWriteIsTheHostsToHear) {
  const TempDir folder;
  const std::string path = folder.Write("file", "x");
  const orx::FaultWatch watch;
  Injection::Arm(Layer::kFiles, 1, Behaviour::kFailOnce, EIO);
  AppendWithAHandle(folder.path(), path);
  EXPECT_TRUE(Injection::Disarm());
  EXPECT_FALSE(watch.Seen());
}

TEST(FileError, IsNotWhatARefusedRequestAnswers) {
  const TempDir folder;
  const std::string path = folder.Write("file", "x");
  const orx::FaultWatch watch;
  char byte = 0;
  for (st_UPNP_FILE* file :
       {upnp_file_open_read(folder.path().c_str()), upnp_file_open_write(path.c_str())}) {
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(upnp_file_read(file, &byte, 1), -1);
    EXPECT_EQ(upnp_file_seek(file, -1, SEEK_SET), -1);
    upnp_file_close(file);
  }
  EXPECT_FALSE(watch.Seen());
}

// Looks into the picture as a platform does, and cannot read it.
bool FailToReadScreennail(const char* path) {
  const std::unique_ptr<st_UPNP_FILE, void (*)(st_UPNP_FILE*)> picture(upnp_file_open_read(path),
                                                                       upnp_file_close);
  char byte = 0;
  Injection::Arm(Layer::kFiles, 1, Behaviour::kFailOnce, ESTALE);
  EXPECT_EQ(upnp_file_read(picture.get(), &byte, 1), -1);
  EXPECT_TRUE(Injection::Disarm());
  return false;
}

class ScreennailErrorTest : public CardTest {};

TEST_F(ScreennailErrorTest, LeavesThePictureToTheNextScan) {
  Write("100PHOTO/IMGA0001.JPG", JpegBuilder().Description("a").Build());
  QuietPlatform& platform = ResetPlatform();
  platform.attributesSucceed = true;
  for (const int index : {0, 1, 2, 3}) platform.screennail[index] = 100 + index;
  Scan();
  const std::vector<std::string> expected = Contents();
  RestoreDatabase("");
  platform.findScreennail = FailToReadScreennail;
  Scan();
  for (const std::string& row : Contents()) EXPECT_EQ(row.find("IMGA0001"), std::string::npos);
  platform.findScreennail = nullptr;
  Scan();
  EXPECT_EQ(Difference(Contents(), expected), "");
}

}  // namespace
}  // namespace orx_test
