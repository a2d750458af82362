// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// An ordered set of typed values under unique keys. Not thread-safe: one owner at a time. Where a
/// call returns an int, 0 is success and a negative number a failure, null arguments among them,
/// which changes nothing.
typedef struct _bundle_t bundle;
/// One entry. Owned by its bundle and valid as long as that is neither freed nor changed.
typedef struct keyval_t bundle_keyval_t;

enum bundle_type_property {
  BUNDLE_TYPE_ARRAY = 0x0100,
  BUNDLE_TYPE_PRIMITIVE = 0x0200,
  BUNDLE_TYPE_MEASURABLE = 0x0400
};

/// The numbers are the platform's: they go into messages, and receivers compare them.
enum bundle_type {
  BUNDLE_TYPE_NONE = -1,
  BUNDLE_TYPE_ANY = 0,
  BUNDLE_TYPE_STR = 1 | BUNDLE_TYPE_MEASURABLE,
  BUNDLE_TYPE_STR_ARRAY = BUNDLE_TYPE_STR | BUNDLE_TYPE_ARRAY | BUNDLE_TYPE_MEASURABLE,
  BUNDLE_TYPE_BYTE = 2,
  BUNDLE_TYPE_BYTE_ARRAY = BUNDLE_TYPE_BYTE | BUNDLE_TYPE_ARRAY
};

/// key and kv are valid only during the call; type is one of bundle_type.
typedef void (*bundle_iterator_t)(const char* key, const int type, const bundle_keyval_t* kv,
                                  void* user_data);

/// An empty bundle that the caller owns until bundle_free(), or null when memory is exhausted.
bundle* bundle_create(void);
/// Frees the entries as well. Not for a bundle that came as a message: the platform frees that.
int bundle_free(bundle* b);
/// Both strings are copied. A key that exists is an error; its old value stays.
int bundle_add_str(bundle* b, const char* key, const char* str);
/// Other values than strings, for apps. size counts bytes.
int bundle_add_byte(bundle* b, const char* key, const void* byte, const size_t size);
int bundle_add_str_array(bundle* b, const char* key, const char** str_array, const int len);
/// Calls the iterator once per entry, in insertion order. The bundle must not change meanwhile.
void bundle_foreach(bundle* b, bundle_iterator_t iter, void* user_data);
/// *val points into the bundle and is not freed by the caller. *size counts bytes, of a string with
/// its terminator; a byte value has none. The array types are a failure. The value is not changed:
/// an iterator may cast the const of its kv away for this call.
int bundle_keyval_get_basic_val(bundle_keyval_t* kv, void** val, size_t* size);

#ifdef __cplusplus
}
#endif
