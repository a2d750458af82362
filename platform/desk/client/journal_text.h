// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

#include "client/journal.h"

namespace desk {

/// A value as the journal shows it, as JSON: a string is a string, an enumerator its number, a
/// function "callback", any other pointer "pointer", and a null one null. Handles of a HandleTable
/// are told by their Number().
inline std::string JournalText(const std::string& text) {
  std::string quoted;
  AppendQuoted(quoted, text);
  return quoted;
}
inline std::string JournalText(const char* text) {
  return text == nullptr ? "null" : JournalText(std::string(text));
}
inline std::string JournalText(char* text) {
  return JournalText(static_cast<const char*>(text));
}
inline std::string JournalText(bool value) {
  return value ? "true" : "false";
}
inline std::string JournalText(std::nullptr_t) {
  return "null";
}
template <typename T>
std::string JournalText(const T& value) {
  if constexpr (std::is_enum_v<T>) {
    return std::to_string(static_cast<int>(value));
  } else if constexpr (!std::is_pointer_v<T>) {
    return std::to_string(value);
  } else if constexpr (std::is_function_v<std::remove_pointer_t<T>>) {
    return value == nullptr ? "null" : "\"callback\"";
  } else {
    return value == nullptr ? "null" : "\"pointer\"";
  }
}

/// The number of a handle of a HandleTable, as the journal shows it.
template <typename Handle>
std::uint64_t Number(Handle handle) {
  return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(handle));
}

}  // namespace desk
