// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Controls the fake for the contract tests.
#include <json/json.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include <app_control.h>
#include <smart_deadlock.h>

#include "contract_control.h"
#include "fake/control/fake.h"

namespace contract {
namespace {

constexpr int FIRST_PID = 1000;
constexpr int FAILED = 1;

fake::Package ToFake(const Package& package) {
  fake::Package result;
  result.id = package.id;
  result.version = package.version;
  for (const App& app : package.apps) {
    result.apps.push_back(
        {app.id, app.service ? PACKAGE_INFO_SERVICEAPP : PACKAGE_INFO_UIAPP, app.metadata});
  }
  return result;
}

fake::BundleEntry ToFake(const Entry& entry) {
  static const std::map<Entry::Kind, int> s_types = {{Entry::Kind::String, BUNDLE_TYPE_STR},
                                                     {Entry::Kind::Bytes, BUNDLE_TYPE_BYTE},
                                                     {Entry::Kind::Strings, BUNDLE_TYPE_STR_ARRAY}};
  return {entry.key, s_types.at(entry.kind), entry.values};
}

TextPairs ToPairs(const std::string& record) {
  Json::Value value;
  std::istringstream(record) >> value;
  TextPairs pairs;
  for (const std::string& name : value.getMemberNames()) {
    pairs.emplace_back(name, value[name].asString());
  }
  return pairs;
}

class FakeControl : public Control {
 public:
  FakeControl() {
    fake::SetLaunchHook([this](const fake::Launch& launch) { return Start(launch.app); });
    fake::SetMountHandler(
        [](const fake::Mount& mount) { return std::filesystem::exists(mount.image) ? 0 : FAILED; });
  }
  ~FakeControl() override { fake::Reset(); }

  bool RunMainLoopUntil(const std::function<bool()>& condition) override {
    RunMainLoop();
    return condition();
  }

  void RunMainLoop() override {
    while (!m_waiting.empty()) {
      const auto next = m_waiting.front();
      m_waiting.pop_front();
      next();
    }
    fake::DeliverKeyChanges();
  }

  void SetKey(const std::string& key, int value) override { fake::SetKey(key, value); }
  void SetKey(const std::string& key, const std::string& value) override {
    fake::SetKey(key, value);
  }
  void UnsetKey(const std::string& key) override { fake::UnsetKey(key); }

  void Install(const Package& package) override {
    Enter(package, PACKAGE_MANAGER_EVENT_TYPE_INSTALL);
  }
  void Update(const Package& package) override {
    Enter(package, PACKAGE_MANAGER_EVENT_TYPE_UPDATE);
  }
  void Uninstall(const std::string& package) override {
    if (!fake::RemovePackage(package)) {
      throw std::runtime_error(package + " is not installed");
    }
    Announce(package, PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL);
  }

  void SetWasApp(const std::string& package, const std::string& app, const std::string& widget,
                 int kind, int gone) override {
    fake::AddWasApp({package, app, widget, kind, gone});
  }

  std::vector<TextPairs> Channels() override {
    std::map<std::string, TextPairs> channels;
    for (const std::string& record : fake::Channels()) {
      const TextPairs pairs = ToPairs(record);
      const auto package = std::find_if(pairs.begin(), pairs.end(),
                                        [](const auto& pair) { return pair.first == "pkg_id"; });
      channels[package->second] = pairs;
    }
    std::vector<TextPairs> sorted;
    for (const auto& [package, pairs] : channels) {
      sorted.push_back(pairs);
    }
    return sorted;
  }

  void StartApp(const std::string& app) override {
    if (Start(app) != 0) {
      throw std::runtime_error(app + " does not belong to a package");
    }
  }
  void StopApp(const std::string& app) override { fake::SetStopped(app); }

  void SendMessage(const std::string& app, const std::string& port,
                   const std::vector<Entry>& message,
                   const std::optional<std::string>& replyPort) override {
    std::vector<fake::BundleEntry> entries;
    for (const Entry& entry : message) {
      entries.push_back(ToFake(entry));
    }
    m_waiting.push_back([=] {
      fake::SendMessage(
          {port, app.c_str(), replyPort ? replyPort->c_str() : nullptr, false, entries});
    });
  }

  std::vector<TextPairs> Received(const std::string& app, const std::string& port) override {
    std::vector<TextPairs> received;
    for (const fake::Outgoing& message : fake::SentMessages()) {
      if (message.app == app && message.port == port && message.result == 0) {
        received.emplace_back();
        for (const auto& entry : message.message) {
          received.back().emplace_back(entry.key, entry.values.at(0));
        }
      }
    }
    return received;
  }

  void AddService(std::uint64_t id, const std::string& package) override {
    m_services[id] = fake::MakeService(id, package);
    fake::AddService(m_services[id]);
  }
  void Tune(std::uint64_t id) override { fake::SetCurrentService(m_services.at(id)); }
  void SendTvSignal(int signal, const std::vector<std::uint8_t>& payload) override {
    fake::FireTvSignalOnThread(signal, payload);
  }
  void SendProxySignal(int signal) override { fake::FireProxySignal(signal); }

  std::pair<int, int> WatchDaemon(int seconds) override {
    const int registered = smart_deadlock_register_watchdog_service(seconds);
    return {registered, smart_deadlock_watchdog_notify(this)};
  }

  std::vector<std::string> Log() override { return fake::LogTexts(); }

 private:
  void Enter(const Package& package, package_manager_event_type_e type) {
    fake::AddPackage(ToFake(package));
    for (const App& app : package.apps) {
      m_apps.insert(app.id);
    }
    Announce(package.id, type);
  }

  void Announce(const std::string& package, package_manager_event_type_e type) {
    for (const auto state :
         {PACKAGE_MANAGER_EVENT_STATE_STARTED, PACKAGE_MANAGER_EVENT_STATE_PROCESSING,
          PACKAGE_MANAGER_EVENT_STATE_COMPLETED}) {
      m_waiting.push_back([=] { fake::FirePackageEvent(package, type, state, 50 * state); });
    }
  }

  int Start(const std::string& app) {
    if (m_apps.count(app) == 0) {
      return APP_CONTROL_ERROR_APP_NOT_FOUND;
    }
    fake::SetRunning(app, FIRST_PID + static_cast<int>(m_apps.size()));
    return APP_CONTROL_ERROR_NONE;
  }

  std::deque<std::function<void()>> m_waiting;  // run by the main loop
  std::set<std::string> m_apps;
  std::map<std::uint64_t, fake::Service> m_services;
};

}  // namespace

std::unique_ptr<Control> MakeControl() {
  return std::make_unique<FakeControl>();
}

}  // namespace contract
