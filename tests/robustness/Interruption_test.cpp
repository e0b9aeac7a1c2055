// A scan that is killed leaves no row of its own; one that is cancelled leaves whole rows; the next
// undisturbed scan leaves what it would have left anyway.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <random>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "robustness/Card.h"
#include "robustness/Injection.h"
#include "support/CardMount.h"
#include "support/JpegBuilder.h"

namespace orx_test {
namespace {

constexpr int kFilesPerFolder = 100;

// A cancel may leave rows whose container is gone: then their parent is a bare number.
std::string WithoutParent(const std::string& row) { return row.substr(0, row.find("|parent=")); }
bool HasLostItsParent(const std::string& row) {
  const size_t parent = row.find("|parent=");
  return parent != std::string::npos && isdigit(row[parent + 8]) != 0;
}

// Whether the row is among the others, which are sorted; one that has lost its container, apart
// from that.
bool IsAmong(const std::vector<std::string>& rows, const std::string& row) {
  if (!HasLostItsParent(row)) return std::binary_search(rows.begin(), rows.end(), row);
  return std::any_of(rows.begin(), rows.end(), [&row](const std::string& other) {
    return WithoutParent(other) == WithoutParent(row);
  });
}

// Does something at the n-th line that a scan logs.
long linesLeft = 0;
void (*atLine)() = nullptr;
void CountDown(const char* /*line*/) {
  if (--linesLeft == 0) atLine();
}

class InterruptionTest : public CardTest, public testing::WithParamInterface<ScanKind> {
 protected:
  InterruptionTest() : CardTest(GetParam()) {}
  void SetUp() override {
    if (card_.empty()) GTEST_SKIP() << CardMount::Problem();
    WriteSmallCard();
    for (int folder = 200; folder < 200 + folders(); ++folder)
      for (int file = 0; file < kFilesPerFolder; ++file)
        Write(std::to_string(folder) + "PHOTO/IMGA" + std::to_string(1000 + file) + ".JPG",
              MakeJpeg());
  }
  // The platform shares no more than a thousand files, the newest.
  int folders() const { return IsSoak() ? (kind_ == ScanKind::kFolder ? 30 : 8) : 2; }
  static int moments() { return IsSoak() ? 300 : 30; }

  // What a scan begins with, once without a database and once with an older one.
  struct Stage {
    std::string bytes;
    std::vector<std::string> before, expected;
    long lines, diskCalls;  // of an undisturbed scan
  };
  std::vector<Stage> Stages() {
    std::vector<Stage> stages(2);
    Measure(&stages[0]);
    stages[1].bytes = DatabaseBytes();
    stages[1].before = stages[0].expected;
    ChangeSmallCard();
    for (int file = 0; file < kFilesPerFolder; file += 2)
      std::filesystem::remove(InCard("200PHOTO/IMGA" + std::to_string(1000 + file) + ".JPG"));
    for (int file = 0; file < kFilesPerFolder; ++file)
      Write("400PHOTO/IMGA" + std::to_string(1000 + file) + ".JPG", MakeJpeg());
    Measure(&stages[1]);
    stages.erase(stages.begin());  // its card is gone
    stages.push_back({"", {}, stages[0].expected, 0, 0});
    Measure(&stages[1]);
    return stages;
  }

  void Restore(const Stage& stage) const {
    RestoreDatabase(stage.bytes);
    ForgetList();
    ResetPlatform();
  }

  std::minstd_rand random_{20261121};

