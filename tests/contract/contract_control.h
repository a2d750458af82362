// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Controls the television from outside the process under test. Each platform that the suite runs
/// on implements it.
namespace contract {

using TextPairs = std::vector<std::pair<std::string, std::string>>;

struct App {
  std::string id;
  bool service = false;  ///< a service app; otherwise an app with a user interface
  TextPairs metadata;
};

struct Package {
  std::string id;
  std::string version;
  std::vector<App> apps;
};

/// A value of a message: a text for bytes, the elements of an array of strings.
struct Entry {
  enum class Kind { String, Bytes, Strings };
  std::string key;
  Kind kind = Kind::String;
  std::vector<std::string> values;
};

/// An operation that changes the television returns after the change; what the television sends to
/// the process may arrive later. An operation that fails throws.
class Control {
 public:
  virtual ~Control() = default;

  /// Runs a main loop on the calling thread until the condition is true. Returns false when it
  /// does not become true in time.
  virtual bool RunMainLoopUntil(const std::function<bool()>& condition) = 0;
  /// Delivers everything that was sent to the process before this call.
  virtual void RunMainLoop() = 0;

  virtual void SetKey(const std::string& key, int value) = 0;
  virtual void SetKey(const std::string& key, const std::string& value) = 0;
  virtual void UnsetKey(const std::string& key) = 0;

  virtual void Install(const Package& package) = 0;
  virtual void Update(const Package& package) = 0;
  virtual void Uninstall(const std::string& package) = 0;

  /// The web-app service's table. Only this call adds the packages of the contract.
  virtual void SetWasApp(const std::string& package, const std::string& app,
                         const std::string& widget, int kind, int gone) = 0;

  /// The channel framework's records by package id, each as the members and values of an object.
  virtual std::vector<TextPairs> Channels() = 0;

  /// Starts and ends the app, which must belong to an installed package.
  virtual void StartApp(const std::string& app) = 0;
  virtual void StopApp(const std::string& app) = 0;

  /// Sends as this app, which need not run, to a local port of the process. The process can reply
  /// to the reply port.
  virtual void SendMessage(const std::string& app, const std::string& port,
                           const std::vector<Entry>& message,
                           const std::optional<std::string>& replyPort) = 0;
  /// The replies that arrived at the port of the app, strings only.
  virtual std::vector<TextPairs> Received(const std::string& app, const std::string& port) = 0;

  virtual void AddService(std::uint64_t id, const std::string& package) = 0;
  virtual void Tune(std::uint64_t id) = 0;
  /// A signal of the TV service, and one of the middleware.
  virtual void SendTvSignal(int signal, const std::vector<std::uint8_t>& payload) = 0;
  virtual void SendProxySignal(int signal) = 0;

  /// Makes the supervised process (the one under test, or another one) register with the deadlock
  /// watchdog and notify it. The results of the two calls.
  virtual std::pair<int, int> WatchDaemon(int seconds) = 0;

  /// The log's lines, each without its head ("path: function(line) > ") and newline.
  virtual std::vector<std::string> Log() = 0;
};

/// Implemented once per platform.
std::unique_ptr<Control> MakeControl();

}  // namespace contract
