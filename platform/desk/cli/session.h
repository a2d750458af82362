// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

#include "desk/cli/television.h"

namespace desk::cli {

/// The context of one command: the desk, its TV and the output streams. The connection to the TV
/// is made when a command first uses it, so that some commands work without a TV. For one thread.
class Session {
 public:
  using Connect = std::function<std::unique_ptr<Television>(const DeskPaths&)>;

  Session(DeskPaths paths, std::ostream& out, std::ostream& err, bool terminal,
          Connect connect = ConnectToTv);

  const DeskPaths& Paths() const { return m_paths; }
  std::ostream& Out() { return m_out; }
  std::ostream& Err() { return m_err; }
  /// Whether the output is a terminal: colours and progress bars are for terminals only.
  bool Terminal() const { return m_terminal; }

  /// Throws DeskError (NoTv).
  Television& Tv();
  Json::Value Call(const std::string& method,
                   const Json::Value& request = Json::Value(Json::objectValue));
  /// Prints the value indented, with a newline at its end.
  void PrintJson(const Json::Value& value);
  void PrintJsonLine(const Json::Value& value);

 private:
  const DeskPaths m_paths;
  std::ostream& m_out;
  std::ostream& m_err;
  const bool m_terminal;
  const Connect m_connect;
  std::unique_ptr<Television> m_tv;
};

/// An object with these members.
Json::Value Object(std::initializer_list<std::pair<const char*, Json::Value>> members);

}  // namespace desk::cli
