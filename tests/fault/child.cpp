// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/child.h"

#include <json/json.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <system_error>

#include "fake/control/fake.h"
#include "fault/daemon.h"
#include "fault/packages.h"
#include "fault/paths.h"
#include "fault/store.h"
#include "fault/store_faults.h"

/// Exists only in a coverage build.
extern "C" void __gcov_dump() __attribute__((weak));

namespace fault {
namespace {

constexpr unsigned int DEADLINE_SECONDS = 60;
constexpr int DONE = 42;  // differs from every exit code of the daemon
const char REQUEST_FLAG[] = "--request";
const char ENVIRONMENT[] = "ORV_FAULT_AT_START";

const std::vector<std::string> HANDLE_KINDS = {"app_control",  "app_info",           "app_context",
                                               "package_info", "package_manager",    "bundle",
                                               "TCService",    "TCServiceNavigation"};

void Arm(const Fault& fault) {
  if (IsStoreOperation(fault.name)) {
    FailStore(fault.name, fault.result, fault.times, fault.after);
  } else {
    fake::Fail(fault.name, fault.result, fault.times, fault.after);
  }
}

void Disarm() {
  fake::ClearFaults();
  ClearStoreFaults();
  MakeStoreReadOnly(false);
}

/// Before the daemon's static initialisers, because they already ask the platform for paths.
__attribute__((constructor(101))) void ArmForStaticInitialisers() {
  const char* text = std::getenv(ENVIRONMENT);
  if (text == nullptr) {
    return;
  }
  Fault fault;
  std::istringstream(text) >> fault.name >> fault.result >> fault.times >> fault.after;
  Arm(fault);
}

std::map<std::string, int> OpenHandles() {
  std::map<std::string, int> handles;
  for (const std::string& kind : HANDLE_KINDS) {
    handles[kind] = static_cast<int>(fake::OpenHandles(kind));
  }
  return handles;
}

/// Whether the call returned the result of the fault, or the value that replaces it.
bool IsFailure(const fake::Call& call, const Fault& fault) {
  if (call.name != fault.name) {
    return false;
  }
  const bool isTimer = call.name.find("g_timeout_add") == 0;  // 0 is not a valid source id
  return call.result == std::to_string(isTimer ? 0 : fault.result) || call.result == "null" ||
         call.result == "false" || call.result == "void";
}

/// The next log text of the call's thread; empty if there is none.
std::string AnswerTo(const fake::Call& call) {
  const std::vector<fake::LogRecord> log = fake::Logs();
  const auto next = std::find_if(log.begin(), log.end(), [&](const fake::LogRecord& record) {
    return record.seq > call.seq && record.threadID == call.threadID;
  });
  return next == log.end() ? "" : fake::WithoutHead(next->text);
}

/// Runs one daemon, from its start to the end of the request.
class Run {
 public:
  explicit Run(const Request& request) : m_request(request), m_path(FindPath(request.path)) {}

  Report Make() {
    if (!m_request.afterRestart) {
      MakeFreshDirectories();
      StoreRows(m_path.stored);
    }
    MakeTelevision();
    for (const fake::Package& package : m_path.stored) {
      MakeKnown(package);
      fake::AddChannel("{\"pkg_id\":\"" + package.id + "\"}");
    }
    if (m_path.before) {
      m_path.before();
    }
    WatchTheStore();
    MakeStoreReadOnly(m_request.store == StoreState::ReadOnly);
    m_report.reachedMainLoop = RunDaemon([this] { BeInMainLoop(); });
    if (!m_report.reachedMainLoop) {
      EndPath();
      RunDaemon([this] { Work(); });
    }
    return m_report;
  }

 private:
  void BeInMainLoop() {
    Settle();
    if (!m_request.afterRestart) {
      if (!m_path.IsStart()) {
        RunPath();
      }
      EndPath();
    }
    Work();
  }

