// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

#include "fake/control/packages.h"

/// The daemon's store as another program sees it, by a connection of its own that no fault reaches.
namespace fault {

/// Makes a store with the rows that an install of the packages leaves behind.
void StoreRows(const std::vector<fake::Package>& packages);

/// What is wrong with the store: it does not open, fails the integrity check, has other columns
/// than it should, or a row whose "variables" are no JSON object. Empty when it is whole.
std::vector<std::string> WhatIsWrongWithTheStore();

/// Another program's exclusive lock, when there is one at all.
class StoreLock {
 public:
  explicit StoreLock(bool held);
  ~StoreLock();
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

 private:
  sqlite3* m_db = nullptr;
};

/// Package ids, ascending. Empty also when there is no table.
std::vector<std::string> StoredPackages();

}  // namespace fault
