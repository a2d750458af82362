// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/television.h"

#include <glib.h>
#include <unistd.h>

#include <chrono>

#include "desk/tv/daemon_launcher.h"
#include "desk/tv/services/fault_service.h"
#include "desk/tv/services/keys.h"
#include "desk/tv/services/services.h"
#include "desk/tv/supervisor.h"

namespace desk::tv {
namespace {

long Now() {
  return static_cast<long>(g_get_monotonic_time() / G_USEC_PER_SEC);
}

SupervisorTimes TimesFor(const TvOptions& options) {
  SupervisorTimes times;
  times.speed = static_cast<unsigned>(options.speed);
  return times;
}

Needs NeedsOf(const TvBase& base, Keys& keys) {
  return {base.router,
          base.options.paths,
          base.callers,
          base.busAddress,
          ProgramDirectory(),
          [&keys](const std::string& key, const std::string& value) { keys.Set(key, value); },
          [&log = base.log](const std::string& line) { log.Say(line); }};
}

}  // namespace

// Created in this order, destroyed in reverse.
struct Television::Parts {
  explicit Parts(const TvBase& base)
      : keys(base.router, base.options.paths),
        faults(base.router, base.options.paths),
        launcher(base.options, base.busSocket),
        supervisor(
            base.router, base.callers, base.log, [this] { return launcher.Launch(); },
            TimesFor(base.options)),
        services(NeedsOf(base, keys)) {}

  Keys keys;
  FaultService faults;
  const DaemonLauncher launcher;
  Supervisor supervisor;
  Services services;
};

Television::Television(const TvBase& base)
    : m_base(base), m_startedAt(Now()), m_parts(std::make_unique<Parts>(base)) {
  Parts& parts = *m_parts;
  const TvClock& clock = parts.launcher.Clock();
  base.log.SetClock(std::chrono::duration_cast<Timestamp>(clock.Since()),
                    std::chrono::duration_cast<Timestamp>(clock.Base()), base.options.speed);
  m_dump["daemon"] = [&parts] { return parts.supervisor.Describe(); };
  m_dump["keys"] = [&parts] { return parts.keys.Dump(); };
  m_dump["faults"] = [&parts] { return parts.faults.Dump(); };
  for (auto& dump : parts.services.Dumps()) {
    m_dump[dump.first] = std::move(dump.second);
  }
  m_hooks.off.push_back([&parts] { parts.faults.Clear(); });
  m_hooks.off.push_back([&parts] { parts.services.TurnOff(); });
  m_hooks.on.push_back([&parts] { parts.services.TurnOn(); });
  m_power = std::make_unique<Power>(base.router, base.options.paths, parts.keys, parts.supervisor,
                                    base.log, base.options.offline, m_hooks, base.quit);
  AddStatusMethods();
  base.log.Say("mounting of images: " + parts.services.DescribeMounts());
}

Television::~Television() = default;

void Television::AddStatusMethods() {
  m_base.router.Add("tv.status", [this](const Json::Value&, const Caller&) { return Status(); });
  m_base.router.Add("dump", [this](const Json::Value&, const Caller&) { return Dump(); });
}

void Television::TurnOn(Power::Done done) {
  m_power->TurnOn(std::move(done));
}

void Television::GoDown(std::function<void()> done) {
  m_power->GoDown(std::move(done));
}

Json::Value Television::Status() const {
  Json::Value status;
  status["pid"] = getpid();
  status["uptime"] = Json::Int64(Now() - m_startedAt);
  status["root"] = m_base.options.paths.Root();
  status["address"] = m_base.busAddress;
  status["sandbox"] = m_base.options.sandbox;
  status["speed"] = m_base.options.speed;
  status["offline"] = m_base.options.offline;
  const TvClock& clock = m_parts->launcher.Clock();
  status["clock"] = Json::Int64(std::chrono::floor<std::chrono::seconds>(clock.Now()).count());
  status["mounts"] = m_parts->services.DescribeMounts() + " (" + m_base.mounts + ")";
  status["daemon"] = m_parts->supervisor.Describe();
  return status;
}

Json::Value Television::Dump() const {
  Json::Value dump(Json::objectValue);
  for (const auto& entry : m_dump) {
    dump[entry.first] = entry.second();
  }
  return dump;
}

}  // namespace desk::tv
