// For every call of a small scan that may fail: the process survives, the database is sound, what
// is missing was logged, and the next undisturbed scan leaves what it would have left anyway.
#include <cerrno>
#include <string>
#include <tuple>

#include "robustness/Card.h"
#include "robustness/Injection.h"
#include "support/CardMount.h"

namespace orx_test {
namespace {

struct Fault {
  const char* name;
  Layer layer;
  Behaviour behaviour;
  int error;
  long step;  // between the calls that a short run lets fail
};

const Fault kFaults[] = {
    {"MemoryOnce", Layer::kMemory, Behaviour::kFailOnce, ENOMEM, 7},
    {"NoMoreMemory", Layer::kMemory, Behaviour::kFailFromThere, ENOMEM, 13},
    {"FileOnce", Layer::kFiles, Behaviour::kFailOnce, EIO, 1},
    {"KernelMemoryOnce", Layer::kFiles, Behaviour::kFailOnce, ENOMEM, 2},
    {"InterruptedOnce", Layer::kFiles, Behaviour::kFailOnce, EINTR, 2},
    {"DescriptorOnce", Layer::kFiles, Behaviour::kFailOnce, EMFILE, 2},
    {"SystemsDescriptorOnce", Layer::kFiles, Behaviour::kFailOnce, ENFILE, 2},
    {"StaleHandleOnce", Layer::kFiles, Behaviour::kFailOnce, ESTALE, 1},
    {"NoDeviceOnce", Layer::kFiles, Behaviour::kFailOnce, ENODEV, 1},
    {"NoDeviceFromThere", Layer::kFiles, Behaviour::kFailFromThere, ENODEV, 1},
    {"DamagedFileSystemOnce", Layer::kFiles, Behaviour::kFailOnce, EUCLEAN, 2},
    {"NotConnectedOnce", Layer::kFiles, Behaviour::kFailOnce, ENOTCONN, 2},
    {"ReadOnlyFileSystemOnce", Layer::kFiles, Behaviour::kFailOnce, EROFS, 2},
    {"TimeOutOnce", Layer::kFiles, Behaviour::kFailOnce, ETIMEDOUT, 2},
    {"NoMoreDescriptors", Layer::kFiles, Behaviour::kFailFromThere, EMFILE, 1},
    {"NoMoreKernelMemory", Layer::kFiles, Behaviour::kFailFromThere, ENOMEM, 3},
    {"DiskOnce", Layer::kDisk, Behaviour::kFailOnce, EIO, 1},
    {"DiskFull", Layer::kDisk, Behaviour::kFailFromThere, ENOSPC, 1},
};

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

// A directory's second row, which SQLite always turns down, is no fault.
size_t faultLines = 0;
void CountFaultLine(const char* line) {
  const std::string_view text(line);
  if (text.find("\x1b[31m") != std::string_view::npos &&
      text.find("ContainerTable") == std::string_view::npos)
    ++faultLines;
}

using Parameter = std::tuple<Fault, ScanKind>;

class FaultTest : public CardTest, public testing::WithParamInterface<Parameter> {
 protected:
  FaultTest() : CardTest(std::get<ScanKind>(GetParam())) {}
  void SetUp() override {
    if (card_.empty()) GTEST_SKIP() << CardMount::Problem();
  }

  // Lets one call after the other fail in a scan that begins with `before`.
  void FailEveryCall(const std::string& before) {
    Restore(before);
    Scan();
    const std::vector<std::string> expected = Contents();
    const Fault& fault = std::get<Fault>(GetParam());
    const long step = IsSoak() ? 1 : ShortStep(fault);
    long call = 1;
    for (bool struck = true; struck; call += step) {
      Restore(before);
      QuietPlatform::Get().onLine = CountFaultLine;
      faultLines = 0;
      Injection::Arm(fault.layer, call, fault.behaviour, fault.error);
      Scan();
      struck = Injection::Disarm();
      SCOPED_TRACE("call " + std::to_string(call));
      const bool complete = Contents() == expected;
      EXPECT_TRUE(complete || faultLines > 0) << "unlogged: " << Difference(Contents(), expected);
      Scan();
      EXPECT_EQ(Difference(Contents(), expected), "");
      if (HasFailure()) return;
    }
    RecordProperty("calls", static_cast<int>(call));
    EXPECT_GT(call, step);
  }

 private:
  void Restore(const std::string& before) const {
    RestoreDatabase(before);
    ForgetList();
    ResetPlatform();
  }
  // The scans of the shared files have most of their calls in common.
  long ShortStep(const Fault& fault) const {
    return kind_ != ScanKind::kFolder && fault.layer == Layer::kMemory ? 3 * fault.step
                                                                       : fault.step;
  }
};

TEST_P(FaultTest, AFirstScanIsMadeGoodByTheNext) {
  WriteSmallCard();
  FailEveryCall("");
}

TEST_P(FaultTest, ALaterScanIsMadeGoodByTheNext) {
  WriteSmallCard();
  Scan();
  const std::string before = DatabaseBytes();
  ChangeSmallCard();
  FailEveryCall(before);
}

INSTANTIATE_TEST_SUITE_P(
    Machine, FaultTest, testing::Combine(testing::ValuesIn(kFaults), testing::ValuesIn(kScanKinds)),
    [](const auto& test) {
      return std::string(std::get<Fault>(test.param).name) + NameOf(std::get<ScanKind>(test.param));
    });

}  // namespace
}  // namespace orx_test