  void RunPath() {
    if (m_path.hasNetworkTime) {
      fake::SetKey("memory/menu/network/set_time", 1);
      Settle();
    }
    if (m_path.prepare) {
      m_path.prepare();
      Settle();
    }
    fake::ClearCalls();
    fake::ClearLog();
    ForgetStoreOperations();
    m_handles = OpenHandles();
    if (m_request.fault) {
      Arm(*m_request.fault);
    }
    const StoreLock lock(m_request.store == StoreState::Locked);
    m_path.run();
    Settle();
  }

  void EndPath() {
    Disarm();
    m_report.calls = StoreOperations();
    for (const fake::Call& call : fake::Calls()) {
      ++m_report.calls[call.name];
      m_report.callTexts.push_back(fake::ToText(call));
      if (m_request.fault && IsFailure(call, *m_request.fault)) {
        m_report.failed.push_back(fake::ToText(call));
        m_report.answers.push_back(AnswerTo(call));
      }
    }
    m_report.failures = StoreFailures();
    if (m_request.fault) {
      m_report.failures += static_cast<int>(fake::FailureCount(m_request.fault->name));
    }
    if (StoreFailures() > 0) {
      m_report.failed.push_back(m_request.fault->name +
                                (m_path.IsStart() ? "(at start)" : "(later)"));
    }
    m_report.log = fake::LogTexts();
    for (const auto& [kind, count] : OpenHandles()) {
      m_report.handles[kind] = count - m_handles[kind];
    }
  }

  /// A new package must get its row and its channel.
  void Work() {
    const std::string id = m_request.afterRestart ? "secondpack" : "freshpacka";
    const fake::Package fresh = WebFeeder(id);
    MakeKnown(fresh);
    if (fake::FirePackageEvent(id, PACKAGE_MANAGER_EVENT_TYPE_INSTALL) == 0) {
      m_report.problems.push_back("the daemon does not listen to package events");
    }
    Settle();
    for (const std::string& wrong : WhatIsWrongWithTheStore()) {
      m_report.problems.push_back(wrong);
    }
    const auto stored = StoredPackages();
    if (std::find(stored.begin(), stored.end(), id) == stored.end()) {
      m_report.problems.push_back("a new package got no row");
    }
    const auto channels = fake::Channels();
    if (std::none_of(channels.begin(), channels.end(), [&](const std::string& record) {
          return record.find("\"" + id + "\"") != std::string::npos;
        })) {
      m_report.problems.push_back("a new package got no channel");
    }
  }

