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

/// The other side of the wall, as the contract's tests need it: what happens on the television and
/// not in the process under test. Every platform that the suite runs against has one.
namespace contract {

using TextPairs = std::vector<std::pair<std::string, std::string>>;

struct App {
  std::string id;
  bool service = false;  ///< a service app; otherwise one with a user interface
  TextPairs metadata;
};

struct Package {
  std::string id;
  std::string version;
  std::vector<App> apps;
};

/// A value of a message. Bytes are given as text, an array of strings as its elements.
struct Entry {
  enum class Kind { kString, kBytes, kStrings };
  std::string key;
  Kind kind = Kind::kString;
  std::vector<std::string> values;
};

/// Operations that change the television return when the change is made; what it sends to the
/// process may arrive later. A control that cannot do what is asked throws.
class Control {
 public:
  virtual ~Control() = default;

  /// Runs what a main loop would run, on the calling thread, until the condition holds. False when
  /// it does not hold in time.
  virtual bool RunMainLoopUntil(const std::function<bool()>& condition) = 0;
  /// Runs everything that was sent to the process before this call.
  virtual void RunMainLoop() = 0;

  virtual void SetKey(const std::string& key, int value) = 0;
  virtual void SetKey(const std::string& key, const std::string& value) = 0;
  virtual void UnsetKey(const std::string& key) = 0;

  virtual void Install(const Package& package) = 0;
  virtual void Update(const Package& package) = 0;
  virtual void Uninstall(const std::string& package) = 0;

  /// The web-app service's table, which the packages of the contract enter by this call alone.
  virtual void SetWasApp(const std::string& package, const std::string& app,
                         const std::string& widget, int kind, int gone) = 0;

  /// The channel framework's records, in the order of their packages' ids, each as the members and
  /// values of one object.
  virtual std::vector<TextPairs> Channels() = 0;

  /// Makes the app run, and end. The app must be of an installed package.
  virtual void StartApp(const std::string& app) = 0;
  virtual void StopApp(const std::string& app) = 0;

  /// Sends as this app, which need not run, to a local port of the process. With a reply port the
  /// app can be answered there.
  virtual void SendMessage(const std::string& app, const std::string& port,
                           const std::vector<Entry>& message,
                           const std::optional<std::string>& replyPort) = 0;
  /// The answers that arrived at the port of the app, strings only.
  virtual std::vector<TextPairs> Received(const std::string& app, const std::string& port) = 0;

  virtual void AddService(std::uint64_t id, const std::string& package) = 0;
  virtual void Tune(std::uint64_t id) = 0;
  /// A signal of the TV service, and one of the middleware.
  virtual void SendTvSignal(int signal, const std::vector<std::uint8_t>& payload) = 0;
  virtual void SendProxySignal(int signal) = 0;

  /// Has the process that the television keeps alive (the one under test, or one beside it)
  /// register with the deadlock watchdog and give a sign of life. The results of the two calls.
  virtual std::pair<int, int> WatchDaemon(int seconds) = 0;

  /// The log's lines, each without its head ("path: function(line) > ") and newline.
  virtual std::vector<std::string> Log() = 0;
};

/// Implemented once per platform.
std::unique_ptr<Control> MakeControl();

}  // namespace contract
