// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

/// Files for a test. If any of these functions fails, the test program ends with an exception that
/// names the path.
namespace support {

/// A new empty directory under /tmp, removed with its contents. The path does not end with "/".
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& Path() const { return m_path; }
  std::string operator/(const std::string& name) const { return m_path + "/" + name; }

 private:
  std::string m_path;
};

/// Creates missing parent directories.
void WriteFile(const std::string& path, const std::string& content);
std::string ReadFile(const std::string& path);
bool Exists(const std::string& path);
void MakeDirectories(const std::string& path);
/// Every file and directory below, relative to it, in ascending order; directories end in "/".
std::vector<std::string> ListTree(const std::string& directory);

struct ZipEntry {
  std::string name;  ///< in the archive; a directory if it ends with "/"
  std::string content;
  bool stored = false;  ///< without compression
};

void WriteZip(const std::string& path, const std::vector<ZipEntry>& entries);

}  // namespace support
