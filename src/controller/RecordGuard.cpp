// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/RecordGuard.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace {

struct Holder {
  std::thread::id thread;
  int depth = 0;  // how often the thread holds the guard
};

struct Guards {
  std::mutex mutex;                          // leaf: guards mapHolders
  std::condition_variable released;          // notified when a package becomes free
  std::map<std::string, Holder> mapHolders;  // package id to the thread that uses its record
};

Guards& GetGuards() {
  // Owned by the process and never deleted: the tasks' threads may still run when statics are
  // destroyed.
  static Guards& s_rGuards = *new Guards();
  return s_rGuards;
}

}  // namespace

RecordGuard::RecordGuard(const std::string& rPackageID) : m_sPackageID(rPackageID) {
  const std::thread::id thread = std::this_thread::get_id();
  Guards& rGuards = GetGuards();
  std::unique_lock<std::mutex> lock(rGuards.mutex);
  rGuards.released.wait(lock, [&] {
    const auto iter = rGuards.mapHolders.find(m_sPackageID);
    return iter == rGuards.mapHolders.end() || iter->second.thread == thread;
  });
  Holder& rHolder = rGuards.mapHolders[m_sPackageID];
  rHolder.thread = thread;
  ++rHolder.depth;
}

RecordGuard::~RecordGuard() {
  Guards& rGuards = GetGuards();
  const std::lock_guard<std::mutex> lock(rGuards.mutex);
  const auto iter = rGuards.mapHolders.find(m_sPackageID);
  if (--iter->second.depth > 0) {
    return;
  }
  rGuards.mapHolders.erase(iter);
  rGuards.released.notify_all();
}
