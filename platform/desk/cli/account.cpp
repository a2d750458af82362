// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/account.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <map>
#include <set>

#include "desk/cli/journal_view.h"
#include "desk/cli/log_view.h"
#include "desk/cli/tail.h"

namespace desk::cli {
namespace {

constexpr std::size_t OUTPUT_LINES = 10;      // of each run
constexpr std::size_t MOST_BYTES = 32 << 20;  // of each log
constexpr std::chrono::hours DAY(24);

bool IsIdCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-';
}

/// Whether the id stands in the text as a whole. An app id that continues it counts if apps does.
bool Names(const std::string& text, const std::string& id, bool apps) {
  if (id.empty()) {
    return false;
  }
  for (auto at = text.find(id); at != std::string::npos; at = text.find(id, at + 1)) {
    const std::size_t end = at + id.size();
    if (at > 0 && (IsIdCharacter(text[at - 1]) || text[at - 1] == '.')) {
      continue;
    }
    if (end < text.size() && IsIdCharacter(text[end])) {
      continue;
    }
    const bool continued =
        end + 1 < text.size() && text[end] == '.' && IsIdCharacter(text[end + 1]);
    if (!continued || apps) {
      return true;
    }
  }
  return false;
}

/// The text of a log line without the source's path, function and line.
std::string Message(const LogRecord& record) {
  const auto mark = record.text.find(" > ");
  return mark == std::string::npos ? record.text : record.text.substr(mark + 3);
}

/// The daemon's log names an id once and then goes on about it on the same thread. What follows
/// belongs to the account when it is an error or a decision of the schedule, until the thread
/// handles its next event.
class DaemonLogReader {
 public:
  DaemonLogReader(const Subject& subject, Timestamp now) : m_subject(subject), m_now(now) {}

  void Read(const std::string& line, std::vector<AccountLine>& account) {
    const auto record = ParseLogLine(line);
    if (!record) {
      return;
    }
    const std::string message = Message(*record);
    if (message.compare(0, 16, "[Info] pEvent : ") == 0) {
      m_following.erase(record->tid);
    }
    const bool named = m_subject.IsNamedIn(record->text);
    if (named) {
      m_following.insert(record->tid);
    }
    const auto time = LogTime(record->time, m_now);
    if (time && (named || (m_following.count(record->tid) != 0 && Matters(*record, message)))) {
      account.push_back({*time, "daemon", message});
    }
  }

 private:
  static bool Matters(const LogRecord& record, const std::string& message) {
    return record.level == 'E' || record.level == 'F' ||
           message.compare(0, 14, "[Debug] now : ") == 0 ||
           message.find("Launched Time") != std::string::npos;
  }

  const Subject& m_subject;
  const Timestamp m_now;
  std::set<int> m_following;
};

/// A call belongs to the account when an argument names the subject, or when it uses a handle that
/// such a call named.
class JournalReader {
 public:
  explicit JournalReader(const Subject& subject) : m_subject(subject) {}

  void Read(const Json::Value& entry, std::vector<AccountLine>& account) {
    const std::string handle = HandleOf(entry);
    const bool named = NamesSubject(entry);
    if (named && !handle.empty()) {
      m_handles.insert(handle);
    }
    const bool belongs = named || (!handle.empty() && m_handles.count(handle) != 0);
    if (entry["call"].asString() == "app_control_destroy") {
      m_handles.erase(handle);
    }
    const auto time = TimeOf(entry);
    if (belongs && time) {
      account.push_back({*time, "call", CallText(entry)});
    }
  }

 private:
  static std::string HandleOf(const Json::Value& entry) {
    const bool control = entry["call"].asString().compare(0, 12, "app_control_") == 0;
    return control && !entry["args"].empty() ? entry["args"][0].asString() : "";
  }

  bool NamesSubject(const Json::Value& entry) const {
    return std::any_of(entry["args"].begin(), entry["args"].end(), [this](const Json::Value& arg) {
      return arg.isString() && m_subject.IsNamedIn(arg.asString());
    });
  }

  const Subject& m_subject;
  std::set<std::string> m_handles;
};

void AddOutput(const DeskPaths& paths, const AppRun& run, Timestamp now,
               std::vector<AccountLine>& account) {
  for (auto& line : OutputOf(paths, run, OUTPUT_LINES)) {
    account.push_back({run.ended.value_or(now), "output", std::move(line)});
  }
}

}  // namespace

Evidence Evidence::Read(const DeskPaths& paths) {
  Evidence evidence;
  evidence.daemonLog = LastLines(paths.DaemonLog(), MOST_BYTES);
  evidence.tvLog = LastLines(paths.TvLog(), MOST_BYTES);
  evidence.journal = SortedEntries(LastLines(paths.Journal(), MOST_BYTES));
  evidence.runs = AppRunsIn(evidence.tvLog);
  return evidence;
}

Subject::Subject(std::string package, std::string app, std::string other)
    : m_package(std::move(package)), m_app(std::move(app)), m_other(std::move(other)) {}

bool Subject::IsNamedIn(const std::string& text) const {
  return Names(text, m_app, false) || Names(text, m_package, m_app.empty()) ||
         (!m_other.empty() && text.find(m_other) != std::string::npos);
}

bool Subject::Covers(const std::string& app) const {
  return m_app.empty() ? app.compare(0, m_package.size() + 1, m_package + ".") == 0 : app == m_app;
}

std::vector<AccountLine> AccountOf(const Evidence& evidence, const DeskPaths& paths,
                                   const Subject& subject, Timestamp now) {
  std::vector<AccountLine> account;
  DaemonLogReader daemon(subject, now);
  for (const auto& line : evidence.daemonLog) {
    daemon.Read(line, account);
  }
  JournalReader journal(subject);
  for (const auto& entry : evidence.journal) {
    journal.Read(entry, account);
  }
  for (const auto& run : evidence.runs) {
    if (subject.Covers(run.app)) {
      AddOutput(paths, run, now, account);
    }
  }
  for (const auto& text : evidence.tvLog) {
    const auto line = ParseTvLogLine(text);
    if (line && subject.IsNamedIn(line->text)) {
      account.push_back({line->time, "desk-tv", line->text});
    }
  }
  std::stable_sort(account.begin(), account.end(),
                   [](const AccountLine& a, const AccountLine& b) { return a.time < b.time; });
  std::reverse(account.begin(), account.end());
  return account;
}

std::optional<Timestamp> LogTime(const std::string& text, Timestamp now) {
  const auto blank = text.find(' ');
  if (blank == std::string::npos) {
    return std::nullopt;
  }
  const std::string rest = "-" + text.substr(0, blank) + "T" + text.substr(blank + 1) + "Z";
  const int year = std::stoi(FormatTimestamp(now).substr(0, 4));
  const auto time = ParseTimestamp(std::to_string(year) + rest);
  return time && *time > now + DAY ? ParseTimestamp(std::to_string(year - 1) + rest) : time;
}

}  // namespace desk::cli
