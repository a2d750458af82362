// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>
#include <vconf.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// One change of a settings key: see vconf.h.
struct _keynode_t {
  std::string key;
  std::string type;  ///< "int", "string", or "none" for a key that was removed
  int number = 0;
  std::string text;
};

namespace desk::client {

/// The process's registrations for changes of settings keys. Callable from any thread; callbacks
/// run on the main loop, without a lock held.
class KeyWatcher {
 public:
  static KeyWatcher& Get();

  /// Replaces the user data when the pair is registered. Throws DeskError.
  void Add(const std::string& key, vconf_callback_fn function, void* userData);
  /// False when the pair is not registered.
  bool Remove(const std::string& key, vconf_callback_fn function);

 private:
  struct Registration {
    std::string key;
    vconf_callback_fn function;
    void* userData;
    std::optional<std::uint64_t> since;  ///< not notified up to this number; unset until known
    bool alive = true;
  };
  using RegistrationPtr = std::shared_ptr<Registration>;

  void OnEvent(const Json::Value& body);
  void Drain();
  bool TakeEvent(Json::Value& event);
  void Deliver(const Json::Value& event);
  std::vector<RegistrationPtr> ListenersOf(const std::string& key, std::uint64_t seq);

  std::once_flag m_subscribed;
  std::mutex m_mutex;                            // guards the following members
  std::vector<RegistrationPtr> m_registrations;  // in the order of their Add()
  std::deque<Json::Value> m_events;              // not delivered yet
};

}  // namespace desk::client
