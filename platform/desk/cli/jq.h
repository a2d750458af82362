// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <memory>
#include <string>
#include <vector>

namespace desk::cli {

/// A compiled jq program. Not thread-safe.
class Jq {
 public:
  /// Throws Failure (Usage) when the text is not a jq program.
  explicit Jq(const std::string& program);
  ~Jq();
  Jq(const Jq&) = delete;
  Jq& operator=(const Jq&) = delete;

  struct Result {
    std::vector<Json::Value> values;
    std::string error;  ///< why the program stopped before its end; empty otherwise
    /// At least one value is neither false nor null.
    bool Holds() const;
  };

  Result Run(const Json::Value& input);

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace desk::cli
