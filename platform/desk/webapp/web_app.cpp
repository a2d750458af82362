// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "webapp/web_app.h"

#include <glib.h>

#include <cstdio>
#include <utility>

#include "common/desk_error.h"

namespace desk {
namespace {

constexpr unsigned STEP_MS = 150;

}  // namespace

WebApp::WebApp(BusClient& bus, std::string id, std::function<void()> quit)
    : m_bus(bus), m_id(std::move(id)), m_quit(std::move(quit)) {
  m_bus.Subscribe(
      "app", [this](const Json::Value& event) { OnEvent(event); }, nullptr);
}

WebApp::~WebApp() {
  StopLoading();
}

void WebApp::Start(bool background) {
  m_loading = {"init", "load", background ? "preload" : "resume"};
  LoadOn();
}

void WebApp::LoadOn() {
  m_timer = g_timeout_add(
      STEP_MS,
      [](gpointer data) -> gboolean {
        static_cast<WebApp*>(data)->OnLoaded();
        return G_SOURCE_REMOVE;
      },
      this);
}

void WebApp::StopLoading() {
  m_loading.clear();
  m_orders.clear();
  if (m_timer != 0) {
    g_source_remove(std::exchange(m_timer, 0));
  }
}

// The next step of the start; behind the last one come the orders that had to wait.
void WebApp::OnLoaded() {
  m_timer = 0;
  const std::string word = std::move(m_loading.front());
  m_loading.pop_front();
  Enter(word);
  if (!m_loading.empty()) {
    LoadOn();
    return;
  }
  while (!m_orders.empty()) {
    const std::string order = std::move(m_orders.front());
    m_orders.pop_front();
    Obey(order);
  }
}

void WebApp::End() {
  StopLoading();
  Enter("destroy");
  Obey("quit");
}

// Events of all apps come by; orders come to this one alone.
void WebApp::OnEvent(const Json::Value& event) {
  if (event["id"] != Json::Value(m_id) || event["state"] != Json::Value("enter")) {
    return;
  }
  const std::string word = event["word"].asString();
  if (m_loading.empty()) {
    Obey(word);
  } else {
    m_orders.push_back(word);
  }
}

void WebApp::Obey(const std::string& word) {
  Enter(word);
  if (word == "quit") {
    StopLoading();
    m_quit();
  }
}

void WebApp::Enter(const std::string& word) {
  Json::Value request(Json::objectValue);
  request["word"] = word;
  try {
    m_bus.Call("app.entered", request);
  } catch (const DeskError& error) {
    std::fprintf(stderr, "%s: %s\n", m_id.c_str(), error.what());
  }
}

}  // namespace desk
