// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>

struct archive;
struct archive_entry;

namespace desk {

/// One entry as the archive's directory has it; the name is not checked yet.
struct RawEntry {
  enum class Type { File, Directory, Other };
  std::string name;
  Type type = Type::File;
  bool executable = false;
  std::uint64_t size = 0;
};

/// Reads a zip archive from front to back by its central directory. One thread at a time. All
/// operations throw PackageError.
class ArchiveReader {
 public:
  explicit ArchiveReader(const std::string& path);
  ~ArchiveReader();
  ArchiveReader(const ArchiveReader&) = delete;
  ArchiveReader& operator=(const ArchiveReader&) = delete;

  /// The next entry, or false at the end.
  bool Next(RawEntry& entry);
  /// The next bytes of the current entry; 0 at its end. A damaged entry, a wrong checksum included,
  /// throws.
  std::size_t Read(void* buffer, std::size_t size);

 private:
  [[noreturn]] void Fail(const std::string& what);

  std::string m_path;
  std::string m_current;
  archive* m_archive = nullptr;  ///< owned
};

}  // namespace desk
