// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace desk {

struct FaultMemory;

/// One order that a platform call shall fail.
struct Fault {
  std::string call;           ///< name as in the header, at most 95 bytes
  std::optional<int> result;  ///< what the call returns; its usual failure when absent
  int after = 0;              ///< that many uses pass first
  int times = 0;              ///< that many uses fail then; 0 for all until cleared
};

/// The faults of one desk, in a file that is mapped by desk-tv, which writes it, and by the
/// daemon's process, which looks at it in each platform call: one atomic load while it is empty.
class FaultTable {
 public:
  /// Maps the file; makes it when create is set. Throws DeskError (Failed).
  FaultTable(const std::string& path, bool create);
  ~FaultTable();
  FaultTable(const FaultTable&) = delete;
  FaultTable& operator=(const FaultTable&) = delete;

  /// Counts one use of the call against each of its orders, in the order of their Add, until one
  /// fails it. Nothing when the call goes through; otherwise what it returns: the order's result,
  /// or usualFailure when the order names none. Callable from any thread and process.
  std::optional<int> Check(const char* call, int usualFailure);

  /// The three below are for one writer at a time. Add throws DeskError: Usage for a name that is
  /// too long or a negative number, Failed when the table is full of orders that are not used up.
  void Add(const Fault& fault);
  void Clear();
  /// after and times are what is left of them; orders that are used up are not listed.
  std::vector<Fault> List() const;

  static constexpr std::size_t CAPACITY = 64;

 private:
  FaultMemory* m_memory;  ///< the mapping, owned
};

}  // namespace desk
