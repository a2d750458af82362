// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <vconf.h>

#include <cstring>

#include "desk/client/call.h"
#include "desk/client/connection.h"
#include "desk/client/key_watcher.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::KeyWatcher;
using desk::client::Request;

namespace {

// Null when the key is absent or of another type.
Json::Value Get(const char* key, const char* type) {
  const Json::Value reply = Connection::Get().Call("key.get", Request({{"key", key}}));
  const bool usable = reply["found"].asBool() && reply["type"].asString() == type;
  return usable ? reply["value"] : Json::Value();
}

int Set(const char* key, const char* type, const Json::Value& value) {
  Connection::Get().Call("key.set", Request({{"key", key}, {"type", type}, {"value", value}}));
  return 0;
}

}  // namespace

int vconf_get_int(const char* in_key, int* intval) {
  Call call("vconf_get_int", in_key);
  return call.Run(-1, [&] {
    const Json::Value value = in_key == nullptr ? Json::Value() : Get(in_key, "int");
    if (value.isNull() || intval == nullptr) {
      return -1;
    }
    *intval = value.asInt();
    call.AddOutput(*intval);
    return 0;
  });
}

char* vconf_get_str(const char* in_key) {
  Call call("vconf_get_str", in_key);
  return call.Run<char*>(nullptr, [&] {
    const Json::Value value = in_key == nullptr ? Json::Value() : Get(in_key, "string");
    return value.isNull() ? nullptr : strdup(value.asCString());
  });
}

int vconf_set_int(const char* in_key, int intval) {
  Call call("vconf_set_int", in_key, intval);
  return call.Run(-1, [&] { return in_key == nullptr ? -1 : Set(in_key, "int", intval); });
}

int vconf_set_str(const char* in_key, const char* strval) {
  Call call("vconf_set_str", in_key, strval);
  return call.Run(-1, [&] {
    return in_key == nullptr || strval == nullptr ? -1 : Set(in_key, "string", strval);
  });
}

int vconf_notify_key_changed(const char* in_key, vconf_callback_fn cb, void* user_data) {
  Call call("vconf_notify_key_changed", in_key, cb, user_data);
  return call.Run(-1, [&] {
    if (in_key == nullptr || cb == nullptr) {
      return -1;
    }
    KeyWatcher::Get().Add(in_key, cb, user_data);
    return 0;
  });
}

int vconf_ignore_key_changed(const char* in_key, vconf_callback_fn cb) {
  Call call("vconf_ignore_key_changed", in_key, cb);
  return call.Run(
      -1, [&] { return in_key != nullptr && KeyWatcher::Get().Remove(in_key, cb) ? 0 : -1; });
}

int vconf_keynode_get_int(keynode_t* keynode) {
  Call call("vconf_keynode_get_int", keynode == nullptr ? nullptr : keynode->key.c_str());
  return call.Run(-1, [&] { return keynode == nullptr ? -1 : keynode->number; });
}

char* vconf_keynode_get_str(keynode_t* keynode) {
  Call call("vconf_keynode_get_str", keynode == nullptr ? nullptr : keynode->key.c_str());
  return call.Run<char*>(nullptr, [&] {
    return keynode == nullptr || keynode->type != "string" ? nullptr : keynode->text.data();
  });
}
