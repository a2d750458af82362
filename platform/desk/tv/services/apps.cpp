// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/apps.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

#include "app_control.h"
#include "app_manager.h"
#include "common/desk_error.h"
#include "common/json.h"
#include "tv/process.h"

namespace desk::tv {
namespace {

constexpr char kStatusKey[] = "rtc/memory/WebApp/";
constexpr char kBackground[] = "backgroundAtStartup";

// An object, of texts alone: a launch has nothing else to give.
Json::Value ExtraDataOf(const Json::Value& request) {
  const Json::Value& extra = request["extra"];
  Json::Value data(Json::objectValue);
  for (const std::string& key :
       extra.isObject() ? extra.getMemberNames() : Json::Value::Members()) {
    if (extra[key].isString()) {
      data[key] = extra[key];
    }
  }
  return data;
}

bool IsBackgroundLaunch(const Json::Value& request) {
  return ExtraDataOf(request)[ORV_LAUNCH_MODE_KEY] == Json::Value(kBackground);
}

std::string OperationOf(const Json::Value& request) {
  const std::string operation = OptionalString(request, "operation", "");
  return operation.empty() ? APP_CONTROL_OPERATION_DEFAULT : operation;
}

// Status of a process that has been killed, as waitpid gives it; the process stays for its watch.
int AwaitEnd(pid_t pid) {
  siginfo_t info{};
  while (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT) != 0) {
    if (errno != EINTR) {
      return SIGKILL;
    }
  }
  return info.si_code == CLD_EXITED ? info.si_status << 8 : info.si_status;
}

Json::Value Result(int result) {
  Json::Value answer(Json::objectValue);
  answer["result"] = result;
  return answer;
}

}  // namespace

Apps::Apps(Router& router, const DeskPaths& paths, const Catalogue& catalogue, TvStore& store,
           AppNeeds needs)
    : m_router(router),
      m_paths(paths),
      m_needs(std::move(needs)),
      m_registry(paths, catalogue, store) {
  AddMethods(router);
}

Apps::~Apps() {
  EndAll();
}

void Apps::AddMethods(Router& router) {
  router.Add("app.info", [this](const Json::Value& request, const Caller&) {
    return Info(RequireString(request, "app"));
  });
  router.Add("app.list", [this](const Json::Value&, const Caller&) {
    Json::Value answer(Json::objectValue);
    answer["apps"] = Dump();
    return answer;
  });
  router.Add("app.add", [this](const Json::Value& request, const Caller&) {
    m_registry.Add(RequireString(request, "app"), RequireString(request, "program"));
    return Json::Value(Json::objectValue);
  });
  router.Add("app.launch",
             [this](const Json::Value& request, const Caller&) { return Launch(request); });
  router.Add("app.terminate", [this](const Json::Value& request, const Caller&) {
    return Result(Signal(RequireString(request, "app"), SIGTERM));
  });
  router.Add("app.kill", [this](const Json::Value& request, const Caller&) {
    return Result(Signal(RequireString(request, "app"), SIGKILL));
  });
  router.AddDeferred("app.status",
                     [this](const Json::Value& request, const Caller&,
                            std::shared_ptr<Reply> reply) { Enter(request, std::move(reply)); });
  router.Add("app.entered", [this](const Json::Value& request, const Caller& caller) {
    return OnEntered(request, caller);
  });
}

Json::Value Apps::Info(const std::string& id) const {
  const std::optional<KnownApp> app = m_registry.Find(id);
  Json::Value answer(Json::objectValue);
  answer["found"] = app.has_value();
  if (!app) {
    return answer;
  }
  const auto running = m_running.find(id);
  answer["package"] = app->package;
  answer["component"] = KindName(app->kind);
  answer["program"] = app->program;
  answer["metadata"] = ToJson(app->metadata);
  answer["running"] = running != m_running.end();
  answer["pid"] = running == m_running.end() ? 0 : running->second.pid;
  return answer;
}

Json::Value Apps::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const KnownApp& app : m_registry.All()) {
    const auto running = m_running.find(app.id);
    Json::Value& item = list.append(Info(app.id));
    item.removeMember("found");
    item["id"] = app.id;
    item["status"] = running == m_running.end() ? "" : running->second.word;
  }
  return list;
}

// A running app gets the request: it comes to the front, unless it is to stay in the background.
// One that has quit or was killed, and whose process is on its way out, is started anew.
Json::Value Apps::Launch(const Json::Value& request) {
  const std::string id = RequireString(request, "app");
  const bool background = IsBackgroundLaunch(request);
  const std::optional<KnownApp> app = m_registry.Find(id);
  if (!app) {
    return Result(APP_CONTROL_ERROR_APP_NOT_FOUND);
  }
  Json::Value answer = Result(APP_CONTROL_ERROR_NONE);
  auto running = m_running.find(id);
  if (running != m_running.end() && running->second.ending) {
    EndNow(id, running->second.pid);
    running = m_running.end();
  }
  if (running != m_running.end()) {
    if (app->kind == KnownApp::Kind::Ui && !background) {
      Json::Value order;
      order["app"] = id;
      order["word"] = "resume";
      Enter(order, nullptr);
    }
    answer["pid"] = running->second.pid;
    return answer;
  }
  try {
    answer["pid"] = Start(*app, request);
  } catch (const DeskError& error) {
    m_needs.log("cannot launch " + id + ": " + error.what());
    return Result(APP_CONTROL_ERROR_LAUNCH_FAILED);
  }
  return answer;
}

