// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/package/image.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <glib.h>
#include <strings.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <vector>

#include "desk/common/spawn.h"
#include "desk/package/manifest.h"

namespace desk {
namespace {

constexpr std::size_t EXT_MAGIC_AT = 1080;
constexpr std::size_t ISO_MAGIC_AT = 32769;
constexpr std::size_t HEAD_SIZE = ISO_MAGIC_AT + 5;
constexpr rlim_t MOST_BYTES = rlim_t{8} << 30;
constexpr std::size_t BLOCK_SIZE = 64UL * 1024;
constexpr int UNSQUASHFS_NO_MATCH = 2;

bool HasMagic(const std::string& head, std::size_t at, const std::string& magic) {
  return head.size() >= at + magic.size() && head.compare(at, magic.size(), magic) == 0;
}

/// The administration directories are not on every user's PATH.
std::string FindTool(const char* name, const char* debianPackage) {
  const std::unique_ptr<gchar, decltype(&g_free)> path(g_find_program_in_path(name), g_free);
  if (path != nullptr) {
    return path.get();
  }
  for (const char* directory : {"/usr/sbin/", "/sbin/"}) {
    if (access((std::string(directory) + name).c_str(), X_OK) == 0) {
      return std::string(directory) + name;
    }
  }
  throw PackageError(std::string("the program ") + name +
                     " is not installed; install the package " + debianPackage);
}

// Runs between fork and exec.
void LimitOutput(gpointer) {
  const rlimit limit{MOST_BYTES, MOST_BYTES};
  setrlimit(RLIMIT_FSIZE, &limit);
}

/// Runs the program with its output in `output`, and returns its exit status; -1 when it was
/// killed.
int RunTool(std::vector<std::string> arguments, int output) {
  std::vector<char*> pointers = Pointers(arguments);
  GError* error = nullptr;
  GPid pid = 0;
  const Descriptor null(open("/dev/null", O_RDWR | O_CLOEXEC));
  if (g_spawn_async_with_fds(nullptr, pointers.data(), nullptr, G_SPAWN_DO_NOT_REAP_CHILD,
                             LimitOutput, nullptr, &pid, null.Get(), output, null.Get(),
                             &error) == 0) {
    const std::string reason = error->message;
    g_error_free(error);
    throw PackageError("cannot run " + arguments.front() + ": " + reason);
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int OpenTarget(const std::string& target) {
  const int fd = open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (fd < 0) {
    throw PackageError("cannot write " + target + ": " + std::strerror(errno));
  }
  return fd;
}

bool CopyFromSquashfs(const std::string& image, const std::string& name,
                      const std::string& target) {
  const std::string tool = FindTool("unsquashfs", "squashfs-tools");
  const Descriptor output(OpenTarget(target));
  const int status = RunTool({tool, "-cat", "-no-xattrs", image, name}, output.Get());
  if (status != 0 && status != UNSQUASHFS_NO_MATCH) {
    throw PackageError(image + " is damaged: unsquashfs cannot read it");
  }
  return status == 0;
}

// debugfs exits with 0 even after an error, so only its output tells whether it succeeded: it
// describes the root directory (inode 2) of a file system that it can open.
bool CopyFromExt(const std::string& image, const std::string& name, const std::string& target) {
  const std::string tool = FindTool("debugfs", "e2fsprogs");
  const Descriptor description(OpenTarget(target));
  RunTool({tool, "-R", "stat <2>", image}, description.Get());
  struct stat status {};
  if (fstat(description.Get(), &status) != 0 || status.st_size == 0) {
    throw PackageError(image + " is damaged: debugfs cannot open it");
  }
  unlink(target.c_str());
  RunTool({tool, "-R", "dump /" + name + " \"" + target + "\"", image}, description.Get());
  return stat(target.c_str(), &status) == 0;
}

struct ArchiveDeleter {
  void operator()(archive* handle) const { archive_read_free(handle); }
};
using Archive = std::unique_ptr<archive, ArchiveDeleter>;

[[noreturn]] void FailIso(const std::string& image, archive* handle) {
  const char* reason = archive_error_string(handle);
  throw PackageError(image + " is damaged: " + (reason == nullptr ? "unknown error" : reason));
}

// A plain ISO image has upper-case names, which the kernel shows in lower case.
bool CopyFromIso(const std::string& image, const std::string& name, const std::string& target) {
  const Archive handle(archive_read_new());
  archive_read_support_format_iso9660(handle.get());
  if (archive_read_open_filename(handle.get(), image.c_str(), BLOCK_SIZE) != ARCHIVE_OK) {
    FailIso(image, handle.get());
  }
  archive_entry* entry = nullptr;
  for (int result = 0; (result = archive_read_next_header(handle.get(), &entry)) != ARCHIVE_EOF;) {
    if (result < ARCHIVE_WARN) {
      FailIso(image, handle.get());
    }
    const char* path = archive_entry_pathname(entry);
    if (path == nullptr || strcasecmp(path, name.c_str()) != 0) {
      continue;
    }
    const Descriptor output(OpenTarget(target));
    if (archive_read_data_into_fd(handle.get(), output.Get()) != ARCHIVE_OK) {
      FailIso(image, handle.get());
    }
    return true;
  }
  return false;
}

}  // namespace

ImageKind KindOfImage(const std::string& image) {
  std::string head(HEAD_SIZE, '\0');
  std::ifstream file(image, std::ios::binary);
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(file.gcount()));
  if (HasMagic(head, 0, "hsqs")) {
    return ImageKind::Squashfs;
  }
  if (HasMagic(head, EXT_MAGIC_AT, "\x53\xef")) {
    return ImageKind::Ext;
  }
  if (HasMagic(head, ISO_MAGIC_AT, "CD001")) {
    return ImageKind::Iso;
  }
  return HasMagic(head, 0, "PK\x03\x04") ? ImageKind::Zip : ImageKind::Unknown;
}

bool CopyFromImage(const std::string& image, const std::string& name, const std::string& target) {
  switch (KindOfImage(image)) {
    case ImageKind::Squashfs:
      return CopyFromSquashfs(image, name, target);
    case ImageKind::Ext:
      return CopyFromExt(image, name, target);
    case ImageKind::Iso:
      return CopyFromIso(image, name, target);
    case ImageKind::Zip:
    case ImageKind::Unknown:
      break;
  }
  throw PackageError(image + " is not a file-system image");
}

}  // namespace desk
