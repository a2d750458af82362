// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Lets one thread at a time use the record of a package: run an operation, change its chain, or
/// destroy it. A record is therefore never destroyed, and none of its layers is, while another
/// thread is inside one of its operations.
///
/// The package id is what is guarded, so the guard is taken before the record is looked up, and it
/// does not matter whether there is one. A thread that holds the guard may take it again: an
/// operation may remove its own record.
///
/// Waiting is safe under two rules. No lock is held when a guard is constructed; the cache's locks
/// are taken inside it. A thread does not take the guard of one package while it holds that of
/// another. An operation may block for the main loop for up to 20 seconds (the start of a web app);
/// a main loop that waits for that operation here goes on when the time is up.
class RecordGuard {
 public:
  /// Blocks while another thread holds the guard of the package.
  explicit RecordGuard(const std::string& rPackageID);
  /// On the thread that constructed it.
  ~RecordGuard();
  RecordGuard(const RecordGuard&) = delete;
  RecordGuard& operator=(const RecordGuard&) = delete;

 private:
  const std::string m_sPackageID;
};
