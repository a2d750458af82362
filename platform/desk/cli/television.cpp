// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/television.h"

#include <glib.h>

#include <future>
#include <thread>

#include "desk/common/bus_client.h"
#include "desk/common/desk_error.h"

namespace desk::cli {
namespace {

/// A context of its own, which is the thread's default while this object exists.
class Context {
 public:
  Context() : m_context(g_main_context_new()) { g_main_context_push_thread_default(m_context); }
  ~Context() {
    g_main_context_pop_thread_default(m_context);
    g_main_context_unref(m_context);
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  GMainContext* Get() const { return m_context; }

 private:
  GMainContext* m_context;
};

class BusTelevision : public Television {
 public:
  explicit BusTelevision(const DeskPaths& paths) : m_bus(BusClient::Open(paths)) {
    m_bus->OnClosed([this] { m_gone = true; });
  }

  Json::Value Call(const std::string& method, const Json::Value& request) override {
    if (!m_subscribed) {
      return m_bus->Call(method, request);
    }
    GMainContext* context = m_context.Get();
    auto answer = std::async(std::launch::async, [this, &method, &request, context] {
      const WakeUp wake{context};
      return m_bus->Call(method, request);
    });
    while (answer.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
      Iterate(std::chrono::milliseconds(20));
    }
    while (g_main_context_iteration(context, FALSE) == TRUE) {
    }
    return answer.get();
  }

  Json::Value CallWithin(std::chrono::milliseconds most, const std::string& method,
                         const Json::Value& request) override {
    // A call cannot be cancelled: its thread may outlive this object and keeps the connection
    // alive.
    std::packaged_task<Json::Value()> call(
        [bus = m_bus, method, request] { return bus->Call(method, request); });
    auto answer = call.get_future();
    std::thread(std::move(call)).detach();
    if (answer.wait_for(most) != std::future_status::ready) {
      throw DeskError(DeskError::TIMEOUT, "the TV did not answer in time");
    }
    return answer.get();
  }

  void Subscribe(const std::string& topic, EventFunction function) override {
    m_subscribed = true;
    m_bus->Subscribe(
        topic,
        [this, function = std::move(function)](const Json::Value& body) {
          ++m_handedOut;
          function(body);
        },
        m_context.Get());
  }

  void Wait(std::chrono::milliseconds most) override {
    const auto end = std::chrono::steady_clock::now() + most;
    const int before = m_handedOut;
    while (m_handedOut == before && !m_gone) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          end - std::chrono::steady_clock::now());
      if (left.count() <= 0) {
        return;
      }
      Iterate(left);
    }
    if (m_gone) {
      throw DeskError(DeskError::NO_TV, "the TV was switched off: start it again with `tv up`");
    }
  }

 private:
  struct WakeUp {
    GMainContext* context;
    ~WakeUp() { g_main_context_wakeup(context); }
  };

  /// Runs one iteration of the context, for at most that long.
  void Iterate(std::chrono::milliseconds most) {
    GSource* alarm = g_timeout_source_new(static_cast<guint>(most.count()));
    g_source_set_callback(
        alarm, [](gpointer) { return G_SOURCE_REMOVE; }, nullptr, nullptr);
    g_source_attach(alarm, m_context.Get());
    g_main_context_iteration(m_context.Get(), TRUE);
    g_source_destroy(alarm);
    g_source_unref(alarm);
  }

  Context m_context;  ///< created before the connection and freed after it
  std::shared_ptr<BusClient> m_bus;
  bool m_subscribed = false;
  bool m_gone = false;
  int m_handedOut = 0;
};

}  // namespace

std::unique_ptr<Television> ConnectToTv(const DeskPaths& paths) {
  return std::make_unique<BusTelevision>(paths);
}

}  // namespace desk::cli
