// What the worst files cost: processor time and memory of one parse, through the parsers as a scan
// calls them and with the PC's platform.  Prints a table in Markdown; fails where a file costs more
// than it may.
//
// usage: worst_bench DIRECTORY   (where the files are made; one that lies in memory)
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/FileInfomation.h"
#include "FileScanner/FileParserFramework.h"
#include "FileScanner/MediaMetaData.h"
#include "host/HostPlatform.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"

// ---- every allocation of the process passes through here (glibc's own names behind it) ----

namespace {
size_t inUse = 0, peak = 0;

void* Counted(void* block) {
  if (block != nullptr) inUse += malloc_usable_size(block);
  peak = std::max(peak, inUse);
  return block;
}
void Forget(void* block) {
  if (block != nullptr) inUse -= malloc_usable_size(block);
}
}  // namespace

extern "C" {
// NOLINTBEGIN: the names are glibc's
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

__attribute__((visibility("default"))) void* malloc(size_t size) {
  return Counted(__libc_malloc(size));
}
__attribute__((visibility("default"))) void* calloc(size_t count, size_t size) {
  return Counted(__libc_calloc(count, size));
}
__attribute__((visibility("default"))) void* realloc(void* block, size_t size) {
  Forget(block);
  return Counted(__libc_realloc(block, size));
}
__attribute__((visibility("default"))) void free(void* block) {
  Forget(block);
  __libc_free(block);
}
// NOLINTEND
}

namespace {

using namespace orx_test;

constexpr double kMostMs = 50;
constexpr double kMostMb = 4;
constexpr int kRuns = 5;
constexpr size_t kMb = 1024 * 1024;

// A file that grows piece by piece and may have holes.
class Target {
 public:
  explicit Target(const std::string& path)
      : descriptor_(open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600)) {
    if (descriptor_ < 0) Fail();
  }
  ~Target() { close(descriptor_); }
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;

  Target& Add(const std::string& bytes) {
    if (pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(end_)) !=
        static_cast<ssize_t>(bytes.size()))
      Fail();
    end_ += bytes.size();
    return *this;
  }
  Target& Repeat(const std::string& bytes, size_t total) {
    std::string block;
    while (block.size() < std::min(total, kMb)) block += bytes;
    for (size_t done = 0; done < total; done += block.size()) Add(block);
    return *this;
  }
  // `count` pieces, each at the start of `stride` bytes.
  Target& Scatter(const std::string& bytes, uint64_t stride, size_t count) {
    for (size_t i = 0; i < count; ++i) {
      Add(bytes);
      end_ += stride - bytes.size();
    }
    return End();
  }
  Target& Hole(uint64_t size) {
    end_ += size;
    return End();
  }

 private:
  [[noreturn]] static void Fail() {
    perror("worst_bench");
    exit(1);
  }
  Target& End() {
    if (ftruncate(descriptor_, static_cast<off_t>(end_)) != 0) Fail();
    return *this;
  }

  int descriptor_;
  uint64_t end_ = 0;
};

std::string Start(const TiffBuilder& tiff) { return StartOfImage() + ExifSegment(tiff.Build()); }
std::string Start() { return Start(TiffBuilder().Short(274, 1)); }

// A picture whose directory says that the thumbnail begins at `offset`.
std::string StartWithThumbnailAt(uint32_t offset) {
  return Start(TiffBuilder().Long(513, offset).Long(514, 0x7FFFFFFF));
}

std::string ManyEntries() {
  TiffBuilder tiff;
  for (unsigned i = 0; i < 5400; ++i)
    tiff.Entry(static_cast<uint16_t>(i % 2 == 0 ? 37510 : 270), 2, 65000, 70000);
  return tiff.Build();
}

std::string LongTexts() {
  const std::string digits(65000, '1');
  constexpr uint32_t offset = 8 + 2 + 12 * 6 + 4;  // behind the directory
  TiffBuilder tiff;
  for (const uint16_t tag : std::initializer_list<uint16_t>{270, 305, 306, 36867})
    tiff.Entry(tag, kAscii, static_cast<uint32_t>(digits.size()), offset);
  tiff.Long(34665, 8).Short(274, 1);
  return tiff.Build() + digits.substr(0, 65400 - tiff.Build().size());
}

