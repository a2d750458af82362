// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "unit/traces/trace.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <regex>
#include <set>
#include <thread>
#include <vector>

#include "fake/control/fake.h"
#include "support/files.h"
#include "unit/app_info/records.h"
#include "utils/FileSystemUtils.h"

namespace {

/// A statement or another act of SQLite, behind the call or record with this number.
struct SqlStep {
  unsigned long behind = 0;
  std::string text;
};

struct Sql {
  std::mutex mutex;
  bool isRecorded = true;
  std::vector<SqlStep> steps;
  std::set<sqlite3*> connections;
};

/// Never deleted: connections of the daemon are never closed.
Sql& GetSql() {
  static auto* s_sql = new Sql;
  return *s_sql;
}

unsigned long LastNumber() {
  const std::vector<fake::Call> calls = fake::Calls();
  const std::vector<fake::LogRecord> logs = fake::Logs();
  return std::max(calls.empty() ? 0 : calls.back().seq, logs.empty() ? 0 : logs.back().seq);
}

int OnSqlite(unsigned int event, void* /*context*/, void* subject, void* text) {
  Sql& sql = GetSql();
  const std::lock_guard<std::mutex> lock(sql.mutex);
  if (event == SQLITE_TRACE_CLOSE) sql.connections.erase(static_cast<sqlite3*>(subject));
  if (!sql.isRecorded) return 0;
  std::string step = "sql closed";
  if (event == SQLITE_TRACE_STMT) step = std::string("sql ") + static_cast<const char*>(text);
  sql.steps.push_back({LastNumber(), step});
  return 0;
}

int OnOpen(sqlite3* database, const char** /*error*/, const void* /*api*/) {
  Sql& sql = GetSql();
  const std::lock_guard<std::mutex> lock(sql.mutex);
  if (!sql.isRecorded) return SQLITE_OK;
  sql.connections.insert(database);
  sqlite3_trace_v2(database, SQLITE_TRACE_STMT | SQLITE_TRACE_CLOSE, OnSqlite, nullptr);
  return SQLITE_OK;
}

// SQLite declares its entry points as functions without parameters.
[[maybe_unused]] const int g_installed =
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&OnOpen));

void RecordSql(bool isRecorded) {
  Sql& sql = GetSql();
  const std::lock_guard<std::mutex> lock(sql.mutex);
  sql.isRecorded = isRecorded;
}

void Clear() {
  fake::ClearCalls();
  fake::ClearLog();
  Sql& sql = GetSql();
  const std::lock_guard<std::mutex> lock(sql.mutex);
  sql.steps.clear();
}

/// "RunOperation: [Info] ..." at the priority 4, or "RunOperation 6: [ERROR] ...".
std::string ToText(const fake::LogRecord& record) {
  static const std::regex s_address("0x[0-9a-f]+");
  static const std::regex s_head("^[^:]*: (.*?)\\([0-9]+\\) > ");
  std::smatch head;
  const std::string function =
      std::regex_search(record.text, head, s_head) ? head[1].str() : "(no head)";
  return "log " + std::to_string(record.priority) + " " + function + ": " +
         std::regex_replace(fake::WithoutHead(record.text), s_address, "(an address)");
}

/// What was done, in the common order. Another thread than the operation's is marked.
std::vector<std::string> Steps(std::thread::id own) {
  std::map<unsigned long, std::vector<std::string>> steps;
  const auto mark = [own](std::thread::id thread) { return thread == own ? "" : "other thread: "; };
  for (const fake::Call& call : fake::Calls()) {
    steps[call.seq].push_back(mark(call.threadID) + fake::ToText(call));
  }
  for (const fake::LogRecord& record : fake::Logs()) {
    steps[record.seq].push_back(mark(record.threadID) + ToText(record));
  }
  Sql& sql = GetSql();
  const std::lock_guard<std::mutex> lock(sql.mutex);
  for (const SqlStep& step : sql.steps) steps[step.behind].push_back(step.text);
  std::vector<std::string> texts;
  for (const auto& [number, all] : steps) texts.insert(texts.end(), all.begin(), all.end());
  return texts;
}

std::string Replaced(std::string text, const std::string& old, const std::string& now) {
  for (std::size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += now.size()) {
    text.replace(at, old.size(), now);
  }
  return text;
}

/// One step in one line, with short names for what the build chooses.
std::string InOneLine(std::string text) {
  static const std::pair<std::string, std::string> s_names[] = {
      {"\n", "\\n"},
      {FileSystemUtils::GetSharedDataPath(), "<shared>"},
      {ORV_OPERATION_CHANNEL_LIST, "<channel-list>"},
      {ORV_OPERATION_EPG, "<epg>"},
      {ORV_LAUNCH_MODE_KEY, "<launch-mode>"}};
  for (const auto& [old, now] : s_names) text = Replaced(std::move(text), old, now);
  return text;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  std::sort(lines.begin(), lines.end());
  return lines;
}