  const Request& m_request;
  const Path& m_path;
  Report m_report;
  std::map<std::string, int> m_handles;
};

Json::Value ToJson(const std::vector<std::string>& texts) {
  Json::Value array(Json::arrayValue);
  for (const std::string& text : texts) {
    array.append(text);
  }
  return array;
}
Json::Value ToJson(const std::map<std::string, int>& numbers) {
  Json::Value object(Json::objectValue);
  for (const auto& [name, number] : numbers) {
    object[name] = number;
  }
  return object;
}
void FromJson(const Json::Value& array, std::vector<std::string>& texts) {
  for (const Json::Value& text : array) {
    texts.push_back(text.asString());
  }
}
void FromJson(const Json::Value& object, std::map<std::string, int>& numbers) {
  for (const std::string& name : object.getMemberNames()) {
    numbers[name] = object[name].asInt();
  }
}

std::string ToText(const Report& report) {
  Json::Value root;
  root["reachedMainLoop"] = report.reachedMainLoop;
  root["failures"] = report.failures;
  root["answers"] = ToJson(report.answers);
  root["calls"] = ToJson(report.calls);
  root["callTexts"] = ToJson(report.callTexts);
  root["failed"] = ToJson(report.failed);
  root["log"] = ToJson(report.log);
  root["handles"] = ToJson(report.handles);
  root["problems"] = ToJson(report.problems);
  return Json::writeString(Json::StreamWriterBuilder(), root);
}

Report ToReport(const std::string& text) {
  Report report;
  Json::Value root;
  std::istringstream stream(text);
  std::string errors;
  if (!Json::parseFromStream(Json::CharReaderBuilder(), stream, &root, &errors)) {
    report.end = "it sent no report";
    return report;
  }
  report.reachedMainLoop = root["reachedMainLoop"].asBool();
  report.failures = root["failures"].asInt();
  FromJson(root["answers"], report.answers);
  FromJson(root["calls"], report.calls);
  FromJson(root["callTexts"], report.callTexts);
  FromJson(root["failed"], report.failed);
  FromJson(root["log"], report.log);
  FromJson(root["handles"], report.handles);
  FromJson(root["problems"], report.problems);
  return report;
}

/// Carries out the request in this process, then ends it even if threads of the daemon run.
[[noreturn]] void CarryOut(const Request& request, int pipe) {
  alarm(DEADLINE_SECONDS);
  const std::string text = ToText(Run(request).Make());
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t written = write(pipe, text.data() + done, text.size() - done);
    if (written <= 0) {
      _exit(1);
    }
    done += static_cast<std::size_t>(written);
  }
  if (__gcov_dump != nullptr) {
    __gcov_dump();
  }
  _exit(DONE);
}

/// Executes the program again, so that the fault is active before its static initialisers run.
[[noreturn]] void Execute(const Request& request, int pipe) {
  if (request.fault) {
    const Fault& fault = *request.fault;
    std::ostringstream text;
    text << fault.name << ' ' << fault.result << ' ' << fault.times << ' ' << fault.after;
    setenv(ENVIRONMENT, text.str().c_str(), 1);
  }
  const std::string descriptor = std::to_string(pipe);
  execl("/proc/self/exe", "fault_sweep", REQUEST_FLAG, request.path.c_str(), descriptor.c_str(),
        request.afterRestart ? "restart" : "start", nullptr);
  _exit(1);
}

std::string ReadAll(int pipe) {
  std::string text;
  char buffer[4096];
  ssize_t count = 0;
  while ((count = read(pipe, buffer, sizeof(buffer))) > 0 || (count < 0 && errno == EINTR)) {
    text.append(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
  }
  return text;
}

std::string WaitForTheEnd(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status)) {
    const int code = WEXITSTATUS(status);
    return code == DONE ? "" : "it ended with " + std::to_string(code);
  }
  if (WTERMSIG(status) == SIGALRM) {
    return "it hung";
  }
  return std::string("it crashed: ") + strsignal(WTERMSIG(status));
}

}  // namespace

Report RunInChild(const Request& request) {
  int ends[2] = {};
  if (pipe(ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  const pid_t child = fork();
  if (child < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (child == 0) {
    close(ends[0]);
    if (request.afterRestart || FindPath(request.path).IsStart()) {
      Execute(request, ends[1]);
    }
    CarryOut(request, ends[1]);
  }
  close(ends[1]);
  const std::string text = ReadAll(ends[0]);
  close(ends[0]);
  const std::string end = WaitForTheEnd(child);
  Report report = ToReport(text);
  report.end = end.empty() ? report.end : end;
  return report;
}

void CarryOutTheRequest(int argc, char** argv) {
  if (argc != 5 || std::strcmp(argv[1], REQUEST_FLAG) != 0) {
    return;
  }
  Request request;
  request.path = argv[2];
  request.afterRestart = std::strcmp(argv[4], "restart") == 0;
  if (const char* text = std::getenv(ENVIRONMENT)) {
    request.fault.emplace();
    std::istringstream(text) >> request.fault->name >> request.fault->result >>
        request.fault->times >> request.fault->after;
  }
  CarryOut(request, std::atoi(argv[3]));
}

std::string ToText(const Fault& fault) {
  return fault.name + " returns " + std::to_string(fault.result) + " at use " +
         std::to_string(fault.after + 1) + (fault.times == 1 ? "" : " and later");
}

}  // namespace fault
