#include "robustness/Observed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "FileScanner/DataBaseMgr.h"
#include "fuzz/support/QuietPlatform.h"

namespace orx_test {
namespace {

ObservedLog* current = nullptr;

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

int CountContaining(const std::vector<std::string>& texts, const std::string& part) {
  return static_cast<int>(
      std::count_if(texts.begin(), texts.end(),
                    [&part](const std::string& text) { return Contains(text, part); }));
}

}  // namespace

ObservedLog::ObservedLog() {
  current = this;
  QuietPlatform::Get().onLine = Add;
}

ObservedLog::~ObservedLog() {
  QuietPlatform::Get().onLine = nullptr;
  current = nullptr;
}

void ObservedLog::Add(const char* line) {
  current->lines_.emplace_back(line);
  if (current->action_ && Contains(line, current->part_)) current->action_();
}

std::vector<std::string> ObservedLog::Errors() const {
  std::vector<std::string> errors;
  for (const std::string& line : lines_)
    if (Contains(line, "\x1b[31m") && !Contains(line, "insert into ContainerTable"))
      errors.push_back(line);
  return errors;
}

int ObservedLog::Count(const std::string& part) const { return CountContaining(lines_, part); }

void ObservedLog::At(const std::string& part, std::function<void()> action) {
  part_ = part;
  action_ = std::move(action);
}

// The scan, which finds the connection open, keeps it.
ObservedStatements::ObservedStatements(const std::string& db) {
  EXPECT_EQ(DataBaseMgr::GetInstance()->OpenDB(db.c_str()), 1);
  sqlite3_trace_v2(*DataBaseMgr::GetInstance()->getPpDataBase(), SQLITE_TRACE_STMT, Add, this);
}

int ObservedStatements::Add(unsigned /*kind*/, void* self, void* statement, void* /*text*/) {
  char* expanded = sqlite3_expanded_sql(static_cast<sqlite3_stmt*>(statement));
  static_cast<ObservedStatements*>(self)->all_.emplace_back(expanded != nullptr ? expanded : "");
  sqlite3_free(expanded);
  return 0;
}

int ObservedStatements::Count(const std::string& part) const { return CountContaining(all_, part); }

OtherConnection::OtherConnection(const std::string& db) {
  EXPECT_EQ(sqlite3_open(db.c_str(), &connection_), SQLITE_OK);
}

OtherConnection::~OtherConnection() {
  EndReading();
  EXPECT_EQ(sqlite3_close(connection_), SQLITE_OK);
}

int OtherConnection::Run(const std::string& sql) const {
  return sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, nullptr);
}

void OtherConnection::BeginReading() {
  EXPECT_EQ(sqlite3_prepare_v2(connection_, "select * from sqlite_master", -1, &reading_, nullptr),
            SQLITE_OK);
  EXPECT_EQ(sqlite3_step(reading_), SQLITE_ROW);
}

void OtherConnection::EndReading() {
  sqlite3_finalize(reading_);
  reading_ = nullptr;
}

After::After(std::chrono::milliseconds time, std::function<void()> action)
    : thread_([time, action = std::move(action)] {
        std::this_thread::sleep_for(time);
        action();
      }) {}

double Seconds(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace orx_test
