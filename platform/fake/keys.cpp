// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/keys.h"

#include <vconf.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <variant>
#include <vector>

#include "fake/platform_call.h"
#include "fake/resets.h"

struct _keynode_t {
  std::optional<std::variant<int, std::string>> value;
};

namespace fake {
namespace {

using Value = std::variant<int, std::string>;

struct Change {
  unsigned long number = 0;
  std::string key;
  keynode_t node;
};

struct Registration {
  std::string key;
  vconf_callback_fn function = nullptr;
  void* data = nullptr;
  unsigned long since = 0;  // not notified of changes up to this number
};

struct State {
  std::mutex mutex;
  // Guarded by mutex.
  std::map<std::string, Value> values;
  std::vector<Registration> registrations;
  std::deque<Change> changes;
  unsigned long lastChange = 0;
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

void Store(const std::string& key, const Value& value, bool tell) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.values[key] = value;
  if (tell) {
    state.changes.push_back({++state.lastChange, key, {value}});
  }
}

std::optional<Value> Load(const std::string& key) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = state.values.find(key);
  return found == state.values.end() ? std::nullopt : std::optional<Value>(found->second);
}

/// The caller holds the mutex.
std::vector<Registration>::iterator Find(State& state, const std::string& key,
                                         vconf_callback_fn function) {
  return std::find_if(state.registrations.begin(), state.registrations.end(),
                      [&](const auto& r) { return r.key == key && r.function == function; });
}

std::vector<Registration> ListenersOf(const Change& change) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  std::vector<Registration> listeners;
  for (const Registration& registration : state.registrations) {
    if (registration.key == change.key && registration.since < change.number) {
      listeners.push_back(registration);
    }
  }
  return listeners;
}

/// The present user data, or nothing when an earlier callback removed the registration.
std::optional<void*> DataOf(const Registration& listener) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = Find(state, listener.key, listener.function);
  return found == state.registrations.end() ? std::nullopt : std::optional<void*>(found->data);
}

std::size_t Tell(Change change) {
  std::size_t told = 0;
  for (const Registration& listener : ListenersOf(change)) {
    if (const auto data = DataOf(listener)) {
      listener.function(&change.node, *data);
      ++told;
    }
  }
  return told;
}

std::optional<Change> NextChange() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  if (state.changes.empty()) {
    return std::nullopt;
  }
  Change change = state.changes.front();
  state.changes.pop_front();
  return change;
}

}  // namespace

void SetKey(const std::string& key, int value) {
  Store(key, value, true);
}
void SetKey(const std::string& key, const std::string& value) {
  Store(key, value, true);
}
void SetKey(const std::string& key, const char* value) {
  Store(key, std::string(value), true);
}
void StoreKey(const std::string& key, int value) {
  Store(key, value, false);
}
void StoreKey(const std::string& key, const std::string& value) {
  Store(key, value, false);
}

bool UnsetKey(const std::string& key) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  if (state.values.erase(key) == 0) {
    return false;
  }
  state.changes.push_back({++state.lastChange, key, {}});
  return true;
}

bool HasKey(const std::string& key) {
  return Load(key).has_value();
}

std::optional<int> IntKey(const std::string& key) {
  const auto value = Load(key);
  const int* number = value ? std::get_if<int>(&*value) : nullptr;
  return number == nullptr ? std::nullopt : std::optional<int>(*number);
}

std::optional<std::string> StringKey(const std::string& key) {
  const auto value = Load(key);
  const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
  return text == nullptr ? std::nullopt : std::optional<std::string>(*text);
}

std::size_t DeliverKeyChanges() {
  std::size_t told = 0;
  while (const auto change = NextChange()) {
    told += Tell(*change);
  }
  return told;
}

std::size_t PendingKeyChanges() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.changes.size();
}

void DropKeyChanges() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.changes.clear();
}

std::size_t KeySubscriptions(const std::string& key) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto& all = state.registrations;
  return static_cast<std::size_t>(
      std::count_if(all.begin(), all.end(), [&](const auto& r) { return r.key == key; }));
}

void ResetKeys() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.values.clear();
  state.registrations.clear();
  state.changes.clear();
}

}  // namespace fake

int vconf_get_int(const char* in_key, int* intval) {
  fake::PlatformCall call("vconf_get_int", in_key);
  return call.Run(fake::FAILURE, [&]() -> int {
    const auto value = in_key == nullptr ? std::nullopt : fake::IntKey(in_key);
    if (!value) {
      return -1;
    }
    *intval = *value;
    return 0;
  });
}

char* vconf_get_str(const char* in_key) {
  fake::PlatformCall call("vconf_get_str", in_key);
  return call.Run<char*>(nullptr, [&] {
    const auto value = in_key == nullptr ? std::nullopt : fake::StringKey(in_key);
    return value ? strdup(value->c_str()) : nullptr;
  });
}

int vconf_set_int(const char* in_key, int intval) {
  fake::PlatformCall call("vconf_set_int", in_key, intval);
  return call.Run(fake::FAILURE, [&]() -> int {
    if (in_key == nullptr) {
      return -1;
    }
    fake::SetKey(in_key, intval);
    return 0;
  });
}

int vconf_set_str(const char* in_key, const char* strval) {
  fake::PlatformCall call("vconf_set_str", in_key, strval);
  return call.Run(fake::FAILURE, [&]() -> int {
    if (in_key == nullptr || strval == nullptr) {
      return -1;
    }
    fake::SetKey(in_key, strval);
    return 0;
  });
}

int vconf_notify_key_changed(const char* in_key, vconf_callback_fn cb, void* user_data) {
  fake::PlatformCall call("vconf_notify_key_changed", in_key, cb, user_data);
  return call.Run(fake::FAILURE, [&]() -> int {
    if (in_key == nullptr || cb == nullptr) {
      return -1;
    }
    fake::State& state = fake::GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    const auto found = fake::Find(state, in_key, cb);
    if (found == state.registrations.end()) {
      state.registrations.push_back({in_key, cb, user_data, state.lastChange});
    } else {
      found->data = user_data;
    }
    return 0;
  });
}

int vconf_ignore_key_changed(const char* in_key, vconf_callback_fn cb) {
  fake::PlatformCall call("vconf_ignore_key_changed", in_key, cb);
  return call.Run(fake::FAILURE, [&]() -> int {
    fake::State& state = fake::GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    const auto found =
        in_key == nullptr ? state.registrations.end() : fake::Find(state, in_key, cb);
    if (found == state.registrations.end()) {
      return -1;
    }
    state.registrations.erase(found);
    return 0;
  });
}

int vconf_keynode_get_int(keynode_t* keynode) {
  fake::PlatformCall call("vconf_keynode_get_int");
  return call.Run(fake::FAILURE, [&]() -> int {
    const bool number = keynode->value && std::holds_alternative<int>(*keynode->value);
    return number ? std::get<int>(*keynode->value) : 0;
  });
}

char* vconf_keynode_get_str(keynode_t* keynode) {
  fake::PlatformCall call("vconf_keynode_get_str");
  return call.Run<char*>(nullptr, [&] {
    const bool isText = keynode->value && std::holds_alternative<std::string>(*keynode->value);
    return isText ? std::get<std::string>(*keynode->value).data() : nullptr;
  });
}
