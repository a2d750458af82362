// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_manager.h>
#include <app_manager_extension.h>

#include <deque>
#include <string>

#include "call/handle_table.h"
#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;

namespace {

struct Context {
  std::string app;
  pid_t pid = 0;
};

// The contexts, and the last few destroyed ones, whose pid must stay readable (app_context.h).
class Contexts {
 public:
  static Contexts& Get() {
    static Contexts* const contexts = new Contexts;
    return *contexts;
  }

  app_context_h Add(Context context) {
    return m_live.Add(std::make_shared<Context>(std::move(context)));
  }
  std::shared_ptr<Context> Find(app_context_h handle) const { return m_live.Find(handle); }
  platform::Value Describe(app_context_h handle) const { return m_live.Describe(handle); }

  std::shared_ptr<Context> FindAlsoDestroyed(app_context_h handle) const {
    if (auto context = m_live.Find(handle)) {
      return context;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& entry : m_destroyed) {
      if (entry.first == handle) {
        return entry.second;
      }
    }
    return nullptr;
  }

  bool Destroy(app_context_h handle) {
    auto context = m_live.Take(handle);
    if (context == nullptr) {
      return false;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_destroyed.emplace_back(handle, std::move(context));
    if (m_destroyed.size() > KEPT) {
      m_destroyed.pop_front();
    }
    return true;
  }

 private:
  static constexpr std::size_t KEPT = 16;

  platform::HandleTable<app_context_h, Context> m_live{"app_context"};
  mutable std::mutex m_mutex;  // guards the following members
  std::deque<std::pair<app_context_h, std::shared_ptr<Context>>> m_destroyed;
};

Json::Value AppInfo(const char* id) {
  return Connection::Get().Call("app.info", Request({{"app", id}}));
}

int TakeContext(const char* id, app_context_h* handle) {
  const Json::Value reply = AppInfo(id);
  if (!reply["found"].asBool()) {
    return APP_MANAGER_ERROR_NO_SUCH_APP;
  }
  if (!reply["running"].asBool()) {
    return APP_MANAGER_ERROR_APP_NO_RUNNING;
  }
  *handle = Contexts::Get().Add({id, reply["pid"].asInt()});
  return APP_MANAGER_ERROR_NONE;
}

}  // namespace

int app_manager_is_running(const char* app_id, bool* running) {
  Call call("app_manager_is_running", app_id);
  return call.Run<int>(APP_MANAGER_ERROR_IO_ERROR, [&]() -> int {
    if (app_id == nullptr || running == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    const Json::Value reply = AppInfo(app_id);
    *running = reply["found"].asBool() && reply["running"].asBool();
    call.AddOutput(*running);
    return APP_MANAGER_ERROR_NONE;
  });
}

int app_manager_get_app_context(const char* app_id, app_context_h* app_context) {
  Call call("app_manager_get_app_context", app_id);
  return call.Run<int>(APP_MANAGER_ERROR_IO_ERROR, [&]() -> int {
    if (app_id == nullptr || app_context == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    const int result = TakeContext(app_id, app_context);
    if (result == APP_MANAGER_ERROR_NONE) {
      call.AddOutput(Contexts::Get().Describe(*app_context));
    }
    return result;
  });
}

int app_manager_terminate_app(app_context_h app_context) {
  Call call("app_manager_terminate_app", Contexts::Get().Describe(app_context));
  return call.Run<int>(APP_MANAGER_ERROR_REQUEST_FAILED, [&]() -> int {
    const auto context = Contexts::Get().Find(app_context);
    if (context == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    return Connection::Get()
        .Call("app.terminate", Request({{"app", context->app}}))["result"]
        .asInt();
  });
}

int app_context_destroy(app_context_h app_context) {
  Call call("app_context_destroy", Contexts::Get().Describe(app_context));
  return call.Run<int>(APP_MANAGER_ERROR_INVALID_PARAMETER, [&]() -> int {
    return Contexts::Get().Destroy(app_context) ? APP_MANAGER_ERROR_NONE
                                                : APP_MANAGER_ERROR_INVALID_PARAMETER;
  });
}

int app_context_get_pid(app_context_h app_context, pid_t* pid) {
  Call call("app_context_get_pid", Contexts::Get().Describe(app_context));
  return call.Run<int>(APP_MANAGER_ERROR_INVALID_PARAMETER, [&]() -> int {
    const auto context = Contexts::Get().FindAlsoDestroyed(app_context);
    if (context == nullptr || pid == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    *pid = context->pid;
    call.AddOutput(*pid);
    return APP_MANAGER_ERROR_NONE;
  });
}
