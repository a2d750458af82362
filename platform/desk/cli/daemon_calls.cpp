// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/daemon_calls.h"

#include <app_control.h>

#include <algorithm>
#include <map>

#include "desk/cli/journal_view.h"

namespace desk::cli {
namespace {

constexpr const char* BACKGROUND_LAUNCH = "backgroundAtStartup";
constexpr const char* WIDGET_ID_KEY = "memory/was/app_install";
constexpr const char* NETWORK_TIME_KEY = "memory/menu/network/set_time";
constexpr const char* SCHEDULER = "ORVScheduler";
constexpr int EVENT_START = 1002;
constexpr int EVENT_TICK = 1004;
constexpr std::chrono::seconds TICK(720);
constexpr std::chrono::seconds LOAD_LIMIT(20);
constexpr std::chrono::seconds RETRY_LIMIT(120);  // 21 tries, five seconds apart, and some spare

bool Is(const Json::Value& entry, const char* call) {
  return entry["call"].asString() == call;
}

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

std::string Text(const Json::Value& entry, Json::ArrayIndex index) {
  const Json::Value& args = entry["args"];
  return args.isArray() && index < args.size() && args[index].isString() ? args[index].asString()
                                                                         : "";
}

/// Puts the calls on one app_control handle together.
class RequestReader {
 public:
  /// Returns a request when this entry sends one.
  std::optional<LaunchRequest> Read(const Json::Value& entry) {
    if (!StartsWith(entry["call"].asString(), "app_control_") || entry["args"].empty()) {
      return std::nullopt;
    }
    LaunchRequest& request = m_open[entry["args"][0].asString()];
    if (Is(entry, "app_control_create")) {
      request = LaunchRequest();
    } else if (Is(entry, "app_control_set_app_id")) {
      request.app = Text(entry, 1);
    } else if (Is(entry, "app_control_add_extra_data")) {
      request.background = request.background || Text(entry, 2) == BACKGROUND_LAUNCH;
    } else if (Is(entry, "app_control_send_launch_request")) {
      request.time = TimeOf(entry).value_or(Timestamp(0));
      request.thread = entry["thread"].asString();
      request.result = entry["result"].isInt() ? entry["result"].asInt() : 0;
      return request;
    }
    return std::nullopt;
  }

 private:
  std::map<std::string, LaunchRequest> m_open;  // by the handle's number
};

/// Finds the waits for an app with a background image: another app answers its operations, it is
/// launched in the background, and the thread makes no call for an operation after that.
class LoadWaits {
 public:
  void Read(const Json::Value& entry) {
    Thread& thread = m_threads[entry["thread"].asString()];
    if (Is(entry, "app_operation_get_current_app") || Is(entry, "app_operation_set_current_app")) {
      thread.answering = Text(entry, 1);
      thread.loading.reset();
    }
    const auto request = m_requests.Read(entry);
    if (request && request->background && request->result == 0 && !thread.answering.empty() &&
        thread.answering != request->app) {
      thread.loading = request;
    }
  }

  void Describe(Timestamp now, std::vector<std::string>& waits) const {
    for (const auto& [name, thread] : m_threads) {
      if (!thread.loading || now - thread.loading->time > LOAD_LIMIT) {
        continue;
      }
      const auto waited = std::chrono::duration_cast<std::chrono::seconds>(
          std::max(now - thread.loading->time, Timestamp(0)));
      waits.push_back("waiting for " + thread.loading->app + " to load, " +
                      std::to_string(waited.count()) + " of " + std::to_string(LOAD_LIMIT.count()) +
                      " s");
    }
  }

 private:
  struct Thread {
    std::string answering;
    std::optional<LaunchRequest> loading;
  };
  RequestReader m_requests;
  std::map<std::string, Thread> m_threads;
};

/// Whether the daemon still has a callback on the key that names widget ids.
bool WaitsForWidgetId(const std::vector<Json::Value>& entries) {
  bool waits = false;
  for (const auto& entry : entries) {
    if (Text(entry, 0) != WIDGET_ID_KEY) {
      continue;
    }
    waits = Is(entry, "vconf_notify_key_changed") && entry["result"].asString() == "0";
  }
  return waits;
}

void DescribeRetry(const std::vector<Json::Value>& entries, Timestamp now,
                   std::vector<std::string>& waits) {
  std::optional<LaunchRequest> last;
  for (auto& request : LaunchRequestsIn(entries)) {
    if (request.background) {
      last = std::move(request);
    }
  }
  if (last && last->result == APP_CONTROL_ERROR_LAUNCH_REJECTED &&
      now - last->time <= RETRY_LIMIT) {
    waits.push_back("trying to launch " + last->app + " every 5 s: the system rejects it");
  }
}

/// At its start the daemon reads the key, and finds the time set.
bool ReadsNetworkTime(const Json::Value& entry) {
  return Is(entry, "vconf_get_int") && Text(entry, 0) == NETWORK_TIME_KEY && entry["args"][1] == 1;
}

/// Later a callback reads the key's value, and the daemon sends itself the start.
bool IsKeyAtOne(const Json::Value& entry) {
  return Is(entry, "vconf_keynode_get_int") && entry["result"] == 1;
}

bool IsSend(const Json::Value& entry, int event) {
  return Is(entry, "FCTask::Send") && Text(entry, 0) == SCHEDULER && entry["args"][1] == event;
}

}  // namespace

std::vector<LaunchRequest> LaunchRequestsIn(const std::vector<Json::Value>& entries) {
  std::vector<LaunchRequest> requests;
  RequestReader reader;
  for (const auto& entry : entries) {
    if (auto request = reader.Read(entry)) {
      requests.push_back(std::move(*request));
    }
  }
  return requests;
}

const LaunchRequest* LastRequest(const std::vector<LaunchRequest>& requests,
                                 const std::string& app) {
  const auto request = std::find_if(requests.rbegin(), requests.rend(),
                                    [&](const LaunchRequest& r) { return r.app == app; });
  return request == requests.rend() ? nullptr : &*request;
}

std::vector<Json::Value> SinceLastStart(const std::vector<Json::Value>& entries) {
  const auto start = std::find_if(entries.rbegin(), entries.rend(), [](const Json::Value& entry) {
    return Is(entry, "FCTask::Create") && Text(entry, 0) == SCHEDULER;
  });
  return {start == entries.rend() ? entries.begin() : std::prev(start.base()), entries.end()};
}

std::vector<std::string> WaitsOf(const std::vector<Json::Value>& entries, Timestamp now) {
  std::vector<std::string> waits;
  LoadWaits loads;
  for (const auto& entry : entries) {
    loads.Read(entry);
  }
  loads.Describe(now, waits);
  DescribeRetry(entries, now, waits);
  if (WaitsForWidgetId(entries)) {
    waits.push_back("waiting for the web-app service to name a widget id");
  }
  return waits;
}

std::optional<Timestamp> NextTick(const std::vector<Json::Value>& entries) {
  std::optional<Timestamp> next;
  bool networkTime = false;
  std::map<std::string, Json::Value> before;  // the last entry of each thread
  for (const auto& entry : entries) {
    Json::Value& previous = before[entry["thread"].asString()];
    const bool start = IsSend(entry, EVENT_START);
    networkTime = networkTime || ReadsNetworkTime(entry) || (start && IsKeyAtOne(previous));
    if ((start && networkTime) || IsSend(entry, EVENT_TICK)) {
      if (const auto time = TimeOf(entry)) {
        next = *time + TICK;
      }
    }
    previous = entry;
  }
  return next;
}

}  // namespace desk::cli
