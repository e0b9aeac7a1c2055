#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "UpnpUtil/upnp_util.h"
#include "support/TempDir.h"
#include "support/Text.h"

namespace {

using orx_test::Taken;

std::string Title(const char* path) { return Taken(upnp_build_title_from_filename(path)); }

std::string CachePath(const char* dir, const char* name) {
  return Taken(make_cache_path(dir, name));
}

TEST(BuildTitle, IsTheFileNameWithoutItsExtension) {
  EXPECT_EQ(Title("/dir/clip.mp4"), "clip");
  EXPECT_EQ(Title("clip.mp4"), "clip");
  EXPECT_EQ(Title("/dir/clip"), "clip");
}

TEST(BuildTitle, TakesTheLaterOfBothSlashes) {
  EXPECT_EQ(Title("C:\\dir\\clip.mp4"), "clip");
  EXPECT_EQ(Title("/a\\b/clip.mp4"), "clip");
  EXPECT_EQ(Title("C:\\a/b\\clip.mp4"), "clip");
}

TEST(BuildTitle, CutsAtTheLastDotOfTheNameOnly) {
  EXPECT_EQ(Title("/dir/a.b.mp4"), "a.b");
  EXPECT_EQ(Title("/dir.d/clip"), "clip");
}

TEST(BuildTitle, IsNoTitleWhenNothingIsLeft) {
  EXPECT_EQ(Title("/dir/.mp4"), "No Title");
  EXPECT_EQ(Title("/dir/"), "No Title");
  EXPECT_EQ(Title(""), "No Title");
  EXPECT_EQ(Title(nullptr), "No Title");
}

TEST(MakeCachePath, ReplacesWhatNoFileNameShouldHold) {
  EXPECT_EQ(CachePath("/cache", "a:b?.jpg"), "/cache/a_b_.jpg");
  EXPECT_EQ(CachePath("/cache", "/\\:?\"<>|"), "/cache/________");
  EXPECT_EQ(CachePath("/cache", "a*b%c d\xC3\xA9"), "/cache/a*b%c d\xC3\xA9");
}

TEST(MakeCachePath, LeavesTheDirectoryAsItIs) { EXPECT_EQ(CachePath("C:/x?", "a"), "C:/x?/a"); }

TEST(MakeCachePath, DoesNotDoubleASlash) {
  EXPECT_EQ(CachePath("/cache/", "a"), "/cache/a");
  EXPECT_EQ(CachePath("C:\\cache\\", "a"), "C:\\cache\\a");
}

TEST(MakeCachePath, IsNullWhenEitherIsNullOrEmpty) {
  EXPECT_EQ(make_cache_path(nullptr, "a"), nullptr);
  EXPECT_EQ(make_cache_path("/cache", nullptr), nullptr);
  EXPECT_EQ(make_cache_path("", "a"), nullptr);
  EXPECT_EQ(make_cache_path("/cache", ""), nullptr);
}

// Makes names in a process that sees `root` as its file system's root, because the names lie below
// "/".  Its exit status tells which step went wrong: 0 none, 77 no such process can be had.
int MakeTempNamesBelow(const std::string& root) {
  const pid_t child = fork();
  if (child == 0) {
    if (chroot(root.c_str()) != 0 && (unshare(CLONE_NEWUSER) != 0 || chroot(root.c_str()) != 0))
      _exit(77);
    if (Taken(upnp_util_create_tempfilename()) != "/temp/tempfile0") _exit(1);
    if (upnp_util_create_tempfilename() != nullptr) _exit(2);  // the directory exists
    if (rmdir("/temp") != 0) _exit(3);
    if (Taken(upnp_util_create_tempfilename()) != "/temp/tempfile1") _exit(4);
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(CreateTempFileName, CountsNamesInADirectoryThatItCouldMake) {
  const orx_test::TempDir root;
  const int result = MakeTempNamesBelow(root.path());
  if (result == 77) GTEST_SKIP() << "no change of the root directory here";
  EXPECT_EQ(result, 0);
  struct stat status = {};
  EXPECT_EQ(stat(root.Path("temp").c_str(), &status), 0);
  EXPECT_TRUE(S_ISDIR(status.st_mode));
}

}  // namespace