// The index of a multi-picture file, and a frame header behind it.  Every entry is a large preview
// that begins where that ends.
std::string ManyPreviews() {
  constexpr unsigned kCount = 4000;
  const auto index = [](uint32_t offset) {
    std::string entries;
    for (unsigned i = 0; i < kCount; ++i)
      entries += Bytes32(0x010001, TiffOrder::kBig) + Bytes32(60 * kMb, TiffOrder::kBig) +
                 Bytes32(offset, TiffOrder::kBig) + Bytes32(0, TiffOrder::kBig);
    return TiffBuilder().Data(0xB002, kUndefined, kCount * 16, entries).Build();
  };
  const std::string frame = FrameHeader(640, 480);
  const auto end = static_cast<uint32_t>(index(0).size() + frame.size());
  return Segment(0xE2, std::string("MPF\0", 4) + index(end)) + frame;
}

std::string Brands(size_t size) {
  std::string brands;
  while (brands.size() < size) brands += "mp41";
  return Ftyp("isom", brands);
}

std::string Nested(int depth) {
  std::string boxes;
  for (int i = 0; i < depth; ++i) boxes = Box("moov", boxes);
  return boxes;
}

struct Worst {
  const char* name;
  const char* extension;
  void (*make)(Target* file);
};

const std::string kLastSound = Hdlr("soun");  // NOLINT(cert-err58-cpp)