 private:
  void Measure(Stage* stage) {
    Restore(*stage);
    Injection::Arm(Layer::kDisk, -1, Behaviour::kFailOnce);
    Scan();
    Injection::Disarm();
    stage->diskCalls = Injection::Calls();
    stage->lines = static_cast<long>(QuietPlatform::Get().lines);
    stage->expected = Contents();
  }
};

TEST_P(InterruptionTest, AKilledScanLeavesNoRowOfItsOwn) {
  const std::vector<Stage> stages = Stages();
  // A scan may make a few calls less than the measured one: later resource names have longer
  // numbers, so its rows fill other pages.  A moment behind its end is drawn again.
  int killed = 0;
  for (int drawn = 0; killed < moments() && drawn < 2 * moments(); ++drawn) {
    const Stage& stage = stages[static_cast<size_t>(killed % 2)];
    const bool inWrite = killed % 4 < 2;
    const long call =
        1 + static_cast<long>(random_() %
                              static_cast<unsigned long>(inWrite ? stage.diskCalls : stage.lines));
    SCOPED_TRACE((inWrite ? "disk call " : "line ") + std::to_string(call));
    Restore(stage);
    const pid_t child = fork();
    if (child == 0) {
      if (inWrite) {
        Injection::Arm(Layer::kDisk, call, Behaviour::kKill);
      } else {
        linesLeft = call;
        atLine = [] { raise(SIGKILL); };
        QuietPlatform::Get().onLine = CountDown;
      }
      Scan();
      _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WIFSIGNALED(status)) ++killed;
    const std::vector<std::string> left = Contents();
    if (left != stage.expected) {
      EXPECT_EQ(Difference(left, stage.before), "");
    }
    Scan();
    ASSERT_EQ(Difference(Contents(), stage.expected), "");
  }
  EXPECT_EQ(killed, moments());
}

TEST_P(InterruptionTest, ACancelledScanIsCompletedByTheNext) {
  const std::vector<Stage> stages = Stages();
  for (int moment = 0; moment < moments(); ++moment) {
    const Stage& stage = stages[static_cast<size_t>(moment % 2)];
    linesLeft = 1 + static_cast<long>(random_() % static_cast<unsigned long>(stage.lines));
    SCOPED_TRACE("line " + std::to_string(linesLeft));
    Restore(stage);
    atLine = [] { DirectoryScanner::GetInstance()->CancelScanDirectory(); };
    if (moment % 4 < 2)
      atLine = [] {
        DirectoryScanner::GetInstance()->CancelScanDirectory();
        DataBaseMgr::GetInstance()->CancelInvalidateAllItems();
        DcfFileInfoVector::GetInstance()->CancelInvalidateAllItems();
      };
    QuietPlatform::Get().onLine = CountDown;
    Scan();
    QuietPlatform::Get().onLine = nullptr;
    ForgetList();  // which would stay cancelled
    // Nothing but rows that a whole scan leaves too, or that were there before.
    for (const std::string& row : Contents())
      EXPECT_TRUE(IsAmong(stage.expected, row) || IsAmong(stage.before, row)) << row;
    Scan();
    ASSERT_EQ(Difference(Contents(), stage.expected), "");
  }
}

class CancelTest : public CardTest, public testing::WithParamInterface<ScanKind> {
 protected:
  CancelTest() : CardTest(GetParam()) {}
  void SetUp() override {
    if (card_.empty()) GTEST_SKIP() << CardMount::Problem();
    WriteSmallCard();
  }
};

// In the small card, at every call to the machine: between a folder's row and the rows below it,
// too.
TEST_P(CancelTest, AScanCancelledAtAnyCallIsCompletedByTheNextEvenIfAFolderIsBack) {
  Write("200PHOTO/IMGA1000.JPG", MakeJpeg());
  Write("200PHOTO/IMGA1001.JPG", MakeJpeg());
  ForgetList();
  ResetPlatform();
  Scan();
  const std::string bytes = DatabaseBytes();
  const std::string away = temp_.Path("away");
  for (const bool back : {false, true}) {
    std::filesystem::rename(InCard("200PHOTO"), away);
    ForgetList();
    ResetPlatform();
    Scan();
    if (back) RestoreDatabase(bytes);  // with the folder, as it is to be in the end
    const std::vector<std::string> expected = Contents();
    for (const Layer layer : {Layer::kFiles, Layer::kMemory}) {
      const long step = layer == Layer::kFiles || IsSoak() ? 1 : 11;
      bool struck = true;
      for (long call = 1; struck; call += step) {
        SCOPED_TRACE("call " + std::to_string(call) + (back ? ", folder back" : ""));
        RestoreDatabase(bytes);
        ForgetList();
        ResetPlatform();
        Injection::OnCancel([] {
          if (DataBaseMgr::mpThisInstance != nullptr)
            DataBaseMgr::mpThisInstance->CancelInvalidateAllItems();
        });
        Injection::Arm(layer, call, Behaviour::kCancel);
        Scan();
        struck = Injection::Disarm();
        if (back) std::filesystem::rename(away, InCard("200PHOTO"));
        ForgetList();
        ResetPlatform();
        Scan();
        EXPECT_EQ(Difference(Contents(), expected), "");
        if (back) std::filesystem::rename(InCard("200PHOTO"), away);
        if (HasFailure()) return;
      }
    }
    std::filesystem::rename(away, InCard("200PHOTO"));
  }
}

INSTANTIATE_TEST_SUITE_P(Scans, InterruptionTest, testing::ValuesIn(kScanKinds),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

INSTANTIATE_TEST_SUITE_P(Scans, CancelTest, testing::ValuesIn(kScanKinds),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

}  // namespace
}  // namespace orx_test
