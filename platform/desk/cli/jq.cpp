// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/jq.h"

#include <algorithm>

extern "C" {
#include <jq.h>
}

#include "desk/cli/failure.h"
#include "desk/common/json.h"

namespace desk::cli {
namespace {

void Keep(void* target, jv message) {
  auto* text = static_cast<std::string*>(target);
  const jv formatted = jq_format_error(message);
  if (text->empty() && jv_get_kind(formatted) == JV_KIND_STRING) {
    *text = jv_string_value(formatted);
  }
  jv_free(formatted);
}

/// The first line, without the library's prefix and its error count.
std::string FirstLine(const std::string& text) {
  std::string line = text.substr(0, text.find('\n'));
  for (const std::string head : {"jq: error: ", "jq: error (at <unknown>): "}) {
    if (line.compare(0, head.size(), head) == 0) {
      line.erase(0, head.size());
    }
  }
  const auto tail = line.find(" (Unix shell quoting issues?)");
  return tail == std::string::npos ? line : line.substr(0, tail);
}

Json::Value Taken(jv value) {
  const jv text = jv_dump_string(value, 0);
  const std::string json(jv_string_value(text));
  jv_free(text);
  return ParseJson(json);
}

}  // namespace

struct Jq::State {
  State() : jq(jq_init()) {
    if (jq != nullptr) {
      jq_set_error_cb(jq, Keep, &message);
    }
  }
  ~State() {
    if (jq != nullptr) {
      jq_teardown(&jq);
    }
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  jq_state* jq;
  std::string message;
};

Jq::Jq(const std::string& program) : m_state(std::make_unique<State>()) {
  if (m_state->jq == nullptr || jq_compile(m_state->jq, program.c_str()) == 0) {
    throw Failure(Exit::Usage,
                  "\"" + program + "\" is not a jq expression: " + FirstLine(m_state->message));
  }
}

Jq::~Jq() = default;

bool Jq::Result::Holds() const {
  return std::any_of(values.begin(), values.end(), [](const Json::Value& value) {
    return !value.isNull() && !(value.isBool() && !value.asBool());
  });
}

Jq::Result Jq::Run(const Json::Value& input) {
  m_state->message.clear();
  const std::string text = FormatJson(input);
  jq_start(m_state->jq, jv_parse_sized(text.data(), static_cast<int>(text.size())), 0);
  Result result;
  jv value = jq_next(m_state->jq);
  while (jv_is_valid(value)) {
    result.values.push_back(Taken(value));
    value = jq_next(m_state->jq);
  }
  if (jv_invalid_has_msg(jv_copy(value)) == 0) {
    jv_free(value);
    return result;
  }
  const jv reason = jv_invalid_get_msg(value);
  const jv shown = jv_get_kind(reason) == JV_KIND_STRING ? reason : jv_dump_string(reason, 0);
  result.error = FirstLine(jv_string_value(shown));
  jv_free(shown);
  return result;
}

}  // namespace desk::cli
