// For every call of a small scan that may fail: the process survives, the database is sound, what
// is missing was logged, and the next undisturbed scan leaves what it would have left anyway.
#include <cerrno>
#include <string>

#include "robustness/Card.h"
#include "robustness/Injection.h"

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

class FaultTest : public CardTest, public testing::WithParamInterface<Fault> {
 protected:
  // Lets one call after the other fail in a scan that begins with `before`.
  void FailEveryCall(const std::string& before) {
    RestoreDatabase(before);
    Scan();
    const std::vector<std::string> expected = Contents();
    const Fault& fault = GetParam();
    const long step = IsSoak() ? 1 : fault.step;
    long call = 1;
    for (bool struck = true; struck; call += step) {
      RestoreDatabase(before);
      QuietPlatform::Reset().onLine = CountFaultLine;
      faultLines = 0;
      Injection::Arm(fault.layer, call, fault.behaviour, fault.error);
      Scan();
      struck = Injection::Disarm();
      SCOPED_TRACE("call " + std::to_string(call));
      const bool complete = Contents() == expected;
      EXPECT_TRUE(complete || faultLines > 0) << "unlogged, call " << call;
      Scan();
      EXPECT_EQ(Difference(Contents(), expected), "");
      if (HasFailure()) return;
    }
    RecordProperty("calls", static_cast<int>(call));
    EXPECT_GT(call, 10 * step);
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

INSTANTIATE_TEST_SUITE_P(Machine, FaultTest, testing::ValuesIn(kFaults),
                         [](const auto& fault) { return std::string(fault.param.name); });

}  // namespace
}  // namespace orx_test
