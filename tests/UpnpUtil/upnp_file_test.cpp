#include "UpnpUtil/upnp_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/OpenWatch.h"
#include "support/TempDir.h"

namespace {

using orx_test::TempDir;
using File = std::unique_ptr<st_UPNP_FILE, void (*)(st_UPNP_FILE*)>;

constexpr int kBufferSize = 16 * 1024;  // of a handle opened for reading
constexpr int kPage = 4 * 1024;

File OpenRead(const std::string& path) {
  return {upnp_file_open_read(path.c_str()), upnp_file_close};
}
File OpenWrite(const std::string& path) {
  return {upnp_file_open_write(path.c_str()), upnp_file_close};
}
File OpenAppend(const std::string& path) {
  return {upnp_file_open_append(path.c_str()), upnp_file_close};
}

std::string ContentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

// Bytes without a short period, so that a piece from the wrong place shows.
std::string Pattern(size_t size) {
  std::string bytes(size, '\0');
  unsigned state = 1;
  for (char& byte : bytes) {
    state = state * 1103515245u + 12345u;
    byte = static_cast<char>(state >> 16);
  }
  return bytes;
}

// Reads up to `length` bytes into a block of exactly that size.
std::string Read(const File& file, int length) {
  const auto block = std::make_unique<char[]>(static_cast<size_t>(length));
  const int count = upnp_file_read(file.get(), block.get(), length);
  return count < 0 ? "(failed)" : std::string(block.get(), static_cast<size_t>(count));
}

class UpnpFile : public testing::Test {
 protected:
  const TempDir directory_;
};

// ---- opening ------------------------------------------------------------------------------------

TEST_F(UpnpFile, OpensForReadingWithSizeAndPosition) {
  const File file = OpenRead(directory_.Write("a", "12345"));
  ASSERT_NE(file, nullptr);
  EXPECT_GT(file->descriptor, 0);
  EXPECT_EQ(file->size, 5);
  EXPECT_EQ(file->position, 0);
  EXPECT_EQ(file->reserved, 0u);
  EXPECT_EQ(file->reserved2, 0u);
}

TEST_F(UpnpFile, HasNoBufferBeforeTheFirstRead) {
  const File file = OpenRead(directory_.Write("a", "12345"));
  EXPECT_EQ(upnp_file_seek(file.get(), 3, SEEK_SET), 3);
  EXPECT_EQ(upnp_file_eof(file.get()), 0);
  EXPECT_EQ(file->buffers, nullptr);
  EXPECT_EQ(Read(file, 9), "45");
  EXPECT_NE(file->buffers, nullptr);
}

TEST_F(UpnpFile, HandsOutDescriptorsThatWait) {
  const std::string path = directory_.Path("a");
  for (const auto open : {open_write, open_append, open_read}) {
    const int descriptor = open(path.c_str());
    ASSERT_GT(descriptor, 0);
    EXPECT_EQ(fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    close_file(descriptor);
  }
}

TEST_F(UpnpFile, RefusesAFifoWithoutOpeningIt) {
  const std::string path = directory_.Path("fifo");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const orx_test::OpenWatch watch(path);
  EXPECT_EQ(OpenRead(path), nullptr);
  EXPECT_EQ(open_read(path.c_str()), -1);
  EXPECT_FALSE(watch.Opened());
}

TEST_F(UpnpFile, IsNotOpenedWithoutAPath) {
  EXPECT_EQ(upnp_file_open_read(nullptr), nullptr);
  EXPECT_EQ(upnp_file_open_write(nullptr), nullptr);
  EXPECT_EQ(upnp_file_open_append(nullptr), nullptr);
  EXPECT_EQ(open_read(nullptr), -1);
  EXPECT_EQ(open_write(nullptr), -1);
  EXPECT_EQ(open_append(nullptr), -1);
}

TEST_F(UpnpFile, IsNotMadeByReadingOrAppending) {
  EXPECT_EQ(OpenRead(directory_.Path("none")), nullptr);
  EXPECT_EQ(OpenAppend(directory_.Path("none")), nullptr);
  EXPECT_NE(access(directory_.Path("none").c_str(), F_OK), 0);
}

TEST_F(UpnpFile, IsMadeByWritingForItsOwnerAlone) {
  const std::string path = directory_.Path("new");
  const File file = OpenWrite(path);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->size, 0);
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST_F(UpnpFile, IsNotTruncatedByWriting) {
  const std::string path = directory_.Write("a", "12345");
  const File file = OpenWrite(path);
  EXPECT_EQ(file->size, 0);
  EXPECT_EQ(upnp_file_write(file.get(), "xy", 2), 2);
  EXPECT_EQ(ContentOf(path), "xy345");
}

TEST_F(UpnpFile, KnowsItsSizeWhenOpenedForAppending) {
  EXPECT_EQ(OpenAppend(directory_.Write("a", "12345"))->size, 5);
}

TEST_F(UpnpFile, PlainDescriptorsHaveTheirModes) {
  const std::string path = directory_.Path("a");
  const int writing = open_write(path.c_str());
  ASSERT_GT(writing, 0);
  EXPECT_EQ(write(writing, "ab", 2), 2);
  char byte = 0;
  EXPECT_EQ(read(writing, &byte, 1), -1);
  EXPECT_EQ(close_file(writing), 0);

  const int appending = open_append(path.c_str());
  ASSERT_GT(appending, 0);
  EXPECT_EQ(read(appending, &byte, 1), 1);
  EXPECT_EQ(byte, 'a');
  EXPECT_EQ(write(appending, "c", 1), 1);
  EXPECT_EQ(close_file(appending), 0);

  const int reading = open_read(path.c_str());
  ASSERT_GT(reading, 0);
  EXPECT_EQ(write(reading, "x", 1), -1);
  EXPECT_EQ(close_file(reading), 0);
  EXPECT_EQ(close_file(reading), -1);
  EXPECT_EQ(ContentOf(path), "abc");
}

TEST_F(UpnpFile, RefusesToReadAFifoWithoutWaitingForAWriter) {
  const std::string path = directory_.Path("fifo");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(OpenRead(path), nullptr);
}

TEST_F(UpnpFile, NeverWaitsForTheOtherEndOfAFifo) {
  const std::string path = directory_.Path("fifo");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(OpenWrite(path), nullptr);  // nobody reads
  const File file = OpenAppend(path);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(upnp_file_write(file.get(), "x", 1), 1);
  EXPECT_EQ(Read(file, 1), "x");
}

// Reads all that comes out of the FIFO until its writers close it, a little at a time.
size_t DrainSlowly(int descriptor) {
  size_t total = 0;
  char block[4096];
  for (ssize_t count = 0; (count = read(descriptor, block, sizeof block)) > 0;) {
    total += static_cast<size_t>(count);
    usleep(100);
  }
  return total;
}

TEST_F(UpnpFile, LosesNothingThatIsWrittenForASlowReader) {
  const std::string path = directory_.Path("fifo");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_EQ(fcntl(reader, F_SETFL, 0), 0);
  for (const auto open : {OpenWrite, OpenAppend}) {
    File file = open(path);
    ASSERT_NE(file, nullptr);
    size_t arrived = 0;
    std::thread draining([&] { arrived = DrainSlowly(reader); });
    const std::string bytes(300021, 'x');
    EXPECT_EQ(upnp_file_write(file.get(), bytes.data(), static_cast<int>(bytes.size())), 300021);
    file.reset();
    draining.join();
    EXPECT_EQ(arrived, bytes.size());
  }
  close(reader);
}

TEST_F(UpnpFile, RefusesToReadADeviceOrASocket) {
  EXPECT_EQ(OpenRead("/dev/null"), nullptr);
  EXPECT_EQ(OpenRead("/dev/zero"), nullptr);
  const std::string path = directory_.Path("socket");
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof address.sun_path);
  path.copy(address.sun_path, path.size());
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(OpenRead(path), nullptr);
  close(listener);
}

TEST_F(UpnpFile, LeavesNoDescriptorOpenForWhatItRefuses) {
  const int before = dup(1);
  close(before);
  OpenRead("/dev/null");
  const int after = dup(1);
  close(after);
  EXPECT_EQ(after, before);
}

TEST_F(UpnpFile, CannotReadADirectory) {
  const File file = OpenRead(directory_.path());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(Read(file, 1), "(failed)");
}

// In a process without standard input the first file opened has the descriptor 0.  The exit status
// tells which step went wrong.
int OpenWithoutStandardInput(const std::string& path) {
  const pid_t child = fork();
  if (child == 0) {
    close(0);
    if (upnp_file_open_read(path.c_str()) != nullptr) _exit(1);
    if (upnp_file_open_write(path.c_str()) != nullptr) _exit(2);
    if (upnp_file_open_append(path.c_str()) != nullptr) _exit(3);
    _exit(fcntl(0, F_GETFD) == -1 ? 0 : 4);  // and none is left open
  }
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(UpnpFile, CountsADescriptorOfZeroAsAFailure) {
  EXPECT_EQ(OpenWithoutStandardInput(directory_.Write("a", "1")), 0);
}

TEST_F(UpnpFile, IgnoresNullWhenClosing) { upnp_file_close(nullptr); }

TEST_F(UpnpFile, ClosesItsDescriptor) {
  File file = OpenRead(directory_.Write("a", "1"));
  const int descriptor = file->descriptor;
  file.reset();
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

TEST_F(UpnpFile, ReleasesAChainOfBuffersThatOthersHungOnIt) {
  File file = OpenRead(directory_.Write("a", "12345"));
  auto* node = static_cast<st_UPNP_FILE_BUFFER*>(calloc(1, sizeof(st_UPNP_FILE_BUFFER)));
  node->data = static_cast<char*>(malloc(100));
  node->next = file->buffers;
  file->buffers = node;
  EXPECT_EQ(Read(file, 10), "12345");  // a foreign node at the head is no read buffer
}

// ---- reading ------------------------------------------------------------------------------------

TEST_F(UpnpFile, ReadsToItsEnd) {
  const File file = OpenRead(directory_.Write("a", "12345"));
  EXPECT_EQ(Read(file, 3), "123");
  EXPECT_EQ(file->position, 3);
  EXPECT_EQ(Read(file, 3), "45");
  EXPECT_EQ(file->position, 5);
  EXPECT_EQ(Read(file, 3), "");
  EXPECT_EQ(file->position, 5);
}

TEST_F(UpnpFile, ReadsNothingFromAnEmptyFile) {
  const File file = OpenRead(directory_.Write("a", ""));
  EXPECT_EQ(Read(file, 1), "");
  EXPECT_EQ(upnp_file_eof(file.get()), 1);
}

TEST_F(UpnpFile, FailsToReadOrWriteWithoutAHandleOrABlock) {
  char block[4];
  EXPECT_EQ(upnp_file_read(nullptr, block, 4), -1);
  EXPECT_EQ(upnp_file_write(nullptr, block, 4), -1);
  EXPECT_EQ(upnp_file_seek(nullptr, 0, SEEK_SET), -1);
  const File file = OpenRead(directory_.Write("a", "12345"));
  EXPECT_EQ(upnp_file_read(file.get(), nullptr, 4), -1);
  EXPECT_EQ(upnp_file_read(file.get(), block, -1), -1);
  EXPECT_EQ(upnp_file_read(file.get(), block, 0), 0);
  EXPECT_EQ(upnp_file_write(file.get(), nullptr, 4), -1);
  EXPECT_EQ(upnp_file_write(file.get(), block, 4), -1);  // opened for reading
  EXPECT_EQ(file->position, 0);
}

TEST_F(UpnpFile, FailsToReadWhatWasOpenedForWriting) {
  const File file = OpenWrite(directory_.Path("a"));
  EXPECT_EQ(Read(file, 1), "(failed)");
  EXPECT_EQ(file->position, 0);
}

// Every piece is compared with the same piece of the content, from offsets and with lengths around
// the edges of pages, of the read buffer, and of the file.
TEST_F(UpnpFile, ReadsTheSameAsTheSystemAtEveryBoundary) {
  const std::string content = Pattern(3 * kBufferSize + 100);
  const auto size = static_cast<int>(content.size());
  const std::string path = directory_.Write("a", content);
  std::vector<int> edges = {0, kPage, kBufferSize, 2 * kBufferSize, size};
  std::vector<int> offsets, lengths;
  for (const int edge : edges)
    for (const int step : {-2, -1, 0, 1, 2})
      if (edge + step >= 0) offsets.push_back(edge + step);
  for (const int edge : edges)
    for (const int step : {-1, 0, 1})
      if (edge + step > 0) lengths.push_back(edge + step);

  const File file = OpenRead(path);  // one handle, so that each piece meets what is buffered before
  const int plain = open_read(path.c_str());
  ASSERT_GT(plain, 0);
  for (const int offset : offsets)
    for (const int length : lengths) {
      SCOPED_TRACE(std::to_string(offset) + " + " + std::to_string(length));
      std::string expected(static_cast<size_t>(length), '\0');
      const ssize_t count = pread(plain, expected.data(), expected.size(), offset);
      ASSERT_GE(count, 0);
      expected.resize(static_cast<size_t>(count));
      ASSERT_EQ(upnp_file_seek(file.get(), offset, SEEK_SET), offset);
      ASSERT_TRUE(Read(file, length) == expected);
      ASSERT_EQ(file->position, offset + count);
    }
  close_file(plain);
}

TEST_F(UpnpFile, ReadsTheSameAsTheSystemOnAWanderingPath) {
  const std::string content = Pattern(5 * kBufferSize + 321);
  const std::string path = directory_.Write("a", content);
  const File file = OpenRead(path);
  const int plain = open_read(path.c_str());
  std::mt19937 random(1);
  constexpr int kLengths[] = {1, 2, 4, 12, 100, 1000, kPage, kBufferSize, 2 * kBufferSize};
  for (int step = 0; step < 5000; ++step) {
    const int length = kLengths[random() % (sizeof kLengths / sizeof *kLengths)];
    const int whence = static_cast<int>(random() % 3);
    const auto reach = whence == SEEK_SET ? content.size() + 100 : content.size() / 2;
    auto offset = static_cast<long long>(random() % reach);
    if (whence != SEEK_SET && random() % 2 == 0) offset = -offset;
    SCOPED_TRACE(step);
    ASSERT_EQ(upnp_file_seek(file.get(), offset, whence), lseek64(plain, offset, whence));
    std::string expected(static_cast<size_t>(length), '\0');
    const ssize_t count = read(plain, expected.data(), expected.size());
    expected.resize(static_cast<size_t>(count));
    ASSERT_TRUE(Read(file, length) == expected);
    ASSERT_EQ(file->position, lseek64(plain, 0, SEEK_CUR));
  }
  close_file(plain);
}

TEST_F(UpnpFile, ReadsOnInSmallPieces) {
  const std::string content = Pattern(2 * kBufferSize + 7);
  const std::string path = directory_.Write("a", content);
  for (const int length : {1, 7, 4095, 4097, kBufferSize - 1, kBufferSize, kBufferSize + 1}) {
    SCOPED_TRACE(length);
    const File file = OpenRead(path);
    std::string found;
    for (std::string piece = Read(file, length); !piece.empty(); piece = Read(file, length))
      found += piece;
    EXPECT_TRUE(found == content);
  }
}

TEST_F(UpnpFile, ReadsBackwards) {
  const std::string content = Pattern(kBufferSize + 3);
  const File file = OpenRead(directory_.Write("a", content));
  for (auto i = static_cast<long long>(content.size()) - 1; i >= 0; --i) {
    ASSERT_EQ(upnp_file_seek(file.get(), i, SEEK_SET), i);
    ASSERT_EQ(Read(file, 1)[0], content[static_cast<size_t>(i)]);
  }
}

TEST_F(UpnpFile, ReadsWhatWasAppendedMeanwhile) {
  const std::string path = directory_.Write("a", "123");
  const File file = OpenRead(path);
  EXPECT_EQ(Read(file, 9), "123");
  const File other = OpenAppend(path);
  EXPECT_EQ(upnp_file_write(other.get(), "45", 2), 2);
  EXPECT_EQ(Read(file, 9), "45");
  EXPECT_EQ(file->size, 3);
}

TEST_F(UpnpFile, ReadsBeyondFourGibibytes) {
  const std::string path = directory_.Write("a", "start");
  const long long far = 5LL << 30;
  const File writer = OpenWrite(path);
  ASSERT_EQ(upnp_file_seek(writer.get(), far, SEEK_SET), far);
  ASSERT_EQ(upnp_file_write(writer.get(), "end", 3), 3);
  const File file = OpenRead(path);
  EXPECT_EQ(file->size, far + 3);
  EXPECT_EQ(upnp_file_seek(file.get(), far, SEEK_SET), far);
  EXPECT_EQ(Read(file, 9), "end");
  EXPECT_EQ(file->position, far + 3);
  EXPECT_EQ(upnp_file_eof(file.get()), 1);
}

// ---- seeking ------------------------------------------------------------------------------------

TEST_F(UpnpFile, SeeksFromTheStartThePositionAndTheEnd) {
  const File file = OpenRead(directory_.Write("a", "0123456789"));
  EXPECT_EQ(upnp_file_seek(file.get(), 4, SEEK_SET), 4);
  EXPECT_EQ(Read(file, 1), "4");
  EXPECT_EQ(upnp_file_seek(file.get(), 2, SEEK_CUR), 7);
  EXPECT_EQ(Read(file, 1), "7");
  EXPECT_EQ(upnp_file_seek(file.get(), -5, SEEK_CUR), 3);
  EXPECT_EQ(Read(file, 1), "3");
  EXPECT_EQ(upnp_file_seek(file.get(), -1, SEEK_END), 9);
  EXPECT_EQ(Read(file, 1), "9");
  EXPECT_EQ(upnp_file_seek(file.get(), 0, SEEK_CUR), 10);
}

TEST_F(UpnpFile, SeeksPastTheEndWhereNothingIsRead) {
  const File file = OpenRead(directory_.Write("a", "01234"));
  EXPECT_EQ(upnp_file_seek(file.get(), 1000, SEEK_SET), 1000);
  EXPECT_EQ(file->position, 1000);
  EXPECT_EQ(Read(file, 1), "");
  EXPECT_EQ(upnp_file_seek(file.get(), 5, SEEK_END), 10);
  EXPECT_EQ(Read(file, 1), "");
}

TEST_F(UpnpFile, KeepsItsPositionWhenASeekFails) {
  const File file = OpenRead(directory_.Write("a", "01234"));
  EXPECT_EQ(upnp_file_seek(file.get(), 2, SEEK_SET), 2);
  EXPECT_EQ(upnp_file_seek(file.get(), -1, SEEK_SET), -1);
  EXPECT_EQ(upnp_file_seek(file.get(), -3, SEEK_CUR), -1);
  EXPECT_EQ(upnp_file_seek(file.get(), -6, SEEK_END), -1);
  EXPECT_EQ(upnp_file_seek(file.get(), LLONG_MAX, SEEK_CUR), -1);
  EXPECT_EQ(upnp_file_seek(file.get(), LLONG_MIN, SEEK_CUR), -1);
  EXPECT_EQ(upnp_file_seek(file.get(), 0, 99), -1);
  EXPECT_EQ(file->position, 2);
  EXPECT_EQ(Read(file, 1), "2");
}

TEST_F(UpnpFile, SeeksLikeTheSystem) {
  const std::string path = directory_.Write("a", Pattern(100));
  const int plain = open_read(path.c_str());
  const File file = OpenRead(path);
  for (const int whence : {SEEK_SET, SEEK_CUR, SEEK_END})
    for (const long long offset : {0LL, 1LL, -1LL, 50LL, -50LL, 99LL, 100LL, 101LL, -100LL, -101LL,
                                   1LL << 32, 1LL << 60, LLONG_MAX, LLONG_MIN}) {
      SCOPED_TRACE(std::to_string(whence) + " " + std::to_string(offset));
      lseek64(plain, 50, SEEK_SET);
      upnp_file_seek(file.get(), 50, SEEK_SET);
      EXPECT_EQ(upnp_file_seek(file.get(), offset, whence), lseek64(plain, offset, whence));
    }
  close_file(plain);
}

TEST_F(UpnpFile, IsAtItsEndFromItsSizeOn) {
  const File file = OpenRead(directory_.Write("a", "01234"));
  EXPECT_EQ(upnp_file_eof(file.get()), 0);
  Read(file, 4);
  EXPECT_EQ(upnp_file_eof(file.get()), 0);
  Read(file, 1);
  EXPECT_EQ(upnp_file_eof(file.get()), 1);
  upnp_file_seek(file.get(), 50, SEEK_SET);
  EXPECT_EQ(upnp_file_eof(file.get()), 1);
  upnp_file_seek(file.get(), 0, SEEK_SET);
  EXPECT_EQ(upnp_file_eof(file.get()), 0);
}

TEST_F(UpnpFile, IsAtItsEndWithoutAHandle) { EXPECT_EQ(upnp_file_eof(nullptr), 1); }

TEST_F(UpnpFile, IsAtItsEndWhenOpenedForWriting) {
  EXPECT_EQ(upnp_file_eof(OpenWrite(directory_.Write("a", "01234")).get()), 1);
}

// ---- writing ------------------------------------------------------------------------------------

TEST_F(UpnpFile, LeavesThePositionWhenWriting) {
  const std::string path = directory_.Path("a");
  const File file = OpenWrite(path);
  EXPECT_EQ(upnp_file_write(file.get(), "abc", 3), 3);
  EXPECT_EQ(file->position, 0);
  EXPECT_EQ(ContentOf(path), "abc");  // at once
  EXPECT_EQ(upnp_file_seek(file.get(), 0, SEEK_CUR), 3);
  EXPECT_EQ(file->position, 3);
}

TEST_F(UpnpFile, AppendsWhereverThePositionIs) {
  const std::string path = directory_.Write("a", "abc");
  const File file = OpenAppend(path);
  EXPECT_EQ(Read(file, 1), "a");
  EXPECT_EQ(file->position, 1);
  EXPECT_EQ(upnp_file_write(file.get(), "d", 1), 1);
  EXPECT_EQ(file->position, 1);
  EXPECT_EQ(ContentOf(path), "abcd");
  EXPECT_EQ(upnp_file_seek(file.get(), 2, SEEK_SET), 2);
  EXPECT_EQ(Read(file, 9), "cd");
}

TEST_F(UpnpFile, ReadsFromAnAppendingHandleWithoutABuffer) {
  const std::string path = directory_.Write("a", "abcdef");
  const File file = OpenAppend(path);
  EXPECT_EQ(Read(file, 2), "ab");
  EXPECT_EQ(lseek64(file->descriptor, 0, SEEK_CUR), 2);
  const File other = OpenWrite(path);
  upnp_file_write(other.get(), "ABCDEF", 6);
  EXPECT_EQ(Read(file, 4), "CDEF");
}

// ---- lines --------------------------------------------------------------------------------------

std::string Line(const File& file, int length) {
  const auto block = std::make_unique<char[]>(static_cast<size_t>(length) + 1);
  memset(block.get(), 'x', static_cast<size_t>(length));
  block[static_cast<size_t>(length)] = '\0';  // the byte that callers keep back
  EXPECT_EQ(upnp_file_gets(block.get(), length, file.get()), block.get());
  return block.get();
}

TEST_F(UpnpFile, GetsLinesWithTheirNewlines) {
  const File file = OpenRead(directory_.Write("a", "one\n\ntwo"));
  EXPECT_EQ(Line(file, 10), "one\n");
  EXPECT_EQ(Line(file, 10), "\n");
  EXPECT_EQ(Line(file, 10), "two");
  EXPECT_EQ(Line(file, 10), "");
  EXPECT_EQ(upnp_file_eof(file.get()), 1);
}

TEST_F(UpnpFile, LeavesAFullLineUnterminated) {
  const File file = OpenRead(directory_.Write("a", "abcdefg"));
  char block[5] = {'x', 'x', 'x', 'x', 'x'};
  EXPECT_EQ(upnp_file_gets(block, 4, file.get()), block);
  EXPECT_EQ(std::string(block, 5), "abcdx");
  EXPECT_EQ(file->position, 4);
  EXPECT_EQ(Line(file, 4), "efg");
}

TEST_F(UpnpFile, ZeroesWhatALineDoesNotFill) {
  const File file = OpenRead(directory_.Write("a", "a\nb"));
  char block[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
  upnp_file_gets(block, 5, file.get());
  EXPECT_EQ(std::string(block, 6), std::string("a\n\0\0\0x", 6));
}

TEST_F(UpnpFile, GetsNothingIntoNoBytes) {
  const File file = OpenRead(directory_.Write("a", "abc"));
  char block[] = "x";
  EXPECT_EQ(upnp_file_gets(block, 0, file.get()), block);
  EXPECT_EQ(upnp_file_gets(block, -1, file.get()), block);
  EXPECT_EQ(block[0], 'x');
  EXPECT_EQ(file->position, 0);
}

TEST_F(UpnpFile, GetsNullForNull) {
  const File file = OpenRead(directory_.Write("a", "abc"));
  EXPECT_EQ(upnp_file_gets(nullptr, 4, file.get()), nullptr);
  char block[] = "xyz";
  EXPECT_EQ(upnp_file_gets(block, 2, nullptr), nullptr);
  EXPECT_EQ(std::string(block, 3), std::string("\0\0z", 3));
}

TEST_F(UpnpFile, EndsALineAtAReadError) {
  const File file = OpenRead(directory_.path());  // a directory cannot be read
  EXPECT_EQ(Line(file, 4), "");
}

TEST_F(UpnpFile, GetsLinesFromAnAppendingHandle) {
  const File file = OpenAppend(directory_.Write("a", "one\ntwo"));
  EXPECT_EQ(Line(file, 10), "one\n");
  EXPECT_EQ(Line(file, 10), "two");
}

// ---- paths --------------------------------------------------------------------------------------

TEST_F(UpnpFile, FillsTheStatusRecord) {
  const std::string path = directory_.Write("a", "12345");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  const timespec times[] = {{1000000001, 0}, {1000000002, 0}};  // access, modification
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  st_UPNP_FILE_STAT status = {};
  status.reserved = 77;
  ASSERT_EQ(upnp_file_stat(path.c_str(), &status), 0);
  struct stat64 expected = {};
  ASSERT_EQ(stat64(path.c_str(), &expected), 0);
  EXPECT_EQ(status.access_time, 1000000001);
  EXPECT_EQ(status.modification_time, 1000000002);
  EXPECT_EQ(status.change_time, static_cast<int>(expected.st_ctime));
  EXPECT_EQ(status.reserved, 77);
  EXPECT_EQ(status.size, 5);
  EXPECT_EQ(status.mode, static_cast<unsigned>(S_IFREG | 0640));
}

TEST_F(UpnpFile, HasNoStatusForNothing) {
  st_UPNP_FILE_STAT status = {};
  EXPECT_EQ(upnp_file_stat(directory_.Path("none").c_str(), &status), -1);
  EXPECT_EQ(upnp_file_stat(nullptr, &status), -1);
  EXPECT_EQ(upnp_file_stat(directory_.path().c_str(), nullptr), -1);
}

TEST_F(UpnpFile, MakesADirectory) {
  const std::string path = directory_.Path("made");
  const mode_t mask = umask(0);
  EXPECT_EQ(upnp_file_mkdir(path.c_str()), 0);
  umask(mask);
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFDIR | 0777));
  EXPECT_EQ(upnp_file_mkdir(path.c_str()), -1);
  EXPECT_EQ(upnp_file_mkdir(nullptr), -1);
}

TEST_F(UpnpFile, UnlinksAFile) {
  const std::string path = directory_.Write("a", "1");
  EXPECT_EQ(upnp_file_unlink(path.c_str()), 0);
  EXPECT_EQ(upnp_file_unlink(path.c_str()), -1);
  EXPECT_EQ(upnp_file_unlink(nullptr), -1);
}

TEST_F(UpnpFile, ReleasesADirectorySearch) {
  auto* find = static_cast<st_UPNP_FINDFILE*>(calloc(1, sizeof(st_UPNP_FINDFILE)));
  find->directory = opendir(directory_.path().c_str());
  find->text1 = strdup("*");
  find->text3 = strdup("c");
  const int descriptor = dirfd(find->directory);
  upnp_file_find_close(find);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
  upnp_file_find_close(nullptr);
  upnp_file_find_close(static_cast<st_UPNP_FINDFILE*>(calloc(1, sizeof(st_UPNP_FINDFILE))));
}

}  // namespace
