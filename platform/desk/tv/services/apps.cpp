// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/apps.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "app_control.h"
#include "app_manager.h"
#include "desk/common/desk_error.h"
#include "desk/common/json.h"
#include "desk/package/program_file.h"
#include "desk/tv/process.h"

namespace desk::tv {
namespace {

constexpr char STATE_KEY[] = "rtc/memory/WebApp/";
constexpr char BACKGROUND[] = "backgroundAtStartup";

// Extra data that is not a string is ignored: app_control can only add strings.
LaunchRequest ReadLaunchRequest(const Json::Value& request) {
  LaunchRequest launch;
  launch.app = RequireString(request, "app");
  launch.operation = OptionalString(request, "operation", "");
  if (launch.operation.empty()) {
    launch.operation = APP_CONTROL_OPERATION_DEFAULT;
  }
  const Json::Value& extra = request["extra"];
  for (const std::string& key :
       extra.isObject() ? extra.getMemberNames() : Json::Value::Members()) {
    if (extra[key].isString()) {
      launch.extra[key] = extra[key].asString();
    }
  }
  return launch;
}

std::string ExtraDataText(const LaunchRequest& launch) {
  Json::Value data(Json::objectValue);
  for (const auto& [key, value] : launch.extra) {
    data[key] = value;
  }
  return FormatJson(data);
}

WebAppState ReadState(const Json::Value& request) {
  const std::string word = RequireString(request, "word");
  const std::optional<WebAppState> state = ParseState(word);
  if (!state) {
    throw DeskError(DeskError::USAGE, "a web app has no state \"" + word +
                                          "\": use init, load, preload, resume, pause, destroy or "
                                          "quit");
  }
  return *state;
}

Json::Value ToJson(const LaunchResult& launch) {
  Json::Value reply = JsonObject({{"result", launch.result}});
  if (launch.pid) {
    reply["pid"] = *launch.pid;
  }
  return reply;
}

Json::Value ToJson(const AppStatus& status) {
  return JsonObject({{"package", status.app.package},
                     {"component", KindName(status.app.kind)},
                     {"program", status.app.program},
                     {"metadata", desk::ToJson(status.app.metadata)},
                     {"running", status.pid.has_value()},
                     {"pid", status.pid.value_or(0)}});
}

Json::Value EventBody(const std::string& id, pid_t pid, const char* event,
                      const std::string& word) {
  return JsonObject({{"id", id}, {"state", event}, {"pid", pid}, {"word", word}});
}

// Waits for a process that was killed. Returns its status in the form of waitpid(), and leaves the
// process to be reaped by its watch.
int AwaitEnd(pid_t pid) {
  siginfo_t info{};
  while (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT) != 0) {
    if (errno != EINTR) {
      return SIGKILL;
    }
  }
  return info.si_code == CLD_EXITED ? info.si_status << 8 : info.si_status;
}

std::uintmax_t SizeOf(const std::string& file) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  return error ? 0 : size;
}

// The program's first line tells more than the error of the system call.
std::string WhyNotStarted(const KnownApp& app, const std::string& error) {
  const auto trouble =
      app.program.empty() ? std::optional<ProgramTrouble>() : WhyNotRunnable(app.program);
  if (app.kind == KnownApp::Kind::Ui || !trouble) {
    return error;
  }
  return app.program + ": " + trouble->reason + ". " + trouble->fix;
}

}  // namespace

bool LaunchRequest::IsBackground() const {
  const auto mode = extra.find(ORV_LAUNCH_MODE_KEY);
  return mode != extra.end() && mode->second == BACKGROUND;
}

Apps::Apps(const Needs& needs, const Catalogue& catalogue, TvStore& store)
    : m_needs(needs), m_registry(needs.paths, catalogue, store) {
  AddMethods(needs.router);
  AddStateMethods(needs.router);
}

Apps::~Apps() {
  EndAll();
}

void Apps::AddMethods(Router& router) {
  router.Add("app.info", [this](const Json::Value& request, const Caller&) {
    const std::optional<AppStatus> status = Find(RequireString(request, "app"));
    Json::Value reply = status ? ToJson(*status) : Json::Value(Json::objectValue);
    reply["found"] = status.has_value();
    return reply;
  });
  router.Add("app.list", [this](const Json::Value&, const Caller&) {
    return JsonObject({{"apps", Dump()}});
  });
  router.Add("app.add", [this](const Json::Value& request, const Caller&) {
    m_registry.Add(RequireString(request, "app"), RequireString(request, "program"));
    return Json::Value(Json::objectValue);
  });
  router.Add("app.launch", [this](const Json::Value& request, const Caller&) {
    return ToJson(Launch(ReadLaunchRequest(request)));
  });
  router.Add("app.terminate", [this](const Json::Value& request, const Caller&) {
    return JsonObject({{"result", Signal(RequireString(request, "app"), SIGTERM)}});
  });
  router.Add("app.kill", [this](const Json::Value& request, const Caller&) {
    return JsonObject({{"result", Signal(RequireString(request, "app"), SIGKILL)}});
  });
}

