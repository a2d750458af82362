// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

#include "fake/control/packages.h"

/// The daemon's store as another program sees it, through its own connection without faults.
namespace fault {

/// Creates a store with the rows that an install of the packages writes.
void StoreRows(const std::vector<fake::Package>& packages);

/// What is wrong with the store: it does not open, fails the integrity check, has other columns
/// than expected, or a row whose "variables" are not a JSON object. Empty when it is intact.
std::vector<std::string> WhatIsWrongWithTheStore();

/// Holds another program's exclusive lock if the argument is true.
class StoreLock {
 public:
  explicit StoreLock(bool held);
  ~StoreLock();
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

 private:
  sqlite3* m_db = nullptr;
};

/// Package ids, ascending. Also empty when there is no table.
std::vector<std::string> StoredPackages();

}  // namespace fault
