// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/mount_namespace.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace desk::tv {
namespace {

std::string Without(const std::string& step) {
  return "the machine's, since this process may not create one (" + step + ": " +
         std::strerror(errno) + ")";
}

bool WriteFile(const char* path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  return static_cast<bool>(file.flush());
}

// The user id stays the same in the namespace, since the bus compares user ids.
bool MapUser(uid_t user, gid_t group) {
  const std::string userText = std::to_string(user);
  const std::string groupText = std::to_string(group);
  return WriteFile("/proc/self/uid_map", userText + " " + userText + " 1") &&
         WriteFile("/proc/self/setgroups", "deny") &&
         WriteFile("/proc/self/gid_map", groupText + " " + groupText + " 1");
}

bool ShareDirectory(const char* root) {
  return mount(nullptr, "/", nullptr, MS_SLAVE | MS_REC, nullptr) == 0 &&
         mount(root, root, nullptr, MS_BIND | MS_REC, nullptr) == 0 &&
         mount(nullptr, root, nullptr, MS_SHARED | MS_REC, nullptr) == 0;
}

}  // namespace

std::string EnterMountNamespace(const DeskPaths& paths) {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  const bool privileged = unshare(CLONE_NEWNS) == 0;
  if (!privileged && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
    return Without("unshare");
  }
  if (!privileged && !MapUser(user, group)) {
    return Without("user map");
  }
  if (!ShareDirectory(paths.Root().c_str())) {
    return Without("mount");
  }
  return privileged ? "the desk's own mount namespace"
                    : "the desk's own mount namespace, in a user namespace";
}

}  // namespace desk::tv