void PrintChanges(std::ostream& stream, const std::string& before, const std::string& after) {
  const std::vector<std::string> old = Lines(before);
  const std::vector<std::string> now = Lines(after);
  std::vector<std::string> gone;
  std::vector<std::string> come;
  std::set_difference(old.begin(), old.end(), now.begin(), now.end(), std::back_inserter(gone));
  std::set_difference(now.begin(), now.end(), old.begin(), old.end(), std::back_inserter(come));
  for (const std::string& line : gone) stream << "  - " << line << "\n";
  for (const std::string& line : come) stream << "  + " << line << "\n";
}

}  // namespace

Trace::Trace(PrintState printState) : m_printState(printState), m_state(State()) {}

std::string Trace::State() const {
  RecordSql(false);
  std::ostringstream stream;
  m_printState(stream);
  RecordSql(true);
  Clear();
  return stream.str();
}

void Trace::Prepare(const std::function<void()>& change) {
  change();
  m_state = State();
}

void Trace::Run(const std::string& title, const std::function<void(std::ostream&)>& operation) {
  Clear();
  std::ostringstream result;
  try {
    operation(result);
  } catch (const std::exception& e) {
    result << "threw " << e.what() << "\n";
  }
  m_text << "== " << title << "\n";
  for (const std::string& step : Steps(std::this_thread::get_id())) {
    m_text << InOneLine(step) << "\n";
  }
  m_text << result.str();
  const std::string state = State();
  PrintChanges(m_text, m_state, state);
  m_state = state;
}

void Trace::Compare(const std::string& name) const {
  const std::string expectedFile = std::string(ORV_TRACES) + "/" + name + ".txt";
  const std::string foundFile = std::string(ORV_FOUND_TRACES) + "/" + name + ".txt";
  const std::string found = m_text.str();
  const std::string expected =
      support::Exists(expectedFile) ? support::ReadFile(expectedFile) : std::string();
  if (found != expected) support::WriteFile(foundFile, found);
  EXPECT_EQ(found, expected) << "found: " << foundFile;
}

namespace traces {

void PrintKeys(std::ostream& stream, const std::initializer_list<const char*>& keys) {
  for (const char* key : keys) {
    if (!fake::HasKey(key)) continue;
    stream << "key " << key << " = ";
    if (const auto number = fake::IntKey(key)) stream << *number;
    if (const auto text = fake::StringKey(key)) stream << InOneLine(*text);
    stream << "\n";
  }
}

void PrintPlatform(std::ostream& stream, const std::initializer_list<const char*>& followedKeys) {
  for (const fake::Timer& timer : fake::Timers()) {
    stream << "timer " << timer.id << " of " << timer.intervalMs << " ms"
           << (timer.inSeconds ? ", in seconds" : "") << "\n";
  }
  for (const char* kind : {"app_control", "app_info", "package_info"}) {
    if (const std::size_t count = fake::OpenHandles(kind)) {
      stream << "handles " << kind << " " << count << "\n";
    }
  }
  for (const char* key : followedKeys) {
    if (const std::size_t count = fake::KeySubscriptions(key)) {
      stream << "subscriptions " << key << " " << count << "\n";
    }
  }
  for (const std::string& channel : fake::Channels())
    stream << "channel " << InOneLine(channel) << "\n";
  for (const fake::Mount& mount : fake::Mounts()) {
    stream << "mount " << mount.options << " " << mount.image << " " << mount.directory << "\n";
  }
}

void PrintOperations(std::ostream& stream) {
  for (const char* operation : {ORV_OPERATION_CHANNEL_LIST, ORV_OPERATION_EPG}) {
    if (const auto app = fake::OperationApp(operation)) {
      stream << "operation " << InOneLine(operation) << " " << *app << "\n";
    }
  }
}

void PrintFiles(std::ostream& stream, const std::string& directory) {
  if (!support::Exists(directory)) return;
  for (const std::string& file : support::ListTree(directory)) {
    stream << "file " << InOneLine(directory) << file;
    const std::filesystem::path path = directory + file;
    if (std::filesystem::is_symlink(path)) {
      stream << " -> " << std::filesystem::read_symlink(path).string();
    } else if (std::filesystem::is_regular_file(path) && path.extension() != ".zip") {
      stream << " " << InOneLine(support::ReadFile(path));
    }
    stream << "\n";
  }
}

void PrintStore(std::ostream& stream) {
  std::set<sqlite3*> connections;
  {
    const std::lock_guard<std::mutex> lock(GetSql().mutex);
    connections = GetSql().connections;
  }
  stream << "connections " << connections.size() << "\n";
  for (sqlite3* connection : connections) {
    int count = 0;
    sqlite3_stmt* next = nullptr;
    while ((next = sqlite3_next_stmt(connection, next)) != nullptr) ++count;
    stream << "statements " << count << "\n";
  }
  if (!support::Exists(records::StorePath())) return;
  try {
    for (const auto& row : records::QueryStore("SELECT * FROM appinfo")) {
      stream << "row";
      for (const std::string& text : row) stream << " | " << InOneLine(text);
      stream << "\n";
    }
  } catch (const std::exception& e) {
    stream << "no table: " << e.what() << "\n";
  }
}

}  // namespace traces
