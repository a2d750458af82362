// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace platform {

/// An argument or a result of a platform call. A view: it copies no text and allocates nothing, so
/// it is valid only as long as the text that it was made from.
class Value {
 public:
  enum class Kind { Nothing, Null, Flag, Number, Text, Callback, Pointer, Handle };

  /// No value: the result of a void function.
  constexpr Value() = default;
  constexpr Value(std::nullptr_t) : m_kind(Kind::Null) {}
  constexpr Value(bool flag) : m_kind(Kind::Flag), m_number(flag ? 1 : 0) {}
  Value(const char* text)
      : m_kind(text == nullptr ? Kind::Null : Kind::Text),
        m_text(text == nullptr ? std::string_view() : std::string_view(text)) {}
  Value(char* text) : Value(static_cast<const char*>(text)) {}
  Value(const std::string& text) : m_kind(Kind::Text), m_text(text) {}

  /// A number, an enumerator (as its number), a function pointer (Callback) or any other pointer.
  /// The address of a pointer is not kept: only whether it is null.
  template <typename T>
  constexpr Value(T value) {
    if constexpr (std::is_pointer_v<T>) {
      constexpr bool IS_FUNCTION = std::is_function_v<std::remove_pointer_t<T>>;
      m_kind = value == nullptr ? Kind::Null : (IS_FUNCTION ? Kind::Callback : Kind::Pointer);
    } else {
      static_assert(std::is_integral_v<T> || std::is_enum_v<T>, "not a value of a platform call");
      m_kind = Kind::Number;
      m_number = static_cast<std::uint64_t>(value);
      m_negative = IsNegative(value);
    }
  }

  /// The handle with this number among those of its kind; null for number 0. The kind must live as
  /// long as the value.
  static Value OfHandle(const char* kind, std::uint64_t number);

  Kind GetKind() const { return m_kind; }
  bool GetFlag() const { return m_number != 0; }
  /// Of a number or a handle, in decimal.
  std::string GetNumber() const;
  /// The text, or the kind of a handle.
  std::string_view GetText() const { return m_text; }

 private:
  template <typename T>
  static constexpr bool IsNegative(T value) {
    if constexpr (std::is_enum_v<T>) {
      return IsNegative(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_signed_v<T>) {
      return value < 0;
    } else {
      return false;
    }
  }

  Kind m_kind = Kind::Nothing;
  bool m_negative = false;  ///< m_number holds a negative number in two's complement
  std::uint64_t m_number = 0;
  std::string_view m_text;
};

/// For people and tests: a text as it is, "null", "true", "5", "void" for no value, "set" for a
/// pointer or callback, "app_control#1" for a handle.
std::string FormatText(const Value& value);

/// As JSON: "callback" or "pointer" for those two, the number of a handle, null for no value.
void AppendJson(std::string& out, const Value& value);
/// Appends the text as a JSON string. Bytes that are not UTF-8 are copied unchanged.
void AppendQuoted(std::string& out, std::string_view text);

}  // namespace platform
