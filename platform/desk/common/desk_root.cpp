// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/desk_root.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <vector>

#include "desk/common/desk_error.h"
#include "desk/common/spawn.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

constexpr const char* MARK_HEAD = "tv-desk format ";
constexpr const char* CHOOSE = "choose another directory with --root";

constexpr std::array<const char*, 34> SYSTEM_DIRECTORIES = {
    "/",          "/bin",     "/boot",      "/dev",      "/dev/shm",   "/etc",     "/home",
    "/lib",       "/lib32",   "/lib64",     "/media",    "/mnt",       "/opt",     "/proc",
    "/root",      "/run",     "/sbin",      "/srv",      "/sys",       "/tmp",     "/usr",
    "/usr/bin",   "/usr/lib", "/usr/local", "/usr/sbin", "/usr/share", "/usr/src", "/var",
    "/var/cache", "/var/lib", "/var/log",   "/var/run",  "/var/spool", "/var/tmp"};

std::string Canonical(const std::string& path) {
  std::error_code error;
  const fs::path canonical = fs::weakly_canonical(path, error);
  return error ? path : canonical.string();
}

std::vector<std::string> HomeDirectories() {
  std::vector<std::string> homes;
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') {
    homes.push_back(Canonical(home));
  }
  const passwd* user = getpwuid(geteuid());
  if (user != nullptr && user->pw_dir != nullptr && *user->pw_dir == '/') {
    homes.push_back(Canonical(user->pw_dir));
  }
  return homes;
}

bool IsSystemDirectory(const std::string& path) {
  return std::any_of(SYSTEM_DIRECTORIES.begin(), SYSTEM_DIRECTORIES.end(),
                     [&path](const char* directory) { return path == directory; });
}

DeskError Refused(const std::string& why) {
  return DeskError(DeskError::FAILED, why + "; " + CHOOSE);
}

// The format that the mark states; nothing when there is no mark, or none that can be read.
std::optional<int> FormatOf(const DeskPaths& paths) {
  std::ifstream file(paths.Mark());
  std::string line;
  const std::string head = MARK_HEAD;
  if (!std::getline(file, line) || line.compare(0, head.size(), head) != 0) {
    return std::nullopt;
  }
  const int format = std::atoi(line.c_str() + head.size());
  return format > 0 ? std::optional<int>(format) : std::nullopt;
}

bool IsEmpty(const DeskPaths& paths) {
  const std::string mark = fs::path(paths.Mark()).filename().string();
  for (const fs::directory_entry& entry : fs::directory_iterator(paths.Root())) {
    const std::string name = entry.path().filename().string();
    // A mark that another process is writing, and what a new file system contains.
    if (name.compare(0, mark.size(), mark) != 0 && name != "lost+found") {
      return false;
    }
  }
  return true;
}

bool HasDeskLayout(const DeskPaths& paths) {
  const std::array<std::string, 7> places = {
      paths.DaemonData(), paths.OptShare(), paths.HomeOwner(), paths.Tmp(),
      paths.Run(),        paths.Log(),      paths.Db()};
  return std::all_of(places.begin(), places.end(), [](const std::string& place) {
    return fs::symlink_status(place).type() == fs::file_type::directory;
  });
}

std::string CannotWrite(const std::string& path, int error) {
  const std::string owner = ForeignOwner(path);
  return path + " cannot be written" + (owner.empty() ? "" : ", it belongs to " + owner) + ": " +
         std::strerror(error);
}

void RequireUsable(const DeskPaths& paths) {
  const std::string& root = paths.Root();
  if (!fs::is_directory(root)) {
    throw Refused(root + " is not a directory");
  }
  if (access(root.c_str(), R_OK | W_OK | X_OK) != 0) {
    throw Refused(CannotWrite(root, errno));
  }
  const std::optional<int> format = FormatOf(paths);
  if (format.has_value() && *format > DESK_FORMAT) {
    throw Refused(root + " was made by a newer tv (format " + std::to_string(*format) +
                  ", this tv knows " + std::to_string(DESK_FORMAT) + "): use that tv");
  }
  if (!format.has_value() && !IsEmpty(paths) && !HasDeskLayout(paths)) {
    throw Refused(root +
                  " contains files that do not belong to a TV; nothing was changed: a TV needs a "
                  "new or an empty directory");
  }
}

void WriteMark(const DeskPaths& paths) {
  const std::string draft = paths.Mark() + "." + std::to_string(getpid());
  const std::string text = MARK_HEAD + std::to_string(DESK_FORMAT) +
                           "\nThe directory of a TV on a desk; `tv up` uses it and empties tmp/.\n";
  {
    const Descriptor file(open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (file.Get() < 0 ||
        write(file.Get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        fsync(file.Get()) != 0) {
      const int error = errno;
      std::remove(draft.c_str());
      throw Refused(CannotWrite(paths.Root(), error));
    }
  }
  if (std::rename(draft.c_str(), paths.Mark().c_str()) != 0) {
    throw Refused(CannotWrite(paths.Mark(), errno));
  }
}

}  // namespace

void RequireOwnDirectory(const DeskPaths& paths) {
  const std::string root = Canonical(paths.Root());
  if (IsSystemDirectory(paths.Root()) || IsSystemDirectory(root)) {
    throw DeskError(DeskError::USAGE,
                    "a TV needs a directory of its own, not " + paths.Root() + ": " + CHOOSE);
  }
  for (const std::string& home : HomeDirectories()) {
    if (home.compare(0, root.size(), root) == 0 &&
        (home.size() == root.size() || home[root.size()] == '/')) {
      throw DeskError(DeskError::USAGE, "a TV needs a directory of its own, and " + paths.Root() +
                                            " is or contains the home directory: " + CHOOSE);
    }
  }
}

void PrepareDeskDirectory(const DeskPaths& paths) {
  RequireOwnDirectory(paths);
  try {
    std::error_code error;
    fs::create_directories(paths.Root(), error);
    if (error && !fs::exists(paths.Root())) {
      const std::string owner = ForeignOwner(paths.Root());
      throw Refused("cannot create the TV's directory " + paths.Root() + ": " + error.message() +
                    (owner.empty() ? "" : " (the directory above it belongs to " + owner + ")"));
    }
    RequireUsable(paths);
  } catch (const fs::filesystem_error& error) {
    throw Refused("cannot use " + paths.Root() + ": " + error.code().message());
  }
  if (!FormatOf(paths).has_value()) {
    WriteMark(paths);
  }
}

std::string ForeignOwner(const std::string& path) {
  struct stat status {};
  fs::path place = path;
  while (stat(place.c_str(), &status) != 0) {
    if (place == place.parent_path()) {
      return {};
    }
    place = place.parent_path();
  }
  if (status.st_uid == geteuid()) {
    return {};
  }
  const passwd* user = getpwuid(status.st_uid);
  return user == nullptr ? "the user " + std::to_string(status.st_uid) : user->pw_name;
}

}  // namespace desk
