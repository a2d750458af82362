// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <package_manager.h>

#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "client/call.h"
#include "client/connection.h"
#include "client/handle_table.h"

using desk::Call;
using desk::Connection;
using desk::Number;

namespace {

struct Manager {
  std::mutex mutex;  // guards what follows
  package_manager_event_cb callback = nullptr;
  void* userData = nullptr;

  void Set(package_manager_event_cb newCallback, void* newUserData) {
    const std::lock_guard<std::mutex> lock(mutex);
    callback = newCallback;
    userData = newUserData;
  }
};

desk::HandleTable<package_manager_h, Manager>& Managers() {
  static auto* const managers = new desk::HandleTable<package_manager_h, Manager>;
  return *managers;
}

// The place of the word in the list is the number in the header.
template <typename Enum>
std::optional<Enum> FromWord(const std::string& word, const std::vector<std::string>& words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == word) {
      return static_cast<Enum>(i);
    }
  }
  return std::nullopt;
}

// On the main loop. Each callback is looked up just before it is called, so that one that an
// earlier callback unset does not begin.
void OnPackageEvent(const Json::Value& body) {
  const auto type = FromWord<package_manager_event_type_e>(body["type"].asString(),
                                                           {"install", "uninstall", "update"});
  const auto state = FromWord<package_manager_event_state_e>(
      body["state"].asString(), {"started", "processing", "completed", "failed"});
  if (!type.has_value() || !state.has_value()) {
    return;
  }
  for (const auto& manager : Managers().All()) {
    package_manager_event_cb callback = nullptr;
    void* userData = nullptr;
    {
      const std::lock_guard<std::mutex> lock(manager->mutex);
      callback = manager->callback;
      userData = manager->userData;
    }
    if (callback != nullptr) {
      callback(body["kind"].asCString(), body["package"].asCString(), *type, *state,
               body["progress"].asInt(),
               static_cast<package_manager_error_e>(body["error"].asInt()), userData);
    }
  }
}

void SubscribeOnce() {
  static std::once_flag subscribed;
  std::call_once(subscribed,
                 [] { Connection::Get().Subscribe("package", OnPackageEvent, nullptr); });
}

}  // namespace

int package_manager_create(package_manager_h* manager) {
  Call call("package_manager_create");
  return call.Run<int>(PACKAGE_MANAGER_ERROR_IO_ERROR, [&]() -> int {
    if (manager == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    Connection::Get().Require();
    *manager = Managers().Add(std::make_shared<Manager>());
    call.Out(Number(*manager));
    return PACKAGE_MANAGER_ERROR_NONE;
  });
}

int package_manager_destroy(package_manager_h manager) {
  Call call("package_manager_destroy", Number(manager));
  return call.Run<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER, [&]() -> int {
    const auto taken = Managers().Take(manager);
    if (taken == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    taken->Set(nullptr, nullptr);
    return PACKAGE_MANAGER_ERROR_NONE;
  });
}

int package_manager_set_event_cb(package_manager_h manager, package_manager_event_cb callback,
                                 void* user_data) {
  Call call("package_manager_set_event_cb", Number(manager), callback, user_data);
  return call.Run<int>(PACKAGE_MANAGER_ERROR_IO_ERROR, [&]() -> int {
    const auto found = Managers().Find(manager);
    if (found == nullptr || callback == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    SubscribeOnce();
    found->Set(callback, user_data);
    return PACKAGE_MANAGER_ERROR_NONE;
  });
}

int package_manager_unset_event_cb(package_manager_h manager) {
  Call call("package_manager_unset_event_cb", Number(manager));
  return call.Run<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER, [&]() -> int {
    const auto found = Managers().Find(manager);
    if (found == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    found->Set(nullptr, nullptr);
    return PACKAGE_MANAGER_ERROR_NONE;
  });
}
