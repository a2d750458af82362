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

/// Who is at the other end of a call, from the credentials of its connection.
struct Caller {
  enum class Kind { Daemon, App, Operator };
  Kind kind = Kind::Operator;
  std::string busName;  ///< unique name, for unicast events
  pid_t pid = 0;
  std::string appId;  ///< of an app, or the daemon's own id
};

/// Answers one deferred call, once. Callable from any thread; the answer goes out on the main loop.
class Reply {
 public:
  virtual ~Reply() = default;
  virtual void Return(const Json::Value& value) = 0;
  /// code is one of DeskError's.
  virtual void Fail(const std::string& code, const std::string& message) = 0;
};

/// Takes a request and returns the reply; throws DeskError for a failure. Runs on desk-tv's main
/// loop and must not block: long work goes to a thread and a deferred handler.
using Handler = std::function<Json::Value(const Json::Value& request, const Caller& caller)>;
using DeferredHandler = std::function<void(const Json::Value& request, const Caller& caller,
                                           std::shared_ptr<Reply> reply)>;

/// Where the parts of desk-tv put their methods, and through which they tell of events. The bus is
/// behind it; tests of a part use an implementation without one.
class Router {
 public:
  virtual ~Router() = default;
  virtual void Add(const std::string& method, Handler handler) = 0;
  virtual void AddDeferred(const std::string& method, DeferredHandler handler) = 0;
  /// Broadcast. Callable from any thread; the order of calls is kept.
  virtual void Emit(const std::string& topic, const Json::Value& body) = 0;
  /// To one connection; without effect when it is gone.
  virtual void EmitTo(const std::string& busName, const std::string& topic,
                      const Json::Value& body) = 0;
  /// Calls the function with the unique name of each connection that goes away.
  virtual void OnConnectionGone(std::function<void(const std::string& busName)> function) = 0;
};

}  // namespace desk::tv
