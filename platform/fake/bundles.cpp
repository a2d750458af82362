// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/bundles.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <string>

#include "fake/handles.h"
#include "fake/recorder.h"
#include "fake/resets.h"

struct keyval_t {
  fake::BundleEntry entry;
};

struct _bundle_t {
  unsigned long number = 0;
  std::deque<keyval_t> entries;  // one owner at a time
};

namespace fake {
namespace {

struct State {
  Handles<_bundle_t> bundles{"bundle"};
  Handles<_bundle_t> messages{"message"};
};

State& GetState() {
  static auto* s_state = new State;
  return *s_state;
}

std::shared_ptr<_bundle_t> Find(const bundle* b) {
  auto object = GetState().bundles.Find(b);
  return object ? object : GetState().messages.Find(b);
}

int Add(Recorder& call, bundle* b, const char* key, int type,
        const std::vector<std::string>& values) {
  const auto object = Find(b);
  const auto same = [key](const keyval_t& kv) { return kv.entry.key == key; };
  if (!object || key == nullptr ||
      std::any_of(object->entries.begin(), object->entries.end(), same)) {
    return call.Return(-1);
  }
  object->entries.push_back({{key, type, values}});
  return call.Return(0);
}

}  // namespace

std::vector<BundleEntry> Strings(const std::vector<std::pair<std::string, std::string>>& entries) {
  std::vector<BundleEntry> result;
  result.reserve(entries.size());
  for (const auto& [key, value] : entries) {
    result.push_back({key, BUNDLE_TYPE_STR, {value}});
  }
  return result;
}

std::vector<BundleEntry> Entries(bundle* bundle) {
  std::vector<BundleEntry> result;
  if (const auto object = Find(bundle)) {
    for (const keyval_t& kv : object->entries) {
      result.push_back(kv.entry);
    }
  }
  return result;
}

bundle* NewPlatformBundle(const std::vector<BundleEntry>& entries) {
  auto object = std::make_shared<_bundle_t>();
  for (const BundleEntry& entry : entries) {
    object->entries.push_back({entry});
  }
  return GetState().messages.Add(object);
}

void FreePlatformBundle(bundle* b) {
  GetState().messages.Remove(b);
}

std::string BundleText(const bundle* b) {
  return GetState().messages.Find(b) ? GetState().messages.TextOf(b) : GetState().bundles.TextOf(b);
}

void ResetBundles() {
  GetState().bundles.Clear();
  GetState().messages.Clear();
}

}  // namespace fake

using fake::BundleText;
using fake::Recorder;

bundle* bundle_create(void) {
  Recorder call("bundle_create");
  if (call.Fails()) {
    return call.ReturnAs<bundle*>(nullptr, "null");
  }
  bundle* b = fake::GetState().bundles.Add(std::make_shared<_bundle_t>());
  return call.ReturnAs(b, BundleText(b));
}

int bundle_free(bundle* b) {
  Recorder call("bundle_free", BundleText(b));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  return call.Return(fake::GetState().bundles.Remove(b) ? 0 : -1);
}

int bundle_add_str(bundle* b, const char* key, const char* str) {
  Recorder call("bundle_add_str", BundleText(b), key, str);
  if (call.Fails()) {
    return call.ReturnFault();
  }
  return str == nullptr ? call.Return(-1) : fake::Add(call, b, key, BUNDLE_TYPE_STR, {str});
}

int bundle_add_byte(bundle* b, const char* key, const void* byte, const size_t size) {
  Recorder call("bundle_add_byte", BundleText(b), key, static_cast<unsigned long>(size));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  if (byte == nullptr) {
    return call.Return(-1);
  }
  return fake::Add(call, b, key, BUNDLE_TYPE_BYTE, {{static_cast<const char*>(byte), size}});
}

int bundle_add_str_array(bundle* b, const char* key, const char** str_array, const int len) {
  Recorder call("bundle_add_str_array", BundleText(b), key, len);
  if (call.Fails()) {
    return call.ReturnFault();
  }
  if (str_array == nullptr || len < 0) {
    return call.Return(-1);
  }
  const std::vector<std::string> values(str_array, str_array + len);
  return fake::Add(call, b, key, BUNDLE_TYPE_STR_ARRAY, values);
}

void bundle_foreach(bundle* b, bundle_iterator_t iter, void* user_data) {
  Recorder call("bundle_foreach", BundleText(b), fake::Presence(iter), fake::Presence(user_data));
  const auto object = fake::Find(b);
  if (!call.Fails() && object && iter != nullptr) {
    for (const keyval_t& kv : object->entries) {
      iter(kv.entry.key.c_str(), kv.entry.type, &kv, user_data);
    }
  }
  call.ReturnNothing();
}

int bundle_keyval_get_basic_val(bundle_keyval_t* kv, void** val, size_t* size) {
  Recorder call("bundle_keyval_get_basic_val");
  if (call.Fails()) {
    return call.ReturnFault();
  }
  if (kv == nullptr || (kv->entry.type & BUNDLE_TYPE_ARRAY) != 0 || kv->entry.values.empty()) {
    return call.Return(-1);
  }
  std::string& value = kv->entry.values.front();
  *val = value.data();
  *size = value.size() + (kv->entry.type == BUNDLE_TYPE_STR ? 1 : 0);
  return call.Return(0);
}
