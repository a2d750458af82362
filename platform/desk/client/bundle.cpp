// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <bundle.h>

#include <cerrno>

#include "desk/client/bundle_data.h"
#include "desk/client/call.h"

using desk::client::Call;

namespace {

// Results of this family are negated error numbers; 0 is success.
constexpr int NONE = 0;
constexpr int INVALID_PARAMETER = -EINVAL;
constexpr int KEY_EXISTS = -EEXIST;

int Add(bundle& target, const char* key, int type, std::string bytes,
        std::vector<std::string> array) {
  const bool added =
      desk::client::AddEntry(target, keyval_t{key, type, std::move(bytes), std::move(array)});
  return added ? NONE : KEY_EXISTS;
}

}  // namespace

bundle* bundle_create(void) {
  Call call("bundle_create");
  return call.Run<bundle*>(nullptr, [] { return new bundle; });  // owned by the caller
}

int bundle_free(bundle* b) {
  Call call("bundle_free", b);
  return call.Run(INVALID_PARAMETER, [b] {
    delete b;
    return b == nullptr ? INVALID_PARAMETER : NONE;
  });
}

int bundle_add_str(bundle* b, const char* key, const char* str) {
  Call call("bundle_add_str", b, key, str);
  return call.Run(INVALID_PARAMETER, [&] {
    if (b == nullptr || key == nullptr || str == nullptr) {
      return INVALID_PARAMETER;
    }
    return Add(*b, key, BUNDLE_TYPE_STR, str, {});
  });
}

int bundle_add_byte(bundle* b, const char* key, const void* byte, const size_t size) {
  Call call("bundle_add_byte", b, key, byte, size);
  return call.Run(INVALID_PARAMETER, [&] {
    if (b == nullptr || key == nullptr || byte == nullptr) {
      return INVALID_PARAMETER;
    }
    return Add(*b, key, BUNDLE_TYPE_BYTE, std::string(static_cast<const char*>(byte), size), {});
  });
}

int bundle_add_str_array(bundle* b, const char* key, const char** str_array, const int len) {
  Call call("bundle_add_str_array", b, key, str_array, len);
  return call.Run(INVALID_PARAMETER, [&] {
    if (b == nullptr || key == nullptr || len < 0 || (str_array == nullptr && len > 0)) {
      return INVALID_PARAMETER;
    }
    std::vector<std::string> array;
    array.reserve(static_cast<std::size_t>(len));
    for (int i = 0; i < len; ++i) {
      array.emplace_back(str_array[i] == nullptr ? "" : str_array[i]);
    }
    return Add(*b, key, BUNDLE_TYPE_STR_ARRAY, "", std::move(array));
  });
}

void bundle_foreach(bundle* b, bundle_iterator_t iter, void* user_data) {
  Call call("bundle_foreach", b, iter, user_data);
  call.RunVoid([&] {
    if (b == nullptr || iter == nullptr) {
      return;
    }
    for (const auto& entry : b->entries) {
      iter(entry->key.c_str(), entry->type, entry.get(), user_data);
    }
  });
}

int bundle_keyval_get_basic_val(bundle_keyval_t* kv, void** val, size_t* size) {
  Call call("bundle_keyval_get_basic_val", kv == nullptr ? nullptr : kv->key.c_str());
  return call.Run(INVALID_PARAMETER, [&] {
    if (kv == nullptr || val == nullptr || size == nullptr || (kv->type & BUNDLE_TYPE_ARRAY) != 0) {
      return INVALID_PARAMETER;
    }
    *val = kv->bytes.data();
    *size = kv->bytes.size() + (kv->type == BUNDLE_TYPE_STR ? 1 : 0);
    return NONE;
  });
}
