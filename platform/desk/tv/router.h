// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>
#include <sys/types.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace desk::tv {

/// The origin of a call, derived from the credentials of its connection.
struct Caller {
  enum class Kind { Daemon, App, Operator };
  Kind kind = Kind::Operator;
  std::string busName;  ///< unique name of the connection, for unicast events
  pid_t pid = 0;
  std::string appId;  ///< of an app or the daemon; empty for an operator
};

/// Answers one deferred call. Call exactly one of the functions, once, from any thread. The router
/// keeps the order of replies and events.
class Reply {
 public:
  virtual ~Reply() = default;
  virtual void Return(const Json::Value& value) = 0;
  /// `code` is one of DeskError's.
  virtual void Fail(const std::string& code, const std::string& message) = 0;
};

/// Decodes a request, does the work and encodes the reply. Throws DeskError on failure. Runs on
/// desk-tv's main loop and must not block: a deferred handler moves long work to a thread.
using Handler = std::function<Json::Value(const Json::Value& request, const Caller& caller)>;
using DeferredHandler = std::function<void(const Json::Value& request, const Caller& caller,
                                           std::shared_ptr<Reply> reply)>;

/// Where the parts of desk-tv register their methods and send their events. Methods and events
/// carry JSON; handlers convert it to structs. desk-tv uses an implementation on the bus, unit
/// tests one in memory.
class Router {
 public:
  virtual ~Router() = default;
  virtual void Add(const std::string& method, Handler handler) = 0;
  virtual void AddDeferred(const std::string& method, DeferredHandler handler) = 0;
  /// Broadcasts an event. Callable from any thread; the order of calls is kept.
  virtual void Emit(const std::string& topic, const Json::Value& body) = 0;
  /// Sends an event to one connection. Does nothing when the connection has ended.
  virtual void EmitTo(const std::string& busName, const std::string& topic,
                      const Json::Value& body) = 0;
  /// Calls the function with the unique name of each connection that ends.
  virtual void OnConnectionGone(std::function<void(const std::string& busName)> function) = 0;
};

}  // namespace desk::tv
