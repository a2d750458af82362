// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace desk {

struct FaultMemory;

/// Makes uses of one platform call fail.
struct Fault {
  std::string call;           ///< name as in the header, at most 95 bytes
  std::optional<int> result;  ///< what the call returns; its usual failure when absent
  int after = 0;              ///< number of uses that succeed first
  int times = 0;              ///< number of uses that fail then; 0: all until cleared
};

/// The faults of one desk, in a file that several processes map: desk-tv adds and clears faults,
/// the daemon checks each platform call. A check of an empty table is one atomic load; any other
/// operation takes a mutex in the shared memory, which survives the death of a process that holds
/// it. All operations are callable from any thread and process.
class FaultTable {
 public:
  /// Maps the file; creates it, empty, when create is set. Throws DeskError (Failed). A created
  /// file must not be opened by other processes before the constructor has returned.
  FaultTable(const std::string& path, bool create);
  ~FaultTable();
  FaultTable(const FaultTable&) = delete;
  FaultTable& operator=(const FaultTable&) = delete;

  /// Counts one use of the call against each of its faults, the oldest first, until one fails it.
  /// Nothing when the call succeeds; otherwise its result: that of the fault, or usualFailure when
  /// the fault names none.
  std::optional<int> Check(const char* call, int usualFailure);

  /// Throws DeskError: Usage for a name that is too long or a negative number, Failed when the
  /// table is full. A fault leaves the table with its last use.
  void Add(const Fault& fault);
  void Clear();
  /// The oldest first. after and times are the remaining numbers of uses.
  std::vector<Fault> List() const;

  static constexpr std::size_t CAPACITY = 64;

 private:
  FaultMemory* m_memory;  ///< the mapping, owned
};

}  // namespace desk
