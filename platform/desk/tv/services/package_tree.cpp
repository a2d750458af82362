// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/package_tree.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "desk/common/desk_error.h"

namespace desk::tv {
namespace {

// No package's id begins with a dot.
constexpr char PREFIX[] = ".install-";

[[noreturn]] void Fail(const std::string& what, const std::string& path, int error) {
  const std::string why = error == ENOSPC || error == EDQUOT
                              ? "no space left on the device: make room and try again"
                              : std::strerror(error);
  throw DeskError(DeskError::FAILED, "cannot " + what + " " + path + ": " + why);
}

void Rename(const std::string& from, const std::string& to) {
  if (rename(from.c_str(), to.c_str()) != 0) {
    Fail("move " + from + " to", to, errno);
  }
}

// Three plain renames where the file system cannot exchange.
void Exchange(const std::string& first, const std::string& second, const std::string& aside) {
  if (renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE) == 0) {
    return;
  }
  if (errno != EINVAL && errno != ENOSYS) {
    Fail("exchange " + first + " and", second, errno);
  }
  Rename(second, aside);
  Rename(first, second);
  Rename(aside, first);
}

void RemoveTree(const std::string& path) {
  std::error_code ignored;  // what cannot be removed now is tried again at the next start
  std::filesystem::remove_all(path, ignored);
}

}  // namespace

StagingDirectory::StagingDirectory(const DeskPaths& paths) {
  std::error_code error;
  std::filesystem::create_directories(paths.Apps(), error);
  m_directory = paths.Apps() + "/" + PREFIX + "XXXXXX";
  if (error || mkdtemp(m_directory.data()) == nullptr) {
    Fail("make a directory in", paths.Apps(), error ? error.value() : errno);
  }
  m_tree = m_directory + "/tree";
  if (mkdir(m_tree.c_str(), 0755) != 0) {
    const int reason = errno;
    RemoveTree(m_directory);
    Fail("make", m_tree, reason);
  }
}

StagingDirectory::~StagingDirectory() {
  RemoveTree(m_directory);
}

void StagingDirectory::MoveTo(const std::string& package) {
  if (std::filesystem::exists(std::filesystem::symlink_status(package))) {
    Rename(package, m_directory + "/leftover");
  }
  Rename(m_tree, package);
}

void StagingDirectory::ExchangeResources(const std::string& package) {
  const std::string own = package + "/res";
  if (!std::filesystem::exists(own) && mkdir(own.c_str(), 0755) != 0) {
    Fail("make", own, errno);
  }
  Exchange(m_tree + "/res", own, m_directory + "/aside");
}

void StagingDirectory::TakeAway(const std::string& package) {
  if (std::filesystem::exists(std::filesystem::symlink_status(package))) {
    Rename(package, m_directory + "/old");
  }
}

void StagingDirectory::GiveBack(const std::string& package) {
  Rename(m_directory + "/old", package);
}

void StagingDirectory::RemoveLeftovers(const DeskPaths& paths) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(paths.Apps(), error)) {
    if (entry.path().filename().string().rfind(PREFIX, 0) == 0) {
      RemoveTree(entry.path());
    }
  }
}

}  // namespace desk::tv
