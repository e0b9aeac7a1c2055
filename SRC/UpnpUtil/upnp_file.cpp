#include "UpnpUtil/upnp_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "OSAL/Fault.h"
#include "OSAL/FileOpening.h"
#include "UpnpUtil/FileHandle.h"

namespace {

constexpr int kReadBufferSize = 16 * 1024;  // bytes, several pages
constexpr int kPageSize = 4 * 1024;

// Without the flag, opening a FIFO waits for its other end; on regular files it does nothing.
constexpr int kNeverBlock = O_NONBLOCK | O_CLOEXEC | O_LARGEFILE;
constexpr mode_t kOwnerAlone = 0600;

void FillStatus(const struct stat64& from, st_UPNP_FILE_STAT* to) {
  to->change_time = static_cast<int>(from.st_ctime);
  to->modification_time = static_cast<int>(from.st_mtime);
  to->access_time = static_cast<int>(from.st_atime);
  to->size = from.st_size;
  to->mode = from.st_mode;
}

// The handle's read buffer, null when it has none, or another's node stands in front of it.
st_UPNP_FILE_BUFFER* ReadBuffer(const st_UPNP_FILE* file) {
  st_UPNP_FILE_BUFFER* head = file->buffers;
  return head != nullptr && head->capacity > 0 ? head : nullptr;
}

// A buffer that cannot be had only makes reading slower.
void AddReadBuffer(st_UPNP_FILE* file) {
  auto* node = static_cast<st_UPNP_FILE_BUFFER*>(calloc(1, sizeof(st_UPNP_FILE_BUFFER)));
  char* data = static_cast<char*>(malloc(kReadBufferSize));
  if (node == nullptr || data == nullptr) {
    free(node);
    free(data);
    return;
  }
  node->data = data;
  node->capacity = kReadBufferSize;
  file->buffers = node;
}

// Whether a buffer may be added: nothing but this handle's own reads and seeks concerns it.
bool IsUnreadFile(const st_UPNP_FILE* file) {
  if (file->buffers != nullptr || file->size <= 0) return false;
  const int flags = fcntl(file->descriptor, F_GETFL);
  return flags >= 0 && (flags & O_ACCMODE) == O_RDONLY;
}

// A refused request (a directory has no bytes, a handle for writing none to give) says nothing
// about the machine.
void NoteReadError(const st_UPNP_FILE* file, int error) {
  const bool refused = error == EISDIR || (error == EBADF && ReadBuffer(file) == nullptr);
  if (!refused) orx::NoteDescriptorError("read", file->descriptor, error);
}

// The same of a place where no file has bytes, and of what has no places.
long long Seek(const st_UPNP_FILE* file, long long offset, int whence) {
  const long long result = lseek64(file->descriptor, offset, whence);
  if (result == -1 && errno != EINVAL && errno != ESPIPE && errno != EOVERFLOW)
    orx::NoteDescriptorError("lseek", file->descriptor, errno);
  return result;
}

// Takes over a fresh descriptor; null when there is none to work with.  0, which only a process
// without standard input gets, counts as a failed open.
st_UPNP_FILE* MakeHandle(int descriptor) {
  st_UPNP_FILE* file = nullptr;
  if (descriptor > 0)
    file = static_cast<st_UPNP_FILE*>(orx::Noted(calloc(1, sizeof(st_UPNP_FILE)), __func__));
  if (file != nullptr)
    file->descriptor = descriptor;
  else if (descriptor >= 0)
    close_file(descriptor);
  return file;
}

// Opens for writing without waiting for the other end of a FIFO; what is written then waits for
// its reader as usual.
int OpenToWrite(const char* path, int flags) {
  if (path == nullptr) return -1;
  const int descriptor = open64(path, flags | kNeverBlock, kOwnerAlone);
  if (descriptor >= 0) orx::LetBlock(descriptor);
  return descriptor;
}

// Copies what the buffer holds of [position, position + length).
int CopyFromBuffer(const st_UPNP_FILE_BUFFER* buffer, long long position, char* to, int length) {
  const long long skip = position - buffer->start;
  if (skip < 0 || skip >= buffer->used) return 0;
  const int count = static_cast<int>(std::min<long long>(length, buffer->used - skip));
  memcpy(to, buffer->data + skip, static_cast<size_t>(count));
  return count;
}

// Fills the buffer so that it holds `position` and a little before it, as readers often step back.
// Bytes now in the buffer from `position` on; 0 at the end of the file, -1 on failure.
int FillBuffer(int descriptor, long long position, st_UPNP_FILE_BUFFER* buffer) {
  buffer->start = position - position % kPageSize;
  buffer->used = 0;
  const ssize_t count = pread64(descriptor, buffer->data, static_cast<size_t>(buffer->capacity),
                                static_cast<off64_t>(buffer->start));
  if (count <= 0) return static_cast<int>(count);
  buffer->used = static_cast<int>(count);
  return std::max(0, buffer->used - static_cast<int>(position - buffer->start));
}

int ReadBuffered(const st_UPNP_FILE* file, st_UPNP_FILE_BUFFER* buffer, char* to, int length) {
  int done = 0;
  while (done < length) {
    const long long position = file->position + done;
    const int copied = CopyFromBuffer(buffer, position, to + done, length - done);
    if (copied > 0) {
      done += copied;
      continue;
    }
    const int left = length - done;
    const bool large = left >= buffer->capacity;  // a large piece goes straight to the caller
    const int count =
        large ? static_cast<int>(pread64(file->descriptor, to + done, static_cast<size_t>(left),
                                         static_cast<off64_t>(position)))
              : FillBuffer(file->descriptor, position, buffer);
    if (count < 0) {
      NoteReadError(file, errno);
      return done > 0 ? done : -1;
    }
    if (count == 0) break;
    if (large) done += count;
  }
  return done;
}

// A buffered handle keeps its own position, so seeking inside the file needs no system call; what
// is allowed beyond its end is the system's to say.
long long SeekBuffered(const st_UPNP_FILE* file, long long offset, int whence) {
  long long base = 0;
  if (whence == SEEK_CUR)
    base = file->position;
  else if (whence != SEEK_SET)
    return Seek(file, offset, whence);
  long long target = 0;
  if (__builtin_add_overflow(base, offset, &target)) return -1;
  const bool inside = target >= 0 && target <= file->size;
  return inside ? target : Seek(file, target, SEEK_SET);
}

int ReadUnbuffered(const st_UPNP_FILE* file, void* to, int length) {
  const auto count = static_cast<int>(read(file->descriptor, to, static_cast<size_t>(length)));
  if (count < 0) NoteReadError(file, errno);
  return count;
}

}  // namespace

