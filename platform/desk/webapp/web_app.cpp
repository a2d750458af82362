// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "webapp/web_app.h"

#include <cstdio>
#include <utility>

#include "common/desk_error.h"

namespace desk {

WebApp::WebApp(BusClient& bus, std::string id, std::function<void()> quit)
    : m_bus(bus), m_id(std::move(id)), m_quit(std::move(quit)) {
  m_bus.Subscribe(
      "app", [this](const Json::Value& event) { OnEvent(event); }, nullptr);
}

void WebApp::Start(bool background) {
  Enter("init");
  Enter("load");
  Enter(background ? "preload" : "resume");
}

void WebApp::End() {
  try {
    Enter("destroy");
    Enter("quit");
  } catch (const DeskError& error) {
    std::fprintf(stderr, "%s: %s\n", m_id.c_str(), error.what());
  }
  m_quit();
}

// Events of all apps come by; orders come to this one alone.
void WebApp::OnEvent(const Json::Value& event) {
  if (event["id"] != Json::Value(m_id) || event["state"] != Json::Value("enter")) {
    return;
  }
  const std::string word = event["word"].asString();
  try {
    Enter(word);
  } catch (const DeskError& error) {
    std::fprintf(stderr, "%s: %s\n", m_id.c_str(), error.what());
  }
  if (word == "quit") {
    m_quit();
  }
}

void WebApp::Enter(const std::string& word) {
  Json::Value request(Json::objectValue);
  request["word"] = word;
  m_bus.Call("app.entered", request);
}

}  // namespace desk
