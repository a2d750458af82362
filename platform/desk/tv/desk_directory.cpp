// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/desk_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "desk/common/desk_error.h"
#include "desk/common/desk_root.h"
#include "desk/tv/bus_daemon.h"
#include "desk/tv/tv_log.h"

namespace desk::tv {
namespace {

namespace fs = std::filesystem;

std::string FirstLine(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

std::string WholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Each entry of /proc/<pid>/environ ends in NUL.
bool HasEntry(const std::string& environment, const std::string& entry) {
  const std::string whole = '\0' + environment;
  return whole.find('\0' + entry + '\0') != std::string::npos;
}

// The kernel writes blanks and backslashes in mount points as three octal digits.
std::string Unescape(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 3 < text.size()) {
      result += static_cast<char>(std::strtol(text.substr(i + 1, 3).c_str(), nullptr, 8));
      i += 3;
    } else {
      result += text[i];
    }
  }
  return result;
}

std::vector<std::string> MountPoints() {
  std::vector<std::string> points;
  std::ifstream file("/proc/self/mountinfo");
  std::string line;
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::string field;
    for (int i = 0; i < 5; ++i) {
      fields >> field;
    }
    points.push_back(Unescape(field));
  }
  return points;
}

}  // namespace

DeskDirectory::DeskDirectory(const DeskPaths& paths) : m_paths(paths) {
  PrepareDeskDirectory(paths);
  MakeDirectories();
  Lock();
  WritePid();
}

DeskDirectory::~DeskDirectory() {
  std::error_code ignored;
  fs::remove(m_paths.Address(), ignored);
  fs::remove(m_paths.PidFile(), ignored);
  fs::remove(m_paths.Faults(), ignored);
  close(m_lock);
}

void DeskDirectory::MakeDirectories() {
  try {
    for (const std::string& path :
         {m_paths.DaemonData(), m_paths.DaemonSharedData(), m_paths.OptShare() + "/orv_ch",
          m_paths.HomeOwner() + "/share/tmp/sdk_tools", m_paths.Tmp(), m_paths.Run() + "/log",
          m_paths.Log(), m_paths.Db()}) {
      fs::create_directories(path);
    }
    fs::permissions(m_paths.Run(), fs::perms::owner_all);
  } catch (const fs::filesystem_error& e) {
    throw DeskError(DeskError::FAILED, "cannot create " + e.path1().string() + ": " +
                                           e.code().message() +
                                           "; choose another directory with --root");
  }
}

void DeskDirectory::Lock() {
  const std::string path = m_paths.Run() + "/lock";
  m_lock = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (m_lock < 0) {
    throw DeskError(DeskError::FAILED, "cannot open " + path + ": " + std::strerror(errno));
  }
  if (flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
    const std::string pid = FirstLine(m_paths.PidFile());
    close(m_lock);
    throw DeskError(DeskError::FAILED, "a TV is already running in " + m_paths.Root() + " (pid " +
                                           pid +
                                           "): end it with `tv down`, or choose another directory "
                                           "with --root");
  }
}

void DeskDirectory::WritePid() {
  std::ofstream file(m_paths.PidFile(), std::ios::trunc);
  file << getpid() << '\n';
  if (!file.flush()) {
    throw DeskError(DeskError::FAILED, "cannot write " + m_paths.PidFile());
  }
}

void DeskDirectory::ClearLeftovers(TvLog& log) {
  const int processes = KillStrayApps(m_paths);
  const int mounts = UnmountAllUnder(m_paths);
  if (processes + mounts > 0) {
    log.Say("removed what a killed TV left behind: " + std::to_string(processes) + " processes, " +
            std::to_string(mounts) + " mounts");
  }
  // After the unmounting: the contents of a leftover mount must not be deleted.
  EmptyDirectory(m_paths.Tmp());
  BusDaemon::RemoveLeftovers(m_paths);
}

void EmptyDirectory(const std::string& path) {
  std::error_code ignored;
  if (fs::is_symlink(path, ignored)) {
    return;
  }
  for (const fs::directory_entry& entry : fs::directory_iterator(path, ignored)) {
    fs::remove_all(entry.path(), ignored);
  }
}

int KillStrayApps(const DeskPaths& paths) {
  int killed = 0;
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc", ignored)) {
    const int pid = std::atoi(entry.path().filename().c_str());
    if (pid <= 1 || pid == getpid()) {
      continue;
    }
    const std::string environment = WholeFile(entry.path().string() + "/environ");
    if (HasEntry(environment, "TV_ROOT=" + paths.Root()) && HasEntry(environment, "TV_ROLE=app") &&
        kill(pid, SIGKILL) == 0) {
      ++killed;
    }
  }
  return killed;
}

int UnmountAllUnder(const DeskPaths& paths) {
  std::vector<std::string> points = MountPoints();
  // The latest mount is on top.
  std::reverse(points.begin(), points.end());
  const std::string prefix = paths.Root() + "/";
  int unmounted = 0;
  for (const std::string& point : points) {
    if (point.compare(0, prefix.size(), prefix) == 0 &&
        umount2(point.c_str(), MNT_DETACH | UMOUNT_NOFOLLOW) == 0) {
      ++unmounted;
    }
  }
  return unmounted;
}

}  // namespace desk::tv