st_UPNP_FILE* orx::OpenHandle(const char* path, struct stat64* status) {
  OpenedFile opened(path);
  *status = opened.status();
  st_UPNP_FILE* file = MakeHandle(opened.Release());
  if (file == nullptr) return nullptr;
  file->size = status->st_size;
  if (S_ISREG(status->st_mode)) AddReadBuffer(file);
  return file;
}

int open_read(const char* path) {
  const int descriptor = orx::OpenedFile(path).Release();
  if (descriptor >= 0) orx::LetBlock(descriptor);
  return descriptor;
}

int open_write(const char* path) { return OpenToWrite(path, O_WRONLY | O_CREAT); }

int open_append(const char* path) { return OpenToWrite(path, O_RDWR | O_APPEND); }

int close_file(int descriptor) { return close(descriptor); }

st_UPNP_FILE* upnp_file_open_read(const char* path) {
  orx::OpenedFile opened(path);
  const long long size = opened.status().st_size;
  st_UPNP_FILE* file = MakeHandle(opened.Release());
  if (file != nullptr) file->size = size;
  return file;
}

st_UPNP_FILE* upnp_file_open_append(const char* path) {
  st_UPNP_FILE* file = MakeHandle(open_append(path));
  if (file == nullptr) return nullptr;
  struct stat64 status = {};
  file->size = fstat64(file->descriptor, &status) == 0 ? status.st_size : -1;
  if (file->size < 0) orx::NoteSystemError("fstat", path, errno);
  return file;
}

st_UPNP_FILE* upnp_file_open_write(const char* path) { return MakeHandle(open_write(path)); }

void upnp_file_close(st_UPNP_FILE* file) {
  if (file == nullptr) return;
  if (file->descriptor > 0) close_file(file->descriptor);
  for (st_UPNP_FILE_BUFFER* node = file->buffers; node != nullptr;) {
    st_UPNP_FILE_BUFFER* next = node->next;
    free(node->data);
    free(node);
    node = next;
  }
  free(file);
}

int upnp_file_read(st_UPNP_FILE* file, void* buffer, int length) {
  if (file == nullptr || buffer == nullptr || length < 0) return -1;
  if (IsUnreadFile(file)) AddReadBuffer(file);
  st_UPNP_FILE_BUFFER* cache = ReadBuffer(file);
  const int count = cache != nullptr ? ReadBuffered(file, cache, static_cast<char*>(buffer), length)
                                     : ReadUnbuffered(file, buffer, length);
  if (count > 0) file->position += count;
  return count;
}

int upnp_file_write(st_UPNP_FILE* file, const void* buffer, int length) {
  if (file == nullptr || buffer == nullptr || length < 0) return -1;
  return static_cast<int>(write(file->descriptor, buffer, static_cast<size_t>(length)));
}

long long upnp_file_seek(st_UPNP_FILE* file, long long offset, int whence) {
  if (file == nullptr) return -1;
  const long long result =
      ReadBuffer(file) != nullptr ? SeekBuffered(file, offset, whence) : Seek(file, offset, whence);
  if (result != -1) file->position = result;
  return result;
}

int upnp_file_eof(st_UPNP_FILE* file) {
  if (file == nullptr) return 1;
  return upnp_file_seek(file, 0, SEEK_CUR) >= file->size ? 1 : 0;
}

char* upnp_file_gets(char* buffer, int length, st_UPNP_FILE* file) {
  if (buffer == nullptr) return nullptr;
  if (length > 0) memset(buffer, 0, static_cast<size_t>(length));
  if (file == nullptr) return nullptr;
  for (int i = 0; i < length; ++i) {
    if (upnp_file_read(file, buffer + i, 1) <= 0) {
      buffer[i] = '\0';
      break;
    }
    if (buffer[i] == '\n') break;
  }
  return buffer;
}

int upnp_file_stat(const char* path, st_UPNP_FILE_STAT* status) {
  if (path == nullptr || status == nullptr) return -1;
  struct stat64 found = {};
  if (stat64(path, &found) != 0) {
    orx::NoteOpenError("stat", path, errno);
    return -1;
  }
  FillStatus(found, status);
  return 0;
}

int upnp_file_mkdir(const char* path) { return path == nullptr ? -1 : mkdir(path, 0777); }

int upnp_file_unlink(const char* path) { return path == nullptr ? -1 : unlink(path); }

void upnp_file_find_close(st_UPNP_FINDFILE* find) {
  if (find == nullptr) return;
  if (find->directory != nullptr) closedir(find->directory);
  free(find->text1);
  free(find->text2);
  free(find->text3);
  free(find);
}
