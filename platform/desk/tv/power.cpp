// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/power.h"

#include "desk/common/desk_error.h"
#include "desk/common/json.h"
#include "desk/tv/desk_directory.h"

namespace desk::tv {
namespace {

constexpr unsigned NETWORK_TIME_DELAY = 1000;
constexpr const char* NETWORK_TIME_KEY = "memory/menu/network/set_time";

}  // namespace

Power::Power(Router& router, const DeskPaths& paths, Keys& keys, Supervisor& supervisor, TvLog& log,
             bool offline, PowerHooks hooks, std::function<void()> quit)
    : m_paths(paths),
      m_keys(keys),
      m_supervisor(supervisor),
      m_log(log),
      m_offline(offline),
      m_hooks(std::move(hooks)),
      m_quit(std::move(quit)) {
  router.AddDeferred("tv.power_cycle",
                     [this](const Json::Value&, const Caller&,
                            const std::shared_ptr<Reply>& reply) { Cycle(reply); });
  router.AddDeferred(
      "tv.down", [this](const Json::Value&, const Caller&, const std::shared_ptr<Reply>& reply) {
        GoDown([reply] { reply->Return(Json::Value()); });
      });
  router.Add("reset", [this](const Json::Value& request, const Caller&) {
    Reset(RequireString(request, "kind"));
    return Json::Value();
  });
}

void Power::TurnOn(Done done) {
  for (const auto& hook : m_hooks.on) {
    hook();
  }
  if (!m_offline) {
    m_networkTime.Set(NETWORK_TIME_DELAY, [this] { m_keys.Set(NETWORK_TIME_KEY, 1); });
  }
  m_supervisor.Start(std::move(done));
}

void Power::TurnOff(std::function<void()> done) {
  m_networkTime.Stop();
  m_supervisor.Stop([this, done = std::move(done)](const std::string&) {
    for (const auto& hook : m_hooks.off) {
      hook();
    }
    KillStrayApps(m_paths);
    m_keys.DropVolatile();
    EmptyDirectory(m_paths.Tmp());
    done();
  });
}

void Power::Cycle(const std::shared_ptr<Reply>& reply) {
  if (m_changing) {
    throw DeskError(DeskError::FAILED, "another power cycle is in progress: wait until it is done");
  }
  m_changing = true;
  m_log.Say("power cycle");
  TurnOff([this, reply] {
    TurnOn([this, reply](const std::string& failure) {
      m_changing = false;
      if (failure.empty()) {
        reply->Return(Json::Value());
      } else {
        reply->Fail(DeskError::FAILED, failure);
      }
    });
  });
}

void Power::GoDown(std::function<void()> done) {
  m_goingDown.push_back(std::move(done));
  if (m_goingDown.size() > 1) {
    return;
  }
  m_log.Say("going down");
  TurnOff([this] {
    for (const auto& function : m_goingDown) {
      function();
    }
    m_quit();
  });
}

void Power::Reset(const std::string& kind) {
  if (kind == "apps") {
    m_keys.Set("db/tellahub/reset/apps", 0);
    return;
  }
  if (kind != "factory" && kind != "service") {
    throw DeskError(DeskError::USAGE,
                    "unknown reset \"" + kind + "\": use factory, service or apps");
  }
  const std::string key = "db/factory/" + kind + "_reset_count";
  m_keys.Set(key, m_keys.GetInt(key, 0) + 1);
}

}  // namespace desk::tv