void Apps::AddStateMethods(Router& router) {
  router.AddDeferred("app.status", [this](const Json::Value& request, const Caller&,
                                          const std::shared_ptr<Reply>& reply) {
    const std::string id = RequireString(request, "app");
    RequestState(id, ReadState(request), [reply](const std::string& failure) {
      if (failure.empty()) {
        reply->Return(Json::Value(Json::objectValue));
      } else {
        reply->Fail(DeskError::FAILED, failure);
      }
    });
  });
  router.Add("app.entered", [this](const Json::Value& request, const Caller& caller) {
    OnEntered(ParseState(RequireString(request, "word")), caller);
    return Json::Value(Json::objectValue);
  });
}

std::optional<AppStatus> Apps::Find(const std::string& id) const {
  std::optional<KnownApp> app = m_registry.Find(id);
  return app ? std::make_optional(StatusOf(std::move(*app))) : std::nullopt;
}

std::vector<AppStatus> Apps::List() const {
  std::vector<AppStatus> list;
  for (KnownApp& app : m_registry.All()) {
    list.push_back(StatusOf(std::move(app)));
  }
  return list;
}

AppStatus Apps::StatusOf(KnownApp app) const {
  AppStatus status;
  const auto process = m_processes.find(app.id);
  if (process != m_processes.end()) {
    status.pid = process->second.pid;
    status.state = process->second.state;
  }
  status.app = std::move(app);
  return status;
}

Json::Value Apps::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const AppStatus& status : List()) {
    Json::Value& item = list.append(ToJson(status));
    item["id"] = status.app.id;
    item["status"] = status.state ? StateName(*status.state) : "";
  }
  return list;
}

LaunchResult Apps::Launch(const LaunchRequest& request) {
  const std::optional<KnownApp> app = m_registry.Find(request.app);
  if (!app) {
    return {APP_CONTROL_ERROR_APP_NOT_FOUND, std::nullopt};
  }
  auto process = m_processes.find(app->id);
  if (process != m_processes.end() && process->second.ending) {
    EndNow(app->id, process->second.pid);
    process = m_processes.end();
  }
  if (process != m_processes.end()) {
    const pid_t pid = process->second.pid;
    if (app->kind == KnownApp::Kind::Ui && !request.IsBackground()) {
      process->second.requests.Add(WebAppState::Resume, nullptr, SenderTo(app->id, pid));
    }
    return {APP_CONTROL_ERROR_NONE, pid};
  }
  try {
    return {APP_CONTROL_ERROR_NONE, Start(*app, request)};
  } catch (const DeskError& error) {
    m_needs.log("cannot launch " + app->id + ": " + WhyNotStarted(*app, error.what()));
    return {APP_CONTROL_ERROR_LAUNCH_FAILED, std::nullopt};
  }
}

pid_t Apps::Start(const KnownApp& app, const LaunchRequest& request) {
  ProcessSpec process;
  if (app.kind == KnownApp::Kind::Ui) {
    process.arguments = {m_needs.tools + "/desk-webapp", app.id,
                         request.IsBackground() ? "--background" : "--foreground"};
  } else {
    process.arguments = {app.program};
  }
  const char* path = std::getenv("PATH");
  process.environment = {
      "TV_ROOT=" + m_needs.paths.Root(),
      "TV_BUS=" + m_needs.busAddress,
      "TV_ROLE=app",
      "TV_APP_ID=" + app.id,
      "TV_OPERATION=" + request.operation,
      "TV_DATA=" + ExtraDataText(request),
      "PATH=" + m_needs.tools + ":" + (path == nullptr ? "/usr/bin:/bin" : path)};
  process.directory = app.directory;
  process.output = m_needs.paths.Log() + "/" + app.id + ".log";
  const std::uintmax_t outputFrom = SizeOf(process.output);
  const pid_t pid = StartProcess(process);
  m_needs.callers.AddApp(pid, app.id);
  m_processes[app.id].pid = pid;
  WatchProcess(pid, [this, alive = std::weak_ptr<int>(m_alive), id = app.id, pid](int status) {
    if (alive.lock() != nullptr) {
      m_needs.callers.Remove(pid);
      OnExit(id, pid, status);
    }
  });
  m_needs.log(app.id + " launched: pid " + std::to_string(pid) + ", its output from byte " +
              std::to_string(outputFrom));
  SendEvent(app.id, pid, "launched", "");
  return pid;
}

