// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/faults.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "desk/common/desk_error.h"

namespace desk {
namespace {

constexpr std::size_t NAME_BYTES = 96;

struct Slot {
  char call[NAME_BYTES];
  bool hasResult;
  std::int32_t result;
  std::int32_t after;
  std::int32_t times;  // 0: all until cleared
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "shared between processes");

}  // namespace

// The layout is shared between processes of one build only; each start creates the file again.
struct FaultMemory {
  pthread_mutex_t mutex;
  std::atomic<std::uint32_t> count;  // written under the mutex, read without it
  Slot slots[FaultTable::CAPACITY];  // the first `count`, the oldest first; guarded by mutex
};

namespace {

// Holds the mutex of the table.
class Lock {
 public:
  explicit Lock(FaultMemory& memory) : m_mutex(memory.mutex) {
    if (pthread_mutex_lock(&m_mutex) == EOWNERDEAD) {
      // The process that held it has died. A fault that it was removing may be there twice.
      pthread_mutex_consistent(&m_mutex);
    }
  }
  ~Lock() { pthread_mutex_unlock(&m_mutex); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  pthread_mutex_t& m_mutex;
};

void InitMutex(pthread_mutex_t& mutex) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutex_init(&mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

FaultMemory* Map(const std::string& path, bool create) {
  const int flags = O_RDWR | O_CLOEXEC | (create ? O_CREAT | O_TRUNC : 0);
  const int fd = open(path.c_str(), flags, 0600);
  if (fd < 0) {
    throw DeskError(DeskError::FAILED, "cannot open " + path + ": " + std::strerror(errno));
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
    throw DeskError(DeskError::FAILED,
                    "cannot map " + path + ": it is not a fault table of this build");
  }
  // A new file reads as zeros, which is an empty table.
  auto* table = static_cast<FaultMemory*>(memory);
  if (create) {
    InitMutex(table->mutex);
  }
  return table;
}

void Remove(FaultMemory& memory, std::uint32_t index) {
  const std::uint32_t count = memory.count.load();
  std::copy(memory.slots + index + 1, memory.slots + count, memory.slots + index);
  memory.count.store(count - 1);
}

// Counts one use of the call against the fault in the slot; true when the use fails.
bool TakeUse(FaultMemory& memory, std::uint32_t index) {
  Slot& slot = memory.slots[index];
  if (slot.after > 0) {
    --slot.after;
    return false;
  }
  if (slot.times > 0 && --slot.times == 0) {
    Remove(memory, index);
  }
  return true;
}

}  // namespace

FaultTable::FaultTable(const std::string& path, bool create) : m_memory(Map(path, create)) {}

FaultTable::~FaultTable() {
  munmap(m_memory, sizeof(FaultMemory));
}

std::optional<int> FaultTable::Check(const char* call, int usualFailure) {
  if (m_memory->count.load() == 0) {
    return std::nullopt;
  }
  const Lock lock(*m_memory);
  for (std::uint32_t i = 0; i < m_memory->count.load(); ++i) {
    const Slot& slot = m_memory->slots[i];
    const int result = slot.hasResult ? slot.result : usualFailure;
    if (std::strcmp(slot.call, call) == 0 && TakeUse(*m_memory, i)) {
      return result;
    }
  }
  return std::nullopt;
}

void FaultTable::Add(const Fault& fault) {
  if (fault.call.empty() || fault.call.size() >= NAME_BYTES) {
    throw DeskError(DeskError::USAGE, "\"" + fault.call + "\" is not the name of a platform call");
  }
  if (fault.after < 0 || fault.times < 0) {
    throw DeskError(DeskError::USAGE, "the numbers of uses of a fault must be 0 or more");
  }
  const Lock lock(*m_memory);
  const std::uint32_t count = m_memory->count.load();
  if (count == CAPACITY) {
    throw DeskError(DeskError::FAILED, "the fault table is full: clear it with tv fail --clear");
  }
  Slot slot{};
  fault.call.copy(slot.call, NAME_BYTES - 1);
  slot.hasResult = fault.result.has_value();
  slot.result = fault.result.value_or(0);
  slot.after = fault.after;
  slot.times = fault.times;
  m_memory->slots[count] = slot;
  m_memory->count.store(count + 1);
}

void FaultTable::Clear() {
  const Lock lock(*m_memory);
  m_memory->count.store(0);
}

std::vector<Fault> FaultTable::List() const {
  const Lock lock(*m_memory);
  std::vector<Fault> faults;
  for (std::uint32_t i = 0; i < m_memory->count.load(); ++i) {
    const Slot& slot = m_memory->slots[i];
    const auto result = slot.hasResult ? std::optional<int>(slot.result) : std::nullopt;
    faults.push_back({slot.call, result, slot.after, slot.times});
  }
  return faults;
}

}  // namespace desk
