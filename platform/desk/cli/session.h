// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

#include "cli/television.h"

namespace desk {

/// What a command works with: the desk, the way to its TV, and where its words go. The TV is asked
/// for only when a command needs it, so that some work without one.
class Session {
 public:
  using Connect = std::function<std::unique_ptr<Television>(const DeskPaths&)>;

  Session(DeskPaths paths, std::ostream& out, std::ostream& err, bool terminal,
          Connect connect = ConnectToTv);

  const DeskPaths& Paths() const { return m_paths; }
  std::ostream& Out() { return m_out; }
  std::ostream& Err() { return m_err; }
  /// Whether a person watches: only then are there colours and progress bars.
  bool Terminal() const { return m_terminal; }

  /// Throws DeskError (NoTv).
  Television& Tv();
  Json::Value Call(const std::string& method,
                   const Json::Value& request = Json::Value(Json::objectValue));
  /// Indented, with a closing newline.
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

/// An object of the pairs, for requests in one line.
Json::Value Object(std::initializer_list<std::pair<const char*, Json::Value>> members);

}  // namespace desk
