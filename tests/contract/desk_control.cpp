// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Controls desk-tv for the contract tests. For desk-tv the process under test is an operator, as is
// this control, which has its own connection.
#include <glib.h>
#include <json/value.h>
#include <vconf.h>

#include <atomic>
#include <cstdlib>
#include <map>
#include <sstream>
#include <stdexcept>

#include "contract_control.h"
#include "desk/common/base64.h"
#include "desk/common/bus_client.h"
#include "desk_package.h"
#include "desk_process.h"
#include "support/wait_for.h"

namespace contract {
namespace {

constexpr const char* FENCE_KEY = "memory/contract_fence";
constexpr const char* OWN_APP = "";  // the process under test is not an app

std::atomic<int> g_fence{0};

std::string Hex(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    constexpr char DIGITS[] = "0123456789abcdef";
    text += DIGITS[byte >> 4];
    text += DIGITS[byte & 15];
  }
  return text;
}

Json::Value ToJson(const Entry& entry) {
  Json::Value value(Json::objectValue);
  value["key"] = entry.key;
  switch (entry.kind) {
    case Entry::Kind::String:
      value["type"] = 0x401;
      value["value"] = entry.values.at(0);
      break;
    case Entry::Kind::Strings:
      value["type"] = 0x501;
      for (const std::string& text : entry.values) {
        value["value"].append(text);
      }
      break;
    case Entry::Kind::Bytes:
      value["type"] = 2;
      value["bytes"] = desk::ToBase64(entry.values.at(0));
      break;
  }
  return value;
}

TextPairs ToPairs(const Json::Value& object) {
  TextPairs pairs;
  for (const std::string& name : object.getMemberNames()) {
    pairs.emplace_back(name, object[name].asString());
  }
  return pairs;
}

// The environment of an application of the desk, set before the first platform call.
void SetEnvironment(const desk::DeskPaths& paths, const std::string& log) {
  const std::string address = support::ReadFile(paths.Address());
  setenv("TV_BUS", address.substr(0, address.find('\n')).c_str(), 1);
  setenv("TV_ROOT", paths.Root().c_str(), 1);
  setenv("TV_ROLE", "app", 1);
  setenv("TV_APP_ID", "contract.process", 1);
  setenv("TV_LOG", log.c_str(), 1);
}

class DeskControl : public Control {
 public:
  DeskControl() : m_log(m_desk.ScratchFile("process.log")) {
    SetEnvironment(m_desk.Paths(), m_log);
    m_bus = desk::BusClient::Open(m_desk.Paths());
    m_bus->Subscribe(
        "port", [this](const Json::Value& body) { OnMessage(body); }, nullptr);
  }

  bool RunMainLoopUntil(const std::function<bool()>& condition) override {
    return support::WaitFor(
        [&] {
          while (g_main_context_iteration(nullptr, FALSE) == TRUE) {
          }
          return condition();
        },
        "the condition awaited in the main loop");
  }

  // Events arrive in order: after the event of the fence no earlier one can arrive.
  void RunMainLoop() override {
    const vconf_callback_fn onFence = [](keynode_t* node, void*) {
      g_fence = vconf_keynode_get_int(node);
    };
    if (vconf_notify_key_changed(FENCE_KEY, onFence, nullptr) != 0) {
      throw std::runtime_error("the fence cannot be set up");
    }
    const int reached = g_fence + 1;
    SetKey(FENCE_KEY, reached);
    if (!RunMainLoopUntil([reached] { return g_fence == reached; })) {
      throw std::runtime_error("the fence was not reached");
    }
  }

  void SetKey(const std::string& key, int value) override { Set(key, "int", value); }
  void SetKey(const std::string& key, const std::string& value) override {
    Set(key, "string", value);
  }
  void UnsetKey(const std::string& key) override {
    Json::Value request;
    request["key"] = key;
    m_bus->Call("key.unset", request);
  }

  void Install(const Package& package) override { Put(package, false); }
  void Update(const Package& package) override { Put(package, true); }
  void Uninstall(const std::string& package) override {
    Json::Value request;
    request["package"] = package;
    m_bus->Call("pkg.uninstall", request);
  }

  void SetWasApp(const std::string& package, const std::string& app, const std::string& widget,
                 int kind, int gone) override {
    Json::Value request;
    request["package"] = package;
    request["app"] = app;
    request["widget"] = widget;
    request["kind"] = kind;
    request["gone"] = gone != 0;
    m_bus->Call("was.set", request);
  }

  std::vector<TextPairs> Channels() override {
    const Json::Value reply = m_bus->Call("channel.list");
    std::vector<TextPairs> channels;
    for (const Json::Value& channel : reply["channels"]) {
      channels.push_back(ToPairs(channel));
    }
    return channels;
  }

