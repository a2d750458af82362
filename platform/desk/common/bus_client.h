// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <functional>
#include <memory>
#include <string>

#include "desk/common/paths.h"

typedef struct _GMainContext GMainContext;

namespace desk {

/// One connection to a desk's private bus. All operations are callable from any thread.
class BusClient {
 public:
  /// Receives the body of an event.
  using EventFunction = std::function<void(const Json::Value& body)>;

  /// Connects to the bus at the address. Throws DeskError (NoTv).
  explicit BusClient(const std::string& address);
  ~BusClient();
  BusClient(const BusClient&) = delete;
  BusClient& operator=(const BusClient&) = delete;

  /// Connects to the bus of a desk, whose address is in a file. Throws DeskError: NoTv, or
  /// Failed when the TV belongs to another user.
  static std::unique_ptr<BusClient> Open(const DeskPaths& paths);

  /// Waits for the reply without a time limit, which would run on the daemon's clock and may be
  /// many times too short. Runs no callback of the caller's contexts meanwhile. Throws DeskError
  /// with desk-tv's code, or NoTv when desk-tv has ended. A null request is an empty one.
  Json::Value Call(const std::string& method, const Json::Value& request);
  Json::Value Call(const std::string& method);
  /// Sends the request without a reply, which would wake the caller: its outcome is unknown. In
  /// order with the calls of the same thread. Throws DeskError (NoTv).
  void Tell(const std::string& method, const Json::Value& request);

  /// Calls the function for every event of the topic that is sent after this call, in order, on the
  /// thread that runs the context (null: the default context). The context is referenced. An
  /// exception of the function ends the process. Returns a number for Unsubscribe. Throws DeskError
  /// (NoTv).
  int Subscribe(const std::string& topic, EventFunction function, GMainContext* context);
  /// After it has returned on the context's thread, the function is not called again; on another
  /// thread, a call that has begun may still be running.
  void Unsubscribe(int id);

  /// Calls the function once, when the bus has closed the connection, from the context that was the
  /// thread's default when the client was constructed. Call it once, directly after the
  /// constructor.
  void OnClosed(std::function<void()> function);

 private:
  struct State;
  std::shared_ptr<State> m_state;  ///< shared with the filter on the bus library's own thread
};

}  // namespace desk
