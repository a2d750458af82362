// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/tv_store.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <utility>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::tv {

TvStore::TvStore(std::string path) : m_path(std::move(path)), m_root(Json::objectValue) {
  std::ifstream file(m_path, std::ios::binary);
  if (!file) {
    return;
  }
  std::ostringstream text;
  text << file.rdbuf();
  try {
    m_root = ParseJson(text.str());
    if (!m_root.isObject()) {
      throw DeskError(DeskError::FAILED, "not an object");
    }
  } catch (const DeskError&) {
    m_root = Json::Value(Json::objectValue);
    std::rename(m_path.c_str(), (m_path + ".broken").c_str());
  }
}

const Json::Value& TvStore::Get(const std::string& section) const {
  return const_cast<const Json::Value&>(m_root)[section];
}

void TvStore::Set(const std::string& section, const Json::Value& value) {
  Json::Value root = m_root;
  root[section] = value;
  Write(root);
  m_root = std::move(root);
}

// Replaces the file as a whole, so that a full disk loses this change and nothing else.
void TvStore::Write(const Json::Value& root) const {
  const std::string draft = m_path + ".new";
  {
    std::ofstream file(draft, std::ios::binary | std::ios::trunc);
    file << FormatJsonIndented(root) << "\n";
    file.flush();
    if (!file) {
      const std::string reason = std::strerror(errno);
      std::remove(draft.c_str());
      throw DeskError(DeskError::FAILED, "cannot write " + draft + ": " + reason);
    }
  }
  if (std::rename(draft.c_str(), m_path.c_str()) != 0) {
    throw DeskError(DeskError::FAILED, "cannot write " + m_path + ": " + std::strerror(errno));
  }
}

}  // namespace desk::tv
