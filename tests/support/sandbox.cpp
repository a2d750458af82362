// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "support/sandbox.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

namespace support {
namespace {

namespace fs = std::filesystem;

constexpr const char* MARK = "ORV_TEST_SANDBOX";

const std::vector<fs::path>& FreshDirectories() {
  static const std::vector<fs::path> s_directories = {"/tmp", "/opt/usr/apps", "/opt/share",
                                                      "/home/owner"};
  return s_directories;
}

bool IsFlagSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && std::strcmp(value, "1") == 0;
}

/// The path, or one of the directories above it, is `directory`.
bool IsWithin(const fs::path& path, const fs::path& directory) {
  const auto end = std::mismatch(directory.begin(), directory.end(), path.begin(), path.end());
  return end.first == directory.end();
}

bool IsFresh(const fs::path& path) {
  const auto& fresh = FreshDirectories();
  return std::find(fresh.begin(), fresh.end(), path) != fresh.end();
}

bool HoldsFresh(const fs::path& path) {
  const auto& fresh = FreshDirectories();
  return std::any_of(fresh.begin(), fresh.end(),
                     [&](const fs::path& directory) { return IsWithin(directory, path); });
}

/// The arguments of bubblewrap. Its root starts as an empty file system in memory, so a mount point
/// can be created where the machine has no such directory.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> words) : m_words(std::move(words)) {}

  void Add(std::initializer_list<std::string> words) {
    m_words.insert(m_words.end(), words.begin(), words.end());
  }

  /// Binds the directory's contents read-only, without hiding the fresh directories below.
  void AddDirectory(const fs::path& directory) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
      AddEntry(entry.path());
    }
  }

  void AddFresh() {
    for (const fs::path& directory : FreshDirectories()) {
      Add({"--tmpfs", directory.string()});
    }
    // The mode that /tmp has on the machine: writable for all users.
    Add({"--chmod", "1777", "/tmp"});
  }

  /// Restores a directory that a fresh one may hide.
  void AddBack(const char* how, const fs::path& directory) {
    if (fs::exists(directory)) {
      Add({how, directory.string(), directory.string()});
    }
  }

  void Execute() {
    std::vector<char*> pointers;
    for (std::string& word : m_words) {
      pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    execvp(pointers[0], pointers.data());
  }

 private:
  void AddEntry(const fs::path& path) {
    if (IsFresh(path) || path == "/proc" || path == "/dev") {
      return;
    }
    if (HoldsFresh(path)) {
      Add({"--dir", path.string()});
      AddDirectory(path);
      return;
    }
    std::error_code error;
    if (fs::is_symlink(path)) {
      Add({"--symlink", fs::read_symlink(path, error).string(), path.string()});
    } else {
      Add({"--ro-bind-try", path.string(), path.string()});
    }
  }

  std::vector<std::string> m_words;
};

Arguments MakeArguments(char** argv) {
  const fs::path program = fs::read_symlink("/proc/self/exe");
  std::error_code error;
  const fs::path directory = fs::current_path(error);
  const bool reachable = IsWithin(directory, ORV_BINARY_DIR) || IsWithin(directory, ORV_SOURCE_DIR);

  Arguments arguments({"bwrap", "--die-with-parent"});
  arguments.AddDirectory("/");
  arguments.Add({"--dev-bind", "/dev", "/dev", "--bind", "/proc", "/proc"});
  arguments.AddFresh();
  arguments.AddBack("--ro-bind", ORV_SOURCE_DIR);
  if (!IsWithin(program, ORV_BINARY_DIR)) {
    arguments.AddBack("--ro-bind", program.parent_path());
  }
  // Coverage counters and test reports are written there.
  arguments.AddBack("--bind", ORV_BINARY_DIR);
  arguments.Add({"--remount-ro", "/"});
  arguments.Add({"--chdir", reachable ? directory.string() : ORV_BINARY_DIR});
  arguments.Add({"--setenv", MARK, "1", "--unsetenv", "TMPDIR", "--", program.string()});
  for (char** argument = argv + 1; *argument != nullptr; ++argument) {
    arguments.Add({*argument});
  }
  return arguments;
}

}  // namespace

bool InSandbox() {
  return IsFlagSet(MARK);
}

void EnterSandbox(char** argv) {
  if (InSandbox() || IsFlagSet("ORV_TEST_NO_SANDBOX")) {
    return;
  }
  MakeArguments(argv).Execute();
  std::fprintf(stderr,
               "%s: cannot run in a sandbox: bwrap: %s. Install bubblewrap. (ORV_TEST_NO_SANDBOX=1 "
               "runs on the machine's own /tmp and /opt, for debuggers only.)\n",
               argv[0], std::strerror(errno));
  std::exit(1);
}

}  // namespace support
