// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/session.h"

#include <ostream>

#include "desk/common/json.h"

namespace desk::cli {

Session::Session(DeskPaths paths, std::ostream& out, std::ostream& err, bool terminal,
                 Connect connect)
    : m_paths(std::move(paths)),
      m_out(out),
      m_err(err),
      m_terminal(terminal),
      m_connect(std::move(connect)) {}

Television& Session::Tv() {
  if (m_tv == nullptr) {
    m_tv = m_connect(m_paths);
  }
  return *m_tv;
}

Json::Value Session::Call(const std::string& method, const Json::Value& request) {
  return Tv().Call(method, request);
}

void Session::PrintJson(const Json::Value& value) {
  m_out << FormatJsonIndented(value) << '\n';
}

void Session::PrintJsonLine(const Json::Value& value) {
  m_out << FormatJson(value) << '\n';
}

Json::Value Object(std::initializer_list<std::pair<const char*, Json::Value>> members) {
  Json::Value object(Json::objectValue);
  for (const auto& member : members) {
    object[member.first] = member.second;
  }
  return object;
}

}  // namespace desk::cli
