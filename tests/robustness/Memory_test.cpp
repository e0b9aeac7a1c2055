// Missing memory: who logs it, and what an operation leaves that gives up because of it.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/OwnedText.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXAString.h"
#include "OSAL/ORXCString.h"
#include "OSAL/ORXMemory.h"
#include "OSAL/ORXUString.h"
#include "OSAL/StringUtiltiy.h"
#include "UpnpUtil/upnp_string.h"
#include "UpnpUtil/upnp_util.h"
#include "robustness/Card.h"
#include "robustness/Injection.h"

namespace orx_test {
namespace {

// Runs `operation` with no memory from its `call`-th block on.
template <typename Operation>
bool WithoutMemory(Operation&& operation, long call = 1) {
  Injection::Arm(Layer::kMemory, call, Behaviour::kFailFromThere, ENOMEM);
  operation();
  return Injection::Disarm();
}

struct TextFunction {
  const char* name;
  bool (*answersNull)();
};

void PrintTo(const TextFunction& function, std::ostream* out) { *out << function.name; }

char text[] = "text";
const unsigned short wide[] = {'t', 0};

const TextFunction kTextFunctions[] = {
    {"Malloc", [] { return ORXMemory::Malloc(1) == nullptr; }},
    {"DupCopy", [] { return ORXCString::DupCopy(text) == nullptr; }},
    {"DupCopyOf8Bit", [] { return ORXAString::DupCopy(text) == nullptr; }},
    {"DupCopyOfEither", [] { return ORXUString::DupCopy(text) == nullptr; }},
    {"DupCopyOf16Bit", [] { return ORXUString::DupCopyW(wide) == nullptr; }},
    {"OwnedText", [] { return !orx::OwnedText().Set(text); }},
    {"PlatformText", [] { return StringUtiltiy::GetTcharFromChar(text) == nullptr; }},
    {"FromMultiByte", [] { return StringUtiltiy::GetUtf8FromMultiByteStr(text) == nullptr; }},
    {"FromEucKr", [] { return convert_MB_to_UTF8(text, 4) == nullptr; }},
    {"FromShiftJis", [] { return upnp_util_convert_shift_jis_to_utf8(text) == nullptr; }},
    {"ToUtf8", [] { return strdup_to_utf8(text) == nullptr; }},
    {"FromUtf8", [] { return strdup_from_utf8(text) == nullptr; }},
    {"FromUtf16", [] { return UnicodeToMultiByte(wide, 1) == nullptr; }},
    {"GrowableText", [] { return upnp_string_create(text, 4) == nullptr; }},
    {"Base64", [] { return string_to_base64(text) == nullptr; }},
    {"Title", [] { return upnp_build_title_from_filename(text) == nullptr; }},
    {"CachePath", [] { return make_cache_path(text, text) == nullptr; }},
    {"Duration", [] { return upnp_duration_to_string(1) == nullptr; }},
};

class TextFunctionTest : public testing::TestWithParam<TextFunction> {};

TEST_P(TextFunctionTest, CountsMissingMemoryWithoutALine) {
  const QuietPlatform& platform = QuietPlatform::Reset();
  const orx::Faults before = orx::FaultsSoFar();
  EXPECT_TRUE(WithoutMemory([] { EXPECT_TRUE(GetParam().answersNull()); }));
  EXPECT_GT(orx::FaultsSoFar().outOfMemory, before.outOfMemory);
  EXPECT_EQ(platform.lines, 0u);
}

INSTANTIATE_TEST_SUITE_P(Layer, TextFunctionTest, testing::ValuesIn(kTextFunctions),
                         [](const auto& test) { return std::string(test.param.name); });

// ---- operations that give up ----

void CopyInAnOperation() {
  const orx::FaultWatch watch;
  EXPECT_EQ(ORXCString::DupCopy(text), nullptr);
  EXPECT_EQ(ORXCString::DupCopy(text), nullptr);
}

TEST(FaultWatch, LogsOnceWhatTheStringLayerCounted) {
  const QuietPlatform& platform = QuietPlatform::Reset();
  WithoutMemory([] {
    const orx::FaultWatch outer;
    CopyInAnOperation();
  });
  EXPECT_EQ(platform.errorLines, 1u);
  EXPECT_NE(strstr(platform.lastError, "Error : out of memory in CopyInAnOperation (DupCopy)"),
            nullptr)
      << platform.lastError;
}

TEST(FaultWatch, LogsNothingThatWasCountedBeforeItBegan) {
  const QuietPlatform& platform = QuietPlatform::Reset();
  WithoutMemory([] { EXPECT_EQ(ORXCString::DupCopy(text), nullptr); });
  { const orx::FaultWatch watch; }
  EXPECT_EQ(platform.errorLines, 0u);
}

class MemoryTest : public CardTest {};

TEST_F(MemoryTest, MissingForASecondProfileListLeavesNone) {
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles("FIRST;");
  EXPECT_EQ(scanner->_IsProfileSupported("FIRST"), 1);
  const QuietPlatform& platform = QuietPlatform::Reset();
  EXPECT_TRUE(WithoutMemory([=] { scanner->SetDlnaProfiles("SECOND;"); }));
  EXPECT_EQ(scanner->_IsProfileSupported("FIRST"), 0);
  EXPECT_EQ(scanner->_IsProfileSupported("*"), 1);
  EXPECT_EQ(platform.errorLines, 1u);
  EXPECT_NE(strstr(platform.lastError, "SetDlnaProfiles"), nullptr) << platform.lastError;
  scanner->SetDlnaProfiles("THIRD;");
  EXPECT_EQ(scanner->_IsProfileSupported("THIRD"), 1);
}

// The leak checker of a sanitized run sees what was not released.
TEST_F(MemoryTest, MissingForABackupListReleasesWhatThereWasOfIt) {
  WriteSmallCard();
  Scan();
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  ASSERT_NE(database->OpenDB(db_.c_str()), 0);
  bool struck = true;
  for (long call = 1; struck; ++call) {
    SCOPED_TRACE("call " + std::to_string(call));
    const size_t before = QuietPlatform::Get().errorLines;
    const orx::FaultWatch watch;
    int count = 0;
    BackupClassElement* head = nullptr;
    Injection::Arm(Layer::kMemory, call, Behaviour::kFailOnce, ENOMEM);
    const bool complete = database->GetClassElementListForBackup(&count, &head) != 0;
    struck = Injection::Disarm();
    EXPECT_TRUE(struck || complete);
    // A query that fails is silent.
    EXPECT_EQ(QuietPlatform::Get().errorLines > before, watch.Seen());
    EXPECT_EQ(head == nullptr, !complete);
    for (BackupClassElement* next = nullptr; head != nullptr; head = next) {
      next = head->pNext;
      free(head);
    }
    if (HasFailure()) break;
  }
}

}  // namespace
}  // namespace orx_test
