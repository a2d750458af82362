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
#include <map>

#include "common/desk_error.h"
#include "common/fault_entry.h"

namespace desk {

// The layout is shared between processes of one build only; the file is made anew at each start.
struct FaultMemory {
  std::atomic<std::uint32_t> used;  // entries that hold an order, or held one
  FaultEntry::Order lastOrder;      // the writer's own
  FaultEntry entries[FaultTable::CAPACITY];
};

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

// A place for another order: one whose order is used up, else one that has none yet.
std::uint32_t FindPlace(const FaultMemory& memory) {
  const std::uint32_t used = memory.used.load();
  for (std::uint32_t i = 0; i < used; ++i) {
    if (memory.entries[i].IsUsedUp()) {
      return i;
    }
  }
  if (used == FaultTable::CAPACITY) {
    throw DeskError(DeskError::Failed, "the fault table is full: clear it with tv fail --clear");
  }
  return used;
}

}  // namespace

FaultTable::FaultTable(const std::string& path, bool create) : m_memory(Map(path, create)) {}

FaultTable::~FaultTable() {
  munmap(m_memory, sizeof(FaultMemory));
}

std::optional<int> FaultTable::Check(const char* call, int usualFailure) {
  const std::uint32_t used = m_memory->used.load();
  if (used == 0) {
    return std::nullopt;
  }
  const FaultEntry::Name name = FaultEntry::NameOf(call);
  // Places are taken in any order, the orders for one call in that of their numbers.
  for (FaultEntry::Order done = 0;;) {
    FaultEntry::Snapshot next;
    FaultEntry* place = nullptr;
    for (std::uint32_t i = 0; i < used; ++i) {
      const FaultEntry::Snapshot found = m_memory->entries[i].Read();
      if (found.order > done && found.name == name &&
          (place == nullptr || found.order < next.order)) {
        next = found;
        place = &m_memory->entries[i];
      }
    }
    if (place == nullptr) {
      return std::nullopt;
    }
    if (place->Fails(next.order)) {
      return next.result.value_or(usualFailure);
    }
    done = next.order;
  }
}

void FaultTable::Add(const Fault& fault) {
  if (fault.call.empty() || fault.call.size() >= FaultEntry::NAME_BYTES) {
    throw DeskError(DeskError::Usage, "\"" + fault.call + "\" names no platform call");
  }
  if (fault.after < 0 || fault.times < 0) {
    throw DeskError(DeskError::Usage, "a fault's numbers of uses are 0 or more");
  }
  const std::uint32_t place = FindPlace(*m_memory);
  m_memory->entries[place].Write(++m_memory->lastOrder, fault);
  if (place == m_memory->used.load()) {
    m_memory->used.store(place + 1);
  }
}

void FaultTable::Clear() {
  m_memory->used.store(0);
}

std::vector<Fault> FaultTable::List() const {
  std::map<FaultEntry::Order, const FaultEntry*> orders;
  const std::uint32_t used = m_memory->used.load();
  for (std::uint32_t i = 0; i < used; ++i) {
    if (!m_memory->entries[i].IsUsedUp()) {
      orders[m_memory->entries[i].Holds()] = &m_memory->entries[i];
    }
  }
  std::vector<Fault> faults;
  faults.reserve(orders.size());
  for (const auto& entry : orders) {
    faults.push_back(entry.second->Describe());
  }
  return faults;
}

}  // namespace desk
