// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

/// Files of a test. A failure of any of these ends the test program with an exception that names
/// the path.
namespace support {

/// A new empty directory under /tmp, removed with all it holds. Ends without "/".
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

/// Makes the directories in front when they are missing.
void WriteFile(const std::string& path, const std::string& content);
std::string ReadFile(const std::string& path);
bool Exists(const std::string& path);
void MakeDirectories(const std::string& path);
/// Every file and directory below, relative to it, in ascending order; directories end in "/".
std::vector<std::string> ListTree(const std::string& directory);

struct ZipEntry {
  std::string name;  ///< as it is to stand in the archive; with "/" at the end a directory
  std::string content;
  bool stored = false;  ///< without compression
};

void WriteZip(const std::string& path, const std::vector<ZipEntry>& entries);

}  // namespace support
