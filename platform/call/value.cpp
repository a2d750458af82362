// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "call/value.h"

#include <cstdio>

namespace platform {

Value Value::OfHandle(const char* kind, std::uint64_t number) {
  Value value;
  value.m_kind = number == 0 ? Kind::Null : Kind::Handle;
  value.m_number = number;
  value.m_text = kind;
  return value;
}

std::string Value::GetNumber() const {
  return m_negative ? std::to_string(static_cast<std::int64_t>(m_number))
                    : std::to_string(m_number);
}

std::string FormatText(const Value& value) {
  switch (value.GetKind()) {
    case Value::Kind::Nothing:
      return "void";
    case Value::Kind::Null:
      return "null";
    case Value::Kind::Flag:
      return value.GetFlag() ? "true" : "false";
    case Value::Kind::Number:
      return value.GetNumber();
    case Value::Kind::Text:
      return std::string(value.GetText());
    case Value::Kind::Handle:
      return std::string(value.GetText()) + "#" + value.GetNumber();
    case Value::Kind::Callback:
    case Value::Kind::Pointer:
      break;
  }
  return "set";
}

void AppendJson(std::string& out, const Value& value) {
  switch (value.GetKind()) {
    case Value::Kind::Nothing:
    case Value::Kind::Null:
      out += "null";
      break;
    case Value::Kind::Flag:
      out += value.GetFlag() ? "true" : "false";
      break;
    case Value::Kind::Number:
    case Value::Kind::Handle:
      out += value.GetNumber();
      break;
    case Value::Kind::Text:
      AppendQuoted(out, value.GetText());
      break;
    case Value::Kind::Callback:
      out += "\"callback\"";
      break;
    case Value::Kind::Pointer:
      out += "\"pointer\"";
      break;
  }
}

void AppendQuoted(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escaped[8];
      std::snprintf(escaped, sizeof(escaped), "\\u%04x", static_cast<unsigned>(c));
      out += escaped;
    } else {
      out += c;
    }
  }
  out += '"';
}

}  // namespace platform