  void StartApp(const std::string& app) override {
    Json::Value request;
    request["app"] = app;
    request["operation"] = "";
    request["extra"] = Json::Value(Json::objectValue);
    if (m_bus->Call("app.launch", request)["result"].asInt() != 0) {
      throw std::runtime_error(app + " cannot be started");
    }
  }
  void StopApp(const std::string& app) override {
    Json::Value request;
    request["app"] = app;
    m_bus->Call("app.kill", request);
    const auto ended = support::WaitFor(
        [&] { return !m_bus->Call("app.info", request)["running"].asBool(); }, "the end of " + app);
    if (!ended) {
      throw std::runtime_error(ended.message());
    }
  }

  void SendMessage(const std::string& app, const std::string& port,
                   const std::vector<Entry>& message,
                   const std::optional<std::string>& replyPort) override {
    Json::Value request;
    request["from"] = app;
    request["app"] = OWN_APP;
    request["port"] = port;
    request["bundle"] = Json::Value(Json::arrayValue);
    for (const Entry& entry : message) {
      request["bundle"].append(ToJson(entry));
    }
    if (replyPort.has_value()) {
      Register(app, *replyPort);
      request["reply_port"] = *replyPort;
    }
    const int result = m_bus->Call("port.send", request)["result"].asInt();
    if (result != 0) {
      throw std::runtime_error("the message was refused: " + std::to_string(result));
    }
  }

  std::vector<TextPairs> Received(const std::string& app, const std::string& port) override {
    return m_received[m_ports[{app, port}]];
  }

  void AddService(std::uint64_t id, const std::string& package) override {
    Json::Value request;
    request["id"] = Json::UInt64(id);
    request["package"] = package;
    m_bus->Call("service.add", request);
  }
  void Tune(std::uint64_t id) override {
    Json::Value request;
    request["id"] = Json::UInt64(id);
    m_bus->Call("tune", request);
  }
  void SendTvSignal(int signal, const std::vector<std::uint8_t>& payload) override {
    Json::Value request;
    request["signal"] = signal;
    request["data"] = Hex(payload);
    m_bus->Call("signal", request);
  }
  void SendProxySignal(int signal) override { SendTvSignal(signal, {}); }

  std::pair<int, int> WatchDaemon(int seconds) override {
    SetKey("memory/contract/watchdog", seconds);
    Json::Value request;
    request["key"] = "memory/contract/watchdog_results";
    Json::Value reply;
    const auto answered = support::WaitFor(
        [&] {
          reply = m_bus->Call("key.get", request);
          return reply["found"].asBool();
        },
        "the daemon's answer");
    if (!answered) {
      throw std::runtime_error(answered.message());
    }
    std::pair<int, int> results;
    std::istringstream(reply["value"].asString()) >> results.first >> results.second;
    return results;
  }

  std::vector<std::string> Log() override {
    std::vector<std::string> texts;
    std::istringstream lines(support::ReadFile(m_log));
    for (std::string line; std::getline(lines, line);) {
      if (line.find("/orv-enabler: ") != std::string::npos) {
        texts.push_back(line.substr(line.find(") > ") + 4));
      }
    }
    return texts;
  }

 private:
  void Set(const std::string& key, const char* type, const Json::Value& value) {
    Json::Value request;
    request["key"] = key;
    request["type"] = type;
    request["value"] = value;
    m_bus->Call("key.set", request);
  }

  void Put(const Package& package, bool update) {
    const std::string file = m_desk.ScratchFile(package.id + ".wgt");
    WritePackage(file, package);
    Json::Value request;
    request["file"] = file;
    request["update"] = update;
    m_bus->Call("pkg.install", request);
  }

  void Register(const std::string& app, const std::string& port) {
    Json::Value request;
    request["from"] = app;
    request["port"] = port;
    m_ports[{app, port}] = m_bus->Call("port.register", request)["id"].asInt();
  }

  void OnMessage(const Json::Value& body) {
    TextPairs pairs;
    for (const Json::Value& entry : body["bundle"]) {
      pairs.emplace_back(entry["key"].asString(), entry["value"].asString());
    }
    m_received[body["id"].asInt()].push_back(std::move(pairs));
  }

  DeskProcess m_desk;
  const std::string m_log;
  std::unique_ptr<desk::BusClient> m_bus;
  std::map<std::pair<std::string, std::string>, int> m_ports;
  std::map<int, std::vector<TextPairs>> m_received;  // by the port's number
};

}  // namespace

std::unique_ptr<Control> MakeControl() {
  return std::make_unique<DeskControl>();
}

}  // namespace contract
