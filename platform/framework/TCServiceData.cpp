// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <TVServiceAPI.h>

bool TCServiceData::Get(int field, std::uint64_t& rValue) const {
  const auto found = m_mapNumbers.find(field);
  if (found == m_mapNumbers.end()) {
    return false;
  }
  rValue = found->second;
  return true;
}

bool TCServiceData::Get(int field, std::string& rValue) const {
  const auto found = m_mapTexts.find(field);
  if (found == m_mapTexts.end()) {
    return false;
  }
  rValue = found->second;
  return true;
}

void TCServiceData::Set(int field, std::uint64_t value) {
  m_mapTexts.erase(field);
  m_mapNumbers[field] = value;
}

void TCServiceData::Set(int field, const std::string& rValue) {
  m_mapNumbers.erase(field);
  m_mapTexts[field] = rValue;
}