const Worst kWorst[] = {
    // ---- JPEG ----
    {"64 MB of empty segments", ".jpg",
     [](Target* file) { file->Add(Start()).Repeat(std::string("\xFF\xE2\0\2", 4), 64 * kMb); }},
    {"64 MB of segments of length 0", ".jpg",
     [](Target* file) { file->Add(Start()).Repeat(std::string("\xFF\1\0\0", 4), 64 * kMb); }},
    {"20,000 segments of 64 KB", ".jpg",
     [](Target* file) { file->Add(Start()).Scatter("\xFF\xE2\xFF\xFF", 65537, 20000); }},
    {"4 GB of zeros instead of segments", ".jpg",
     [](Target* file) { file->Add(Start()).Hole(uint64_t{4} << 30); }},
    {"64 MB without a thumbnail", ".jpg",
     [](Target* file) {
       file->Add(StartWithThumbnailAt(100)).Repeat(std::string("\xFF\0", 2), 64 * kMb);
     }},
    {"a thumbnail of 20,000 segments", ".jpg",
     [](Target* file) {
       file->Add(StartWithThumbnailAt(70)).Add(FrameHeader(640, 480)).Add(StartOfImage());
       file->Scatter("\xFF\xE2\xFF\xFF", 65537, 20000);
     }},
    {"segments, search and a thumbnail of segments", ".jpg",
     [](Target* file) {
       file->Add(StartWithThumbnailAt(70))
           .Scatter("\xFF\xE2\x40\0", 16386, 2040)
           .Add(StartOfImage());
       file->Scatter("\xFF\xE2\xFF\xFF", 65537, 3000);
     }},
    {"5,400 entries of 65,000 bytes", ".jpg",
     [](Target* file) { file->Add(StartOfImage() + ExifSegment(ManyEntries())).Hole(kMb); }},
    {"texts and dates of 65,000 digits", ".jpg",
     [](Target* file) { file->Add(StartOfImage() + ExifSegment(LongTexts())).Hole(kMb); }},
    {"4,000 previews of 64 MB of segments", ".mpo",
     [](Target* file) {
       file->Add(Start() + ManyPreviews() + StartOfImage());
       file->Repeat(std::string("\xFF\xE2\0\2", 4), 64 * kMb);
     }},
    {"64 MB of fill bytes", ".jpg",
     [](Target* file) { file->Add(Start()).Repeat("\xFF", 64 * kMb); }},
    // ---- MP4 ----
    {"64 MB of empty boxes", ".mp4",
     [](Target* file) { file->Repeat(Box("free", ""), 64 * kMb).Add(kLastSound); }},
    {"64 MB of empty containers", ".mp4",
     [](Target* file) { file->Add(kLastSound).Repeat(Box("moov", ""), 64 * kMb); }},
    {"64 MB of containers, 100 deep", ".mp4",
     [](Target* file) { file->Add(kLastSound).Repeat(Nested(100), 64 * kMb); }},
    {"64 MB of media headers", ".mp4",
     [](Target* file) { file->Add(kLastSound).Repeat(Mdhd(1, 0xFFFFFFFF), 64 * kMb); }},
    {"64 MB of movie headers", ".mp4",
     [](Target* file) { file->Add(kLastSound).Repeat(Mvhd(1, 3, UINT64_MAX), 64 * kMb); }},
    {"64 MB of sound entries, 60,000 bytes of brands", ".mp4",
     [](Target* file) { file->Add(Brands(60000)).Add(kLastSound).Repeat(Stsd(Mp4a()), 64 * kMb); }},
    {"1,000 lists of brands of 60,000 bytes", ".mp4",
     [](Target* file) { file->Add(kLastSound).Repeat(Brands(60000), 60 * kMb); }},
    {"a table of 2^32 sizes in 4 GB", ".mp4",
     [](Target* file) {
       file->Add(Hdlr("vide"));
       file->Add(BoxOfSize(0xFFFFFF00, "stbl", Stsd(Avc1(640, 480, 66, 30))));
       file->Add(BoxOfSize(0xFFFFF000, "stsz", U32(0) + U32(0) + U32(0xFFFFFFFF)));
       file->Hole(uint64_t{4} << 30);
     }},
    {"64 MB of titles of 4 bytes", ".m4a",
     [](Target* file) {
       std::string items;
       while (items.size() < 64 * kMb) items += TextItem("\251nam", "name");
       file->Add(kLastSound).Add(Ilst(items));
     }},
    {"titles of 60,000 bytes", ".m4a",
     [](Target* file) {
       std::string items;
       while (items.size() < 64 * kMb)
         for (const char* type : {"\251nam", "\251ART", "\251alb", "\251gen", "\251day"})
           items += TextItem(type, std::string(60000, 't'));
       file->Add(Brands(60000)).Add(kLastSound).Add(Ilst(items));
     }},
    {"a title of 1 GB", ".m4a",
     [](Target* file) {
       file->Add(kLastSound).Add(BoxOfSize(0x40000010, "ilst", ""));
       file->Add(BoxOfSize(0x40000008, "\251nam", BoxOfSize(0x40000000, "data", "")));
       file->Hole(uint64_t{1} << 30);
     }},
    {"20,000 boxes of 16 KB", ".mp4",
     [](Target* file) { file->Add(kLastSound).Scatter(U32(16384) + "free", 16384, 20000); }},
    {"64 MB of boxes of 1 KB, all headers", ".mp4",
     [](Target* file) {
       std::string box = Mdhd(1, 1000);
       file->Add(kLastSound);
       file->Repeat(box + Box("free", Zeros(1024 - box.size() - 8)), 64 * kMb);
     }},
    {"20,000 boxes of 64-bit size", ".mp4",
     [](Target* file) {
       file->Add(kLastSound).Scatter(U32(1) + "free" + U64(65536), 65536, 20000);
     }},
    {"64 MB of empty boxes of 64-bit size", ".mp4",
     [](Target* file) { file->Add(kLastSound).Repeat(LargeBox("free", ""), 64 * kMb); }},
    {"200 MB of sync words", ".aac",
     [](Target* file) { file->Repeat(std::string("\xFF\xF1", 2), 200 * kMb); }},
    {"a picture and a film in one", "",
     [](Target* file) {  // the start of the picture is a box of 4 GB
       const std::string start = StartWithThumbnailAt(70);
       file->Add(start).Scatter("\xFF\xE2\x40\0", 16386, 2040).Add(StartOfImage());
       file->Scatter("\xFF\xE2\x40\0", 16386, 3000);
       file->Hole(0xFFD8FFE1 - start.size() - uint64_t{5040} * 16386 - 2);
       file->Scatter(BoxOfSize(16384, "mdhd", Mdhd(1, 1).substr(8)), 16384, 5000);
     }},
    {"a picture and a film in one, both up to every limit", "",
     [](Target* file) {
       const std::string start = StartWithThumbnailAt(70);
       file->Add(start).Scatter("\xFF\xE2\x40\0", 16386, 2040).Add(StartOfImage());
       file->Scatter("\xFF\xE2\xFF\xFF", 65537, 3000);
       file->Hole(0xFFD8FFE1 - start.size() - uint64_t{2040} * 16386 - 2 - uint64_t{3000} * 65537);
       file->Scatter(BoxOfSize(16384, "mvhd", Mvhd(1, 3, UINT64_MAX).substr(8)), 16384, 4090);
       file->Repeat(Mvhd(1, 3, UINT64_MAX), 2 * kMb).Repeat(Brands(60000), 20 * kMb);
     }},
    // ---- long, but honest ----
    {"a film of 36,000 fragments", ".mp4",
     [](Target* file) {
       file->Add(MakeMp4());
       const std::string fragment =
           Box("moof", FullBox("mfhd", 0, U32(1)) +
                           Box("traf", FullBox("tfhd", 0, U32(1)) + FullBox("trun", 0, U32(0))));
       file->Scatter(fragment + U32(65536 - fragment.size()) + "mdat", 65536, 36000);
     }},
    {"a film of 2,160,000 pictures", ".mp4",
     [](Target* file) {
       file->Add(Hdlr("vide"));
       file->Add(Box("stbl",
                     Stsd(Avc1(640, 480, 66, 30)) + Stsz(0, std::vector<uint32_t>(2160000, 5000))));
     }},
    {"a picture with 60 MB of metadata", ".jpg",
     [](Target* file) {
       file->Add(Start()).Scatter("\xFF\xE2\xFF\xFF", 65537, 960).Add(FrameHeader(640, 480));
     }},
};

