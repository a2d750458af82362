// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/faults.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "common/desk_error.h"

namespace desk {

namespace {

constexpr std::int32_t UNLIMITED = -1;

// The layout is shared between processes of one build only; the file is made anew at each start.
struct Entry {
  char call[96];
  std::int32_t result;
  bool hasResult;
  std::atomic<std::int32_t> after;
  std::atomic<std::int32_t> times;  // uses left to fail, UNLIMITED, or 0 when used up
};

// Takes one from a counter that several threads count down; false when it was at zero already.
bool TakeOne(std::atomic<std::int32_t>& counter) {
  std::int32_t left = counter.load();
  while (left > 0) {
    if (counter.compare_exchange_weak(left, left - 1)) {
      return true;
    }
  }
  return false;
}

bool Fails(Entry& entry) {
  if (TakeOne(entry.after)) {
    return false;
  }
  return entry.times.load() == UNLIMITED || TakeOne(entry.times);
}

}  // namespace

struct FaultMemory {
  std::atomic<std::uint32_t> used;
  Entry entries[FaultTable::CAPACITY];
};

static_assert(std::atomic<std::int32_t>::is_always_lock_free, "shared between processes");

namespace {

FaultMemory* Map(const std::string& path, bool create) {
  const int flags = O_RDWR | O_CLOEXEC | (create ? O_CREAT | O_TRUNC : 0);
  const int fd = open(path.c_str(), flags, 0600);
  if (fd < 0) {
    throw DeskError(DeskError::Failed, "cannot open " + path + ": " + std::strerror(errno));
  }
  struct stat status {};
  const bool sized =
      create ? ftruncate(fd, sizeof(FaultMemory)) == 0
             : fstat(fd, &status) == 0 && status.st_size == static_cast<off_t>(sizeof(FaultMemory));
  void* memory = sized
                     ? mmap(nullptr, sizeof(FaultMemory), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0)
                     : MAP_FAILED;
  close(fd);
  if (memory == MAP_FAILED) {
    throw DeskError(DeskError::Failed,
                    "cannot map " + path + ": it is no fault table of this build");
  }
  // A new file reads as zeros, which is an empty table.
  return static_cast<FaultMemory*>(memory);
}

Fault Describe(const Entry& entry) {
  Fault fault;
  fault.call = entry.call;
  if (entry.hasResult) {
    fault.result = entry.result;
  }
  const std::int32_t times = entry.times.load();
  fault.after = entry.after.load();
  fault.times = times == UNLIMITED ? 0 : times;
  return fault;
}

}  // namespace

FaultTable::FaultTable(const std::string& path, bool create) : m_memory(Map(path, create)) {}

FaultTable::~FaultTable() {
  munmap(m_memory, sizeof(FaultMemory));
}

std::optional<int> FaultTable::Check(const char* call, int usualFailure) {
  const std::uint32_t used = m_memory->used.load(std::memory_order_acquire);
  for (std::uint32_t i = 0; i < used; ++i) {
    Entry& entry = m_memory->entries[i];
    if (std::strncmp(entry.call, call, sizeof(entry.call)) == 0 && Fails(entry)) {
      return entry.hasResult ? entry.result : usualFailure;
    }
  }
  return std::nullopt;
}

void FaultTable::Add(const Fault& fault) {
  if (fault.call.empty() || fault.call.size() >= sizeof(Entry::call)) {
    throw DeskError(DeskError::Usage, "\"" + fault.call + "\" names no platform call");
  }
  if (fault.after < 0 || fault.times < 0) {
    throw DeskError(DeskError::Usage, "a fault's numbers of uses are 0 or more");
  }
  const std::uint32_t used = m_memory->used.load();
  if (used == CAPACITY) {
    throw DeskError(DeskError::Failed, "the fault table is full: clear it with tv fail --clear");
  }
  Entry& entry = m_memory->entries[used];
  std::memset(entry.call, 0, sizeof(entry.call));
  std::memcpy(entry.call, fault.call.data(), fault.call.size());
  entry.result = fault.result.value_or(0);
  entry.hasResult = fault.result.has_value();
  entry.after.store(fault.after);
  entry.times.store(fault.times == 0 ? UNLIMITED : fault.times);
  m_memory->used.store(used + 1, std::memory_order_release);
}

void FaultTable::Clear() {
  m_memory->used.store(0);
}

std::vector<Fault> FaultTable::List() const {
  std::vector<Fault> faults;
  const std::uint32_t used = m_memory->used.load();
  for (std::uint32_t i = 0; i < used; ++i) {
    if (m_memory->entries[i].times.load() != 0) {
      faults.push_back(Describe(m_memory->entries[i]));
    }
  }
  return faults;
}

}  // namespace desk
