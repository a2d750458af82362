// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <package_manager.h>

#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "call/handle_table.h"
#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;

namespace {

struct Manager {
  std::mutex mutex;  // guards the following members
  package_manager_event_cb callback = nullptr;
  void* userData = nullptr;

  void Set(package_manager_event_cb newCallback, void* newUserData) {
    const std::lock_guard<std::mutex> lock(mutex);
    callback = newCallback;
    userData = newUserData;
  }
};

platform::HandleTable<package_manager_h, Manager>& Managers() {
  static auto* const managers =
      new platform::HandleTable<package_manager_h, Manager>("package_manager");
  return *managers;
}

// The index of the word in the list is the number in the header.
template <typename Enum>
std::optional<Enum> FromWord(const std::string& word, const std::vector<std::string>& words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == word) {
      return static_cast<Enum>(i);
    }
  }
  return std::nullopt;
}

// On the main loop. Looks each callback up directly before the call: an earlier callback may have
// unset it.
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
    call.AddOutput(Managers().Describe(*manager));
    return PACKAGE_MANAGER_ERROR_NONE;
  });
}

int package_manager_destroy(package_manager_h manager) {
  Call call("package_manager_destroy", Managers().Describe(manager));
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
  Call call("package_manager_set_event_cb", Managers().Describe(manager), callback, user_data);
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
  Call call("package_manager_unset_event_cb", Managers().Describe(manager));
  return call.Run<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER, [&]() -> int {
    const auto found = Managers().Find(manager);
    if (found == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    found->Set(nullptr, nullptr);
    return PACKAGE_MANAGER_ERROR_NONE;
  });
}