struct Cost {
  double ms = 1e9;
  double mb = 0;

  bool isTooMuch() const { return ms > kMostMs || mb > kMostMb; }
};

double ProcessorMs() {
  timespec now = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// One piece of work: `cost` keeps the least time of all and the most memory of any.
template <typename Work>
void Measure(Cost* cost, Work work) {
  const size_t before = peak = inUse;
  const double start = ProcessorMs();
  work();
  cost->ms = std::min(cost->ms, ProcessorMs() - start);
  cost->mb = std::max(cost->mb, static_cast<double>(peak - before) / kMb);
}

Cost CostOfParsing(const std::string& folder, const std::string& name) {
  FileParserFramework parsers;
  const std::string path = folder + "/" + name;
  Cost cost;
  for (int run = 0; run < kRuns; ++run)
    Measure(&cost, [&] {
      const FileInfomation file(folder.c_str(), name.c_str(), path.c_str());
      delete parsers.HandleFile(&file);
    });
  return cost;
}

// With its record in a database in memory.
Cost CostOfRegistering(const std::string& path) {
  Cost cost;
  for (int run = 0; run < kRuns; ++run) {
    DirectoryScanner* scanner = DirectoryScanner::GetInstance();
    scanner->SetDlnaProfiles(pProfiles);
    if (DataBaseMgr::GetInstance()->CreateDbmsSystem(":memory:") == 0) exit(1);
    Measure(&cost, [&] { scanner->ParseAndRegisterFile("unused", path.c_str(), nullptr); });
    DirectoryScanner::DestroyInstance();
    DataBaseMgr::DestroyInstance();
  }
  return cost;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: worst_bench DIRECTORY\n");
    return 2;
  }
  HostPlatform::SetLogSink([](int, int, const std::string&, const std::string&) {});
  FILE* table = fdopen(dup(STDOUT_FILENO), "w");  // the library says things of its own
  if (table == nullptr || freopen("/dev/null", "w", stdout) == nullptr) return 1;
  int failures = 0;
  fprintf(table, "| file | parse, ms | MB | with its record, ms | MB |\n");
  fprintf(table, "| --- | --- | --- | --- | --- |\n");
  for (const Worst& worst : kWorst) {
    const std::string name = std::string("worst") + worst.extension;
    const std::string path = std::string(argv[1]) + "/" + name;
    {
      Target file(path);
      worst.make(&file);
    }
    const Cost parse = CostOfParsing(argv[1], name), record = CostOfRegistering(path);
    unlink(path.c_str());
    const bool missed = parse.isTooMuch() || record.isTooMuch();
    failures += missed ? 1 : 0;
    fprintf(table, "| %s%s%s | %.2f | %.2f | %.2f | %.2f |%s\n", worst.name,
            *worst.extension != '\0' ? ", " : "", worst.extension, parse.ms, parse.mb, record.ms,
            record.mb, missed ? " (missed)" : "");
    fflush(table);
  }
  fprintf(table, "\n%d files cost more than %.0f ms or %.0f MB\n", failures, kMostMs, kMostMb);
  fclose(table);
  return failures == 0 ? 0 : 1;
}
