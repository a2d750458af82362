// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/client/key_watcher.h"

#include <algorithm>

#include "desk/client/connection.h"
#include "desk/client/main_loop.h"

namespace desk::client {

KeyWatcher& KeyWatcher::Get() {
  // Never destroyed: events arrive until the process ends.
  static KeyWatcher* const watcher = new KeyWatcher;
  return *watcher;
}

void KeyWatcher::Add(const std::string& key, vconf_callback_fn function, void* userData) {
  std::call_once(m_subscribed, [this] {
    Connection::Get().Subscribe(
        "key", [this](const Json::Value& body) { OnEvent(body); }, nullptr);
  });
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const RegistrationPtr& registration : m_registrations) {
      if (registration->key == key && registration->function == function) {
        registration->userData = userData;
        return;
      }
    }
    // Registered before the request: a change may reach the main loop before the reply.
    m_registrations.push_back(
        std::make_shared<Registration>(Registration{key, function, userData, std::nullopt, true}));
  }
  std::uint64_t since = 0;
  try {
    since = Connection::Get().Call("key.watch", Request({{"key", key}}))["seq"].asUInt64();
  } catch (const std::exception&) {
    Remove(key, function);
    MainLoop::Post([this] { Drain(); });
    throw;
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const RegistrationPtr& registration : m_registrations) {
    if (registration->key == key && registration->function == function) {
      registration->since = since;
    }
  }
  if (!m_events.empty()) {
    MainLoop::Post([this] { Drain(); });
  }
}

bool KeyWatcher::Remove(const std::string& key, vconf_callback_fn function) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = std::find_if(
      m_registrations.begin(), m_registrations.end(), [&](const RegistrationPtr& registration) {
        return registration->key == key && registration->function == function;
      });
  if (found == m_registrations.end()) {
    return false;
  }
  (*found)->alive = false;
  m_registrations.erase(found);
  return true;
}

void KeyWatcher::OnEvent(const Json::Value& body) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_events.push_back(body);
  }
  Drain();
}

void KeyWatcher::Drain() {
  for (Json::Value event; TakeEvent(event);) {
    Deliver(event);
  }
}

// Holds the queue until every registration of the key knows its starting sequence number.
bool KeyWatcher::TakeEvent(Json::Value& event) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_events.empty()) {
    return false;
  }
  const std::string key = m_events.front()["key"].asString();
  for (const RegistrationPtr& registration : m_registrations) {
    if (registration->key == key && !registration->since.has_value()) {
      return false;
    }
  }
  event = std::move(m_events.front());
  m_events.pop_front();
  return true;
}

void KeyWatcher::Deliver(const Json::Value& event) {
  keynode_t node;
  node.key = event["key"].asString();
  node.type = event["type"].asString();
  if (node.type == "int") {
    node.number = event["value"].asInt();
  } else if (node.type == "string") {
    node.text = event["value"].asString();
  }
  for (const RegistrationPtr& registration : ListenersOf(node.key, event["seq"].asUInt64())) {
    void* userData = nullptr;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      if (!registration->alive) {
        continue;
      }
      userData = registration->userData;
    }
    registration->function(&node, userData);
  }
}

std::vector<KeyWatcher::RegistrationPtr> KeyWatcher::ListenersOf(const std::string& key,
                                                                 std::uint64_t seq) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<RegistrationPtr> listeners;
  for (const RegistrationPtr& registration : m_registrations) {
    if (registration->key == key && registration->since.value_or(seq) < seq) {
      listeners.push_back(registration);
    }
  }
  return listeners;
}

}  // namespace desk::client
