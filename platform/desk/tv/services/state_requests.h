// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <functional>
#include <string>

#include "desk/tv/services/web_app_state.h"

namespace desk::tv {

/// The pending requests to one web app to enter a state. A request is sent as soon as the app has a
/// connection, and completed when the app reports the state. Main loop only.
class StateRequests {
 public:
  using Send = std::function<void(const std::string& busName, WebAppState state)>;
  /// Called once; `failure` is empty on success.
  using Done = std::function<void(const std::string& failure)>;

  /// `done` may be empty.
  void Add(WebAppState state, Done done, const Send& send);
  /// The app has entered a state; `busName` is the name of its connection.
  void OnEntered(const std::string& busName, WebAppState state, const Send& send);
  /// Completes all pending requests with this failure.
  void Fail(const std::string& failure);

 private:
  struct Request {
    WebAppState state;
    Done done;
  };

  std::string m_busName;  ///< empty until the app has reported its first state
  std::deque<Request> m_requests;
};

}  // namespace desk::tv
