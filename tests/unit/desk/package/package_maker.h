// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace desk {

/// A directory that is removed with the object.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  const std::string& Path() const { return m_path; }

 private:
  std::string m_path;
};

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);
/// Relative paths of everything below, sorted; directories end in "/".
std::vector<std::string> ListTree(const std::string& directory);

/// Creates zip archives with exactly the given entries, even invalid ones.
class PackageMaker {
 public:
  PackageMaker& Add(const std::string& name, const std::string& content, unsigned mode = 0100644);
  PackageMaker& AddLink(const std::string& name, const std::string& target);
  /// Of another kind than a file: the mode's upper bits say which.
  PackageMaker& AddSpecial(const std::string& name, unsigned mode);
  /// A config.xml of one UI application <package>.App with the given elements inside.
  PackageMaker& AddConfig(const std::string& package, const std::string& version = "1.0.0",
                          const std::string& elements = "");
  void Write(const std::string& path) const;

 private:
  struct Entry {
    std::string name;
    std::string content;
    unsigned mode;
  };
  std::vector<Entry> m_entries;
};

/// A config.xml with those elements inside its widget.
std::string Config(const std::string& elements, const std::string& version = "1.0.0");
std::string UiApp(const std::string& package, const std::string& name = "App");
std::string Service(const std::string& id, const std::string& program,
                    const std::string& elements = "");
std::string MetadataElement(const std::string& key, const std::string& value);

}  // namespace desk
