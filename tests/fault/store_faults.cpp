// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/store_faults.h"

#include <sqlite3.h>

#include <atomic>
#include <mutex>
#include <optional>

namespace fault {
namespace {

constexpr char PREFIX[] = "sqlite3.";  // in use before static initialisers have run

struct StoreFault {
  std::string name;
  int result = 0;
  int times = 0;
  int after = 0;
};

struct State {
  sqlite3_vfs* real = nullptr;  // constant after WatchTheStore()
  std::atomic<bool> readOnly{false};
  std::mutex mutex;
  // Guarded by mutex.
  std::map<std::string, int> operations;
  std::optional<StoreFault> fault;
  int failures = 0;
};

State& GetState() {
  static auto* s_state = new State;
  return *s_state;
}

/// Counts one use of an operation. The result of its fault, or nothing if it should be carried out.
std::optional<int> Use(const char* operation) {
  const std::string name = std::string(PREFIX) + operation;
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  ++state.operations[name];
  if (!state.fault || state.fault->name != name || state.fault->times == 0) {
    return std::nullopt;
  }
  if (state.fault->after > 0) {
    --state.fault->after;
    return std::nullopt;
  }
  state.fault->times -= state.fault->times > 0 ? 1 : 0;
  ++state.failures;
  return state.fault->result;
}

/// The real file follows it in memory.
struct File {
  sqlite3_file base;

  sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
  static File* Of(sqlite3_file* file) { return reinterpret_cast<File*>(file); }
};

/// Forwards one method of a file, unless it has a fault.
template <typename... Args>
int Forward(const char* operation, int (*sqlite3_io_methods::*method)(sqlite3_file*, Args...),
            sqlite3_file* file, Args... args) {
  if (operation != nullptr) {
    if (const auto result = Use(operation)) {
      return *result;
    }
  }
  sqlite3_file* real = File::Of(file)->Real();
  return (real->pMethods->*method)(real, args...);
}

int Close(sqlite3_file* file) {
  return Forward(nullptr, &sqlite3_io_methods::xClose, file);
}
int Read(sqlite3_file* file, void* buffer, int size, sqlite3_int64 at) {
  return Forward("xRead", &sqlite3_io_methods::xRead, file, buffer, size, at);
}
int Write(sqlite3_file* file, const void* buffer, int size, sqlite3_int64 at) {
  return Forward("xWrite", &sqlite3_io_methods::xWrite, file, buffer, size, at);
}
int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  return Forward("xTruncate", &sqlite3_io_methods::xTruncate, file, size);
}
int Sync(sqlite3_file* file, int flags) {
  return Forward("xSync", &sqlite3_io_methods::xSync, file, flags);
}
int FileSize(sqlite3_file* file, sqlite3_int64* size) {
  return Forward(nullptr, &sqlite3_io_methods::xFileSize, file, size);
}
int Lock(sqlite3_file* file, int level) {
  return Forward("xLock", &sqlite3_io_methods::xLock, file, level);
}
int Unlock(sqlite3_file* file, int level) {
  return Forward(nullptr, &sqlite3_io_methods::xUnlock, file, level);
}
int CheckReservedLock(sqlite3_file* file, int* result) {
  return Forward(nullptr, &sqlite3_io_methods::xCheckReservedLock, file, result);
}
int FileControl(sqlite3_file* file, int operation, void* argument) {
  return Forward(nullptr, &sqlite3_io_methods::xFileControl, file, operation, argument);
}
int SectorSize(sqlite3_file* file) {
  return Forward(nullptr, &sqlite3_io_methods::xSectorSize, file);
}
int DeviceCharacteristics(sqlite3_file* file) {
  return Forward(nullptr, &sqlite3_io_methods::xDeviceCharacteristics, file);
}

/// Version 1: shared memory and mapped files would bypass the methods above.
sqlite3_io_methods MakeMethods() {
  sqlite3_io_methods methods{};
  methods.iVersion = 1;
  methods.xClose = Close;
  methods.xRead = Read;
  methods.xWrite = Write;
  methods.xTruncate = Truncate;
  methods.xSync = Sync;
  methods.xFileSize = FileSize;
  methods.xLock = Lock;
  methods.xUnlock = Unlock;
  methods.xCheckReservedLock = CheckReservedLock;
  methods.xFileControl = FileControl;
  methods.xSectorSize = SectorSize;
  methods.xDeviceCharacteristics = DeviceCharacteristics;
  return methods;
}

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  static const sqlite3_io_methods s_methods = MakeMethods();
  file->pMethods = nullptr;
  if (const auto result = Use("xOpen")) {
    return *result;
  }
  State& state = GetState();
  if (state.readOnly) {
    flags = (flags & ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)) | SQLITE_OPEN_READONLY;
  }
  const int result = state.real->xOpen(state.real, name, File::Of(file)->Real(), flags, outFlags);
  if (result == SQLITE_OK) {
    file->pMethods = &s_methods;
  }
  return result;
}

int Delete(sqlite3_vfs*, const char* name, int syncDirectory) {
  if (const auto result = Use("xDelete")) {
    return *result;
  }
  return GetState().real->xDelete(GetState().real, name, syncDirectory);
}

}  // namespace

void WatchTheStore() {
  static sqlite3_vfs s_vfs{};
  GetState().real = sqlite3_vfs_find("unix");
  s_vfs = *GetState().real;  // methods not replaced below do not use the file
  s_vfs.zName = "faulty";
  s_vfs.szOsFile += static_cast<int>(sizeof(File));
  s_vfs.xOpen = Open;
  s_vfs.xDelete = Delete;
  sqlite3_vfs_register(&s_vfs, 1);
}

bool IsStoreOperation(const std::string& name) {
  return name.find(PREFIX) == 0;
}

std::map<std::string, int> StoreOperations() {
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  return GetState().operations;
}

void ForgetStoreOperations() {
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  GetState().operations.clear();
}

void FailStore(const std::string& name, int result, int times, int after) {
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  GetState().fault = StoreFault{name, result, times, after};
}

void ClearStoreFaults() {
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  GetState().fault.reset();
}

int StoreFailures() {
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  return GetState().failures;
}

void MakeStoreReadOnly(bool readOnly) {
  GetState().readOnly = readOnly;
}

}  // namespace fault
