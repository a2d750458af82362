// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>
#include <json/value.h>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "desk/common/desk_error.h"
#include "desk/tv/router.h"

namespace desk::tv {

/// Runs the default main context until the condition is true; throws with the text when it is not
/// true in time.
template <typename Condition>
void RunUntil(const std::string& what, Condition condition, int seconds = 30) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  const guint tick = g_timeout_add(
      20, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  while (!condition() && std::chrono::steady_clock::now() < deadline) {
    g_main_context_iteration(nullptr, TRUE);
  }
  g_source_remove(tick);
  if (!condition()) {
    throw std::runtime_error("waited in vain: " + what);
  }
}

/// A router without a bus: calls go straight to the handlers, events are kept.
class MemoryRouter : public Router {
 public:
  struct Event {
    std::string to;  ///< empty for a broadcast
    std::string topic;
    Json::Value body;
  };

  void Add(const std::string& method, Handler handler) override {
    m_handlers[method] = std::move(handler);
  }
  void AddDeferred(const std::string& method, DeferredHandler handler) override {
    m_deferred[method] = std::move(handler);
  }
  void Emit(const std::string& topic, const Json::Value& body) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_events.push_back({"", topic, body});
  }
  void EmitTo(const std::string& busName, const std::string& topic,
              const Json::Value& body) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_events.push_back({busName, topic, body});
  }
  void OnConnectionGone(std::function<void(const std::string&)> function) override {
    m_gone.push_back(std::move(function));
  }

  /// The reply, or a DeskError as the caller would get it.
  Json::Value Call(const std::string& method, const Json::Value& request = Json::objectValue,
                   const Caller& caller = Caller()) {
    const auto plain = m_handlers.find(method);
    if (plain != m_handlers.end()) {
      return plain->second(request, caller);
    }
    const auto answer = std::make_shared<Answer>();
    m_deferred.at(method)(request, caller, answer);
    RunUntil("the reply of " + method, [&] { return answer->Done(); });
    return answer->Take();
  }

  class Answer;

  /// Begins a deferred call; its reply, which may come later.
  std::shared_ptr<Answer> BeginCall(const std::string& method, const Json::Value& request) {
    auto answer = std::make_shared<Answer>();
    m_deferred.at(method)(request, Caller(), answer);
    return answer;
  }
  /// The same; the function returns whether the reply has arrived.
  std::function<bool()> Begin(const std::string& method, const Json::Value& request) {
    return [answer = BeginCall(method, request)] { return answer->Done(); };
  }

  void Disconnect(const std::string& busName) {
    for (const auto& function : m_gone) {
      function(busName);
    }
  }

  std::vector<Event> AllEvents() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_events;
  }
  std::vector<Event> Events(const std::string& topic) const {
    std::vector<Event> chosen;
    for (const Event& event : AllEvents()) {
      if (event.topic == topic) {
        chosen.push_back(event);
      }
    }
    return chosen;
  }

  class Answer : public Reply {
   public:
    void Return(const Json::Value& value) override { Finish(value, std::nullopt); }
    void Fail(const std::string& code, const std::string& message) override {
      Finish(Json::Value(), DeskError(code, message));
    }
    bool Done() {
      const std::lock_guard<std::mutex> lock(m_mutex);
      return m_count > 0;
    }
    /// Throws the DeskError that it was answered with, if it was.
    Json::Value Take() {
      const std::lock_guard<std::mutex> lock(m_mutex);
      if (m_error) {
        throw *m_error;
      }
      return m_value;
    }

   private:
    void Finish(const Json::Value& value, std::optional<DeskError> error) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      if (++m_count > 1) {
        throw std::logic_error("a call was answered twice");
      }
      m_value = value;
      m_error = std::move(error);
      g_main_context_wakeup(nullptr);
    }

    std::mutex m_mutex;
    int m_count = 0;
    Json::Value m_value;
    std::optional<DeskError> m_error;
  };

 private:
  mutable std::mutex m_mutex;
  std::vector<Event> m_events;  // guarded by m_mutex
  std::map<std::string, Handler> m_handlers;
  std::map<std::string, DeferredHandler> m_deferred;
  std::vector<std::function<void(const std::string&)>> m_gone;
};

}  // namespace desk::tv
