// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/bundles.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <string>

#include "fake/platform_call.h"
#include "fake/resets.h"

struct keyval_t {
  fake::BundleEntry entry;
};

namespace fake {
namespace {

struct Bundle {
  bool ofPlatform = false;       // only the platform may free it
  std::deque<keyval_t> entries;  // one owner at a time
};

Handles<bundle*, Bundle>& Bundles() {
  static auto* bundles = new Handles<bundle*, Bundle>("bundle");
  return *bundles;
}

int Add(bundle* b, const char* key, int type, const std::vector<std::string>& values) {
  const auto object = Bundles().Find(b);
  const auto same = [key](const keyval_t& kv) { return kv.entry.key == key; };
  if (!object || key == nullptr ||
      std::any_of(object->entries.begin(), object->entries.end(), same)) {
    return -1;
  }
  object->entries.push_back({{key, type, values}});
  return 0;
}

int Free(bundle* b) {
  const auto object = Bundles().Find(b);
  return object && !object->ofPlatform && Bundles().Take(b) ? 0 : -1;
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
  if (const auto object = Bundles().Find(bundle)) {
    for (const keyval_t& kv : object->entries) {
      result.push_back(kv.entry);
    }
  }
  return result;
}

bundle* NewPlatformBundle(const std::vector<BundleEntry>& entries) {
  auto object = std::make_shared<Bundle>();
  object->ofPlatform = true;
  for (const BundleEntry& entry : entries) {
    object->entries.push_back({entry});
  }
  return Bundles().Add(object);
}

void FreePlatformBundle(bundle* b) {
  Bundles().Take(b);
}

platform::Value DescribeBundle(bundle* b) {
  return Bundles().Describe(b);
}

void ResetBundles() {
  Bundles().Clear();
}

}  // namespace fake

using fake::DescribeBundle;
using fake::FAILURE;
using fake::PlatformCall;

bundle* bundle_create(void) {
  PlatformCall call("bundle_create");
  return call.Run<bundle*>(
      nullptr, [] { return fake::Bundles().Add(std::make_shared<fake::Bundle>()); },
      DescribeBundle);
}

int bundle_free(bundle* b) {
  PlatformCall call("bundle_free", DescribeBundle(b));
  return call.Run(FAILURE, [&]() -> int { return fake::Free(b); });
}

int bundle_add_str(bundle* b, const char* key, const char* str) {
  PlatformCall call("bundle_add_str", DescribeBundle(b), key, str);
  return call.Run(FAILURE, [&]() -> int {
    return str == nullptr ? -1 : fake::Add(b, key, BUNDLE_TYPE_STR, {str});
  });
}

int bundle_add_byte(bundle* b, const char* key, const void* byte, const size_t size) {
  PlatformCall call("bundle_add_byte", DescribeBundle(b), key, size);
  return call.Run(FAILURE, [&]() -> int {
    if (byte == nullptr) {
      return -1;
    }
    return fake::Add(b, key, BUNDLE_TYPE_BYTE, {{static_cast<const char*>(byte), size}});
  });
}

int bundle_add_str_array(bundle* b, const char* key, const char** str_array, const int len) {
  PlatformCall call("bundle_add_str_array", DescribeBundle(b), key, len);
  return call.Run(FAILURE, [&]() -> int {
    if (str_array == nullptr || len < 0) {
      return -1;
    }
    const std::vector<std::string> values(str_array, str_array + len);
    return fake::Add(b, key, BUNDLE_TYPE_STR_ARRAY, values);
  });
}

void bundle_foreach(bundle* b, bundle_iterator_t iter, void* user_data) {
  PlatformCall call("bundle_foreach", DescribeBundle(b), iter, user_data);
  call.RunVoid([&] {
    const auto object = fake::Bundles().Find(b);
    if (object == nullptr || iter == nullptr) {
      return;
    }
    for (const keyval_t& kv : object->entries) {
      iter(kv.entry.key.c_str(), kv.entry.type, &kv, user_data);
    }
  });
}

int bundle_keyval_get_basic_val(bundle_keyval_t* kv, void** val, size_t* size) {
  PlatformCall call("bundle_keyval_get_basic_val");
  return call.Run(FAILURE, [&]() -> int {
    if (kv == nullptr || (kv->entry.type & BUNDLE_TYPE_ARRAY) != 0 || kv->entry.values.empty()) {
      return -1;
    }
    std::string& value = kv->entry.values.front();
    *val = value.data();
    *size = value.size() + (kv->entry.type == BUNDLE_TYPE_STR ? 1 : 0);
    return 0;
  });
}
