// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/state_requests.h"

#include <utility>

namespace desk::tv {

void StateRequests::Add(WebAppState state, Done done, const Send& send) {
  m_requests.push_back({state, std::move(done)});
  if (!m_busName.empty()) {
    send(m_busName, state);
  }
}

void StateRequests::OnEntered(const std::string& busName, WebAppState state, const Send& send) {
  if (m_busName.empty()) {
    m_busName = busName;
    // The app entered its first state by itself: the requests are only sent now.
    for (const Request& request : m_requests) {
      send(m_busName, request.state);
    }
    return;
  }
  if (m_requests.empty() || m_requests.front().state != state) {
    return;
  }
  const Request request = std::move(m_requests.front());
  m_requests.pop_front();
  if (request.done) {
    request.done("");
  }
}

void StateRequests::Fail(const std::string& failure) {
  for (const Request& request : std::exchange(m_requests, {})) {
    if (request.done) {
      request.done(failure);
    }
  }
}

}  // namespace desk::tv