int Apps::Signal(const std::string& id, int number) {
  const auto process = m_processes.find(id);
  if (process == m_processes.end()) {
    return m_registry.Find(id) ? APP_MANAGER_ERROR_APP_NO_RUNNING : APP_MANAGER_ERROR_NO_SUCH_APP;
  }
  process->second.ending = process->second.ending || number == SIGKILL;
  // The pid cannot have been reused: the watch of the process has not reaped it yet.
  return kill(process->second.pid, number) == 0 ? APP_MANAGER_ERROR_NONE
                                                : APP_MANAGER_ERROR_REQUEST_FAILED;
}

// Ends the processes here and not in their watches: the events of the apps precede the event of the
// package, and a watch would run after the package has changed.
void Apps::EndPackage(const std::string& package) {
  std::vector<std::pair<std::string, pid_t>> ending;
  for (const auto& [id, process] : m_processes) {
    if (PackageOfApp(id) == package) {
      ending.emplace_back(id, process.pid);
    }
  }
  for (const auto& [id, pid] : ending) {
    EndNow(id, pid);
  }
}

void Apps::EndNow(const std::string& id, pid_t pid) {
  kill(-pid, SIGKILL);
  OnExit(id, pid, AwaitEnd(pid));
}

void Apps::EndAll() {
  for (auto& [id, process] : m_processes) {
    kill(-process.pid, SIGKILL);
    process.requests.Fail("the TV was switched off");
  }
  m_processes.clear();
}

void Apps::RequestState(const std::string& id, WebAppState state, StateRequests::Done done) {
  const std::optional<KnownApp> app = m_registry.Find(id);
  if (!app) {
    throw DeskError(DeskError::NOT_FOUND, "there is no app " + id + ": see `tv app list`");
  }
  if (app->kind != KnownApp::Kind::Ui) {
    throw DeskError(DeskError::FAILED, id + " is not a web app: only web apps have states");
  }
  const auto process = m_processes.find(id);
  if (process == m_processes.end()) {
    throw DeskError(DeskError::FAILED, id + " is not running: use `tv app launch`");
  }
  process->second.requests.Add(state, std::move(done), SenderTo(id, process->second.pid));
}

StateRequests::Send Apps::SenderTo(const std::string& id, pid_t pid) {
  return [this, id, pid](const std::string& busName, WebAppState state) {
    m_needs.router.EmitTo(busName, "app", EventBody(id, pid, "enter", StateName(state)));
  };
}

void Apps::OnEntered(std::optional<WebAppState> state, const Caller& caller) {
  const auto found = m_processes.find(caller.appId);
  if (caller.kind != Caller::Kind::App || found == m_processes.end() || !state) {
    throw DeskError(DeskError::FAILED, "only a running web app can report one of its states");
  }
  Process& process = found->second;
  process.state = state;
  process.ending = process.ending || state == WebAppState::Quit;
  m_needs.setKey(STATE_KEY + caller.appId, StateName(*state));
  SendEvent(caller.appId, process.pid, "status", StateName(*state));
  process.requests.OnEntered(caller.busName, *state, SenderTo(caller.appId, process.pid));
}

void Apps::OnExit(const std::string& id, pid_t pid, int status) {
  const auto found = m_processes.find(id);
  if (found == m_processes.end() || found->second.pid != pid) {
    return;
  }
  Process ended = std::move(found->second);
  m_processes.erase(found);
  // Other processes of its session belong to the app too.
  kill(-pid, SIGKILL);
  m_needs.log(id + " ended: " + DescribeStatus(status));
  if (ended.state && ended.state != WebAppState::Quit) {
    m_needs.setKey(STATE_KEY + id, StateName(WebAppState::Destroy));
  }
  SendEvent(id, pid, WIFSIGNALED(status) ? "killed" : "exited", "");
  ended.requests.Fail(id + " ended before it entered the state");
}

void Apps::SendEvent(const std::string& id, pid_t pid, const char* event, const std::string& word) {
  m_needs.router.Emit("app", EventBody(id, pid, event, word));
}

}  // namespace desk::tv
