// The string layer: what a scan does to paths and titles, and what a server does to texts.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "FileScanner/MediaMetaData.h"
#include "OSAL/ORXLog.h"
#include "OSAL/StringUtiltiy.h"
#include "OSAL/UniqueValueGenerator.h"
#include "UpnpUtil/upnp_string.h"

namespace {

constexpr char kPath[] = "/mnt/mmc/DCIM/100PHOTO/ORXA0001.JPG";
constexpr char kAccented[] = "/mnt/mmc/DCIM/100PHOTO/\xC3\x89t\xC3\xA9 \xC3\xA0 la mer.JPG";
constexpr char kEucKr[] = "\xB0\xA1\xB3\xAA\xB4\xD9\xB6\xF3.JPG";
constexpr char kShiftJis[] = "\x8E\xCA\x90\x5E\x82\xCC\x96\xBC\x91\x4F.JPG";

// Takes a text that comes from malloc.
void Release(char* text) {
  benchmark::DoNotOptimize(text);
  free(text);
}

void EucKrPathToUtf8(benchmark::State& state, std::string path) {
  for (auto _ : state) Release(StringUtiltiy::GetUtf8FromMultiByteStr(path.data()));
}
BENCHMARK_CAPTURE(EucKrPathToUtf8, ascii, kPath);
BENCHMARK_CAPTURE(EucKrPathToUtf8, korean, kEucKr);

void TitleOfPath(benchmark::State& state) {
  for (auto _ : state) Release(MediaMetaData::GetTitleFromFullPath(kPath));
}
BENCHMARK(TitleOfPath);

void SortIndexOfPath(benchmark::State& state) {
  for (auto _ : state) Release(MediaMetaData::GetSortIndexFromFullPath(kPath));
}
BENCHMARK(SortIndexOfPath);

void ResourceName(benchmark::State& state) {
  for (auto _ : state) Release(UniqueValueGenerator::GetInstance()->GetUniqueURIMA("JPG"));
}
BENCHMARK(ResourceName);

void LogLine(benchmark::State& state) {
  for (auto _ : state) ORX_LOG_INFO("[%s] Parse Success", kPath);
}
BENCHMARK(LogLine);

void GrowText(benchmark::State& state) {
  for (auto _ : state) {
    st_upnp_string* text = nullptr;
    for (int i = 0; i < 100; ++i) text = upnp_string_concat(text, kPath);
    benchmark::DoNotOptimize(text);
    upnp_string_free(text);
  }
}
BENCHMARK(GrowText);

void LatinToUtf8(benchmark::State& state) {
  for (auto _ : state) Release(strdup_to_utf8("caf\xE9 \xE0 la cr\xE8me"));
}
BENCHMARK(LatinToUtf8);

void EucKrToUtf8(benchmark::State& state) {
  for (auto _ : state) Release(convert_MB_to_UTF8(kEucKr, sizeof kEucKr - 1));
}
BENCHMARK(EucKrToUtf8);

void ShiftJisToUtf8(benchmark::State& state) {
  for (auto _ : state) Release(upnp_util_convert_shift_jis_to_utf8(kShiftJis));
}
BENCHMARK(ShiftJisToUtf8);

void CompareFolded(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(utf8_stricmp(kAccented, kAccented));
}
BENCHMARK(CompareFolded);

void FindIgnoringCase(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(istrstr(kPath, "jpg"));
}
BENCHMARK(FindIgnoringCase);

}  // namespace

BENCHMARK_MAIN();