pid_t Apps::Start(const KnownApp& app, const Json::Value& request) {
  ProcessOrder order;
  if (app.kind == KnownApp::Kind::Ui) {
    order.arguments = {m_needs.tools + "/desk-webapp", app.id,
                       IsBackgroundLaunch(request) ? "--background" : "--foreground"};
  } else {
    order.arguments = {app.program};
  }
  const char* path = std::getenv("PATH");
  order.environment = {"TV_ROOT=" + m_paths.Root(),
                       "TV_BUS=" + m_needs.busAddress,
                       "TV_ROLE=app",
                       "TV_APP_ID=" + app.id,
                       "TV_OPERATION=" + OperationOf(request),
                       "TV_DATA=" + FormatJson(ExtraDataOf(request)),
                       "PATH=" + m_needs.tools + ":" + (path == nullptr ? "/usr/bin:/bin" : path)};
  order.directory = app.directory;
  order.output = m_paths.Log() + "/" + app.id + ".log";
  const pid_t pid = StartProcess(order);
  m_needs.callers.AddApp(pid, app.id);
  m_running[app.id].pid = pid;
  CallerTable& callers = m_needs.callers;
  WatchProcess(pid,
               [this, alive = std::weak_ptr<int>(m_alive), &callers, id = app.id, pid](int status) {
                 callers.Remove(pid);
                 if (alive.lock() != nullptr) {
                   OnExit(id, pid, status);
                 }
               });
  Tell(app.id, pid, "launched", "");
  return pid;
}

int Apps::Signal(const std::string& id, int number) {
  const auto running = m_running.find(id);
  if (running == m_running.end()) {
    return m_registry.Find(id) ? APP_MANAGER_ERROR_APP_NO_RUNNING : APP_MANAGER_ERROR_NO_SUCH_APP;
  }
  running->second.ending = running->second.ending || number == SIGKILL;
  // Its pid is its own until its watch has run.
  return kill(running->second.pid, number) == 0 ? APP_MANAGER_ERROR_NONE
                                                : APP_MANAGER_ERROR_REQUEST_FAILED;
}

// The ends are told before the package's change is, so they are not left to the watches, whose turn
// comes later and which find the apps gone.
void Apps::EndPackage(const std::string& package) {
  std::vector<std::pair<std::string, pid_t>> ending;
  for (const auto& [id, running] : m_running) {
    if (PackageOfApp(id) == package) {
      ending.emplace_back(id, running.pid);
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
  for (auto& [id, running] : m_running) {
    kill(-running.pid, SIGKILL);
    running.orders.Fail("the TV was switched off");
  }
  m_running.clear();
}

void Apps::Enter(const Json::Value& request, std::shared_ptr<Reply> reply) {
  const std::string id = RequireString(request, "app");
  const std::string word = RequireString(request, "word");
  const std::optional<KnownApp> app = m_registry.Find(id);
  if (!IsWebAppWord(word)) {
    throw DeskError(DeskError::Usage, "a web app cannot enter \"" + word +
                                          "\": init, load, preload, resume, pause, destroy, quit");
  }
  if (!app) {
    throw DeskError(DeskError::NotFound, "there is no app " + id + ": see `tv app list`");
  }
  const auto running = m_running.find(id);
  if (app->kind != KnownApp::Kind::Ui || running == m_running.end()) {
    throw DeskError(DeskError::Failed, app->kind != KnownApp::Kind::Ui
                                           ? id + " is no web app"
                                           : id + " is not running: use `tv app launch`");
  }
  running->second.orders.Add(word, std::move(reply), OrderTo(id, running->second.pid));
}

WebAppOrders::Send Apps::OrderTo(const std::string& id, pid_t pid) {
  return [this, id, pid](const std::string& to, const std::string& word) {
    Json::Value body(Json::objectValue);
    body["id"] = id;
    body["state"] = "enter";
    body["pid"] = pid;
    body["word"] = word;
    m_router.EmitTo(to, "app", body);
  };
}

Json::Value Apps::OnEntered(const Json::Value& request, const Caller& caller) {
  const std::string word = RequireString(request, "word");
  const auto running = m_running.find(caller.appId);
  if (caller.kind != Caller::Kind::App || running == m_running.end() || !IsWebAppWord(word)) {
    throw DeskError(DeskError::Failed, "only a running web app enters states");
  }
  running->second.word = word;
  running->second.ending = running->second.ending || word == "quit";
  m_needs.setKey(kStatusKey + caller.appId, word);
  Tell(caller.appId, running->second.pid, "status", word);
  running->second.orders.OnEntered(caller.busName, word,
                                   OrderTo(caller.appId, running->second.pid));
  return Json::Value(Json::objectValue);
}

void Apps::OnExit(const std::string& id, pid_t pid, int status) {
  const auto found = m_running.find(id);
  if (found == m_running.end() || found->second.pid != pid) {
    return;
  }
  Running ended = std::move(found->second);
  m_running.erase(found);
  // What it left in its session has no app any more.
  kill(-pid, SIGKILL);
  m_needs.log(id + " ended: " + DescribeStatus(status));
  if (!ended.word.empty() && ended.word != "quit") {
    m_needs.setKey(kStatusKey + id, "destroy");
  }
  Tell(id, pid, WIFSIGNALED(status) ? "killed" : "exited", "");
  ended.orders.Fail(id + " ended before it entered the state");
}

void Apps::Tell(const std::string& id, pid_t pid, const char* state, const std::string& word) {
  Json::Value body(Json::objectValue);
  body["id"] = id;
  body["state"] = state;
  body["pid"] = pid;
  body["word"] = word;
  m_router.Emit("app", body);
}

}  // namespace desk::tv
