// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/webapp/web_app.h"

#include <cstdio>
#include <optional>
#include <utility>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk {
namespace {

constexpr unsigned STEP_MS = 150;

// The state that the event requests of this app; nothing when it is another event.
std::optional<std::string> RequestedState(const Json::Value& event, const std::string& app) {
  if (event["id"] != Json::Value(app) || event["state"] != Json::Value("enter")) {
    return std::nullopt;
  }
  return event["word"].asString();
}

}  // namespace

WebApp::WebApp(BusClient& bus, std::string id, std::function<void()> quit)
    : m_bus(bus), m_id(std::move(id)), m_quit(std::move(quit)) {
  m_bus.Subscribe(
      "app", [this](const Json::Value& event) { OnEvent(event); }, nullptr);
}

void WebApp::Start(bool background) {
  m_loading = {"init", "load", background ? "preload" : "resume"};
  ScheduleNextState();
}

void WebApp::ScheduleNextState() {
  m_timer.Set(STEP_MS, [this] { EnterNextState(); });
}

void WebApp::StopLoading() {
  m_loading.clear();
  m_requested.clear();
  m_timer.Stop();
}

// Requests that came during the start follow its last state.
void WebApp::EnterNextState() {
  const std::string state = std::move(m_loading.front());
  m_loading.pop_front();
  Enter(state);
  if (!m_loading.empty()) {
    ScheduleNextState();
    return;
  }
  while (!m_requested.empty()) {
    const std::string requested = std::move(m_requested.front());
    m_requested.pop_front();
    Obey(requested);
  }
}

void WebApp::End() {
  StopLoading();
  Enter("destroy");
  Obey("quit");
}

// The topic carries the events of all apps; requests are sent to this process only.
void WebApp::OnEvent(const Json::Value& event) {
  const std::optional<std::string> state = RequestedState(event, m_id);
  if (!state) {
    return;
  }
  if (m_loading.empty()) {
    Obey(*state);
  } else {
    m_requested.push_back(*state);
  }
}

void WebApp::Obey(const std::string& state) {
  Enter(state);
  if (state == "quit") {
    StopLoading();
    m_quit();
  }
}

void WebApp::Enter(const std::string& state) {
  try {
    m_bus.Call("app.entered", JsonObject({{"word", state}}));
  } catch (const DeskError& error) {
    std::fprintf(stderr, "%s: %s\n", m_id.c_str(), error.what());
  }
}

}  // namespace desk
