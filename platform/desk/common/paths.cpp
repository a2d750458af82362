// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/paths.h"

#include <cstdlib>
#include <filesystem>

#include "desk/common/desk_error.h"

namespace desk {
namespace {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::string DefaultRoot() {
  std::string root = Environment("TV_ROOT");
  if (!root.empty()) {
    return root;
  }
  const std::string state = Environment("XDG_STATE_HOME");
  if (!state.empty()) {
    return state + "/tv-desk";
  }
  const std::string home = Environment("HOME");
  if (home.empty()) {
    throw DeskError(DeskError::USAGE,
                    "no directory for the TV: HOME is not set; give one with --root or TV_ROOT");
  }
  return home + "/.local/state/tv-desk";
}

std::string WithoutClosingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

}  // namespace

DeskPaths::DeskPaths(const std::string& root)
    : m_root(WithoutClosingSlash(std::filesystem::absolute(root).lexically_normal().string())) {}

DeskPaths DeskPaths::Select(const std::string& option) {
  return DeskPaths(option.empty() ? DefaultRoot() : option);
}

namespace {

std::string FindProgramDirectory() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) {
    throw DeskError(DeskError::FAILED, "cannot find this program's directory: " + error.message());
  }
  return program.parent_path().string();
}

}  // namespace

std::string ProgramDirectory() {
  static const std::string directory = FindProgramDirectory();
  return directory;
}

}  // namespace desk
