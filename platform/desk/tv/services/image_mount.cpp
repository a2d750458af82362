// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/image_mount.h"

#include <fcntl.h>
#include <libmount/libmount.h>
#include <linux/capability.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>

#include "desk/common/gio_ptr.h"
#include "desk/common/spawn.h"

namespace desk::tv {
namespace {

constexpr int FAILED = 32;  // exit status of mount(8) for a failed mount
constexpr std::size_t EXT_MAGIC_AT = 1080;
constexpr const char* FUSE_DEVICE = "/dev/fuse";

struct ContextDeleter {
  void operator()(libmnt_context* context) const { mnt_free_context(context); }
};
using Context = std::unique_ptr<libmnt_context, ContextDeleter>;

// A context that does not change the machine's list of mounts and runs no helper program.
Context NewContext() {
  Context context(mnt_new_context());
  if (context != nullptr) {
    mnt_context_disable_mtab(context.get(), 1);
    mnt_context_disable_helpers(context.get(), 1);
  }
  return context;
}

std::string ReasonOf(libmnt_context* context, int result) {
  char text[512] = {};
  mnt_context_get_excode(context, result, text, sizeof text);
  if (text[0] != '\0') {
    return text;
  }
  const int error = mnt_context_get_syscall_errno(context);
  return error != 0 ? std::strerror(error) : std::strerror(result < 0 ? -result : EIO);
}

bool MayMount() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, 2> data{};
  return syscall(SYS_capget, &header, data.data()) == 0 &&
         (data[0].effective & (1U << CAP_SYS_ADMIN)) != 0;
}

// The first user namespace maps all users, each to itself.
bool InOwnUserNamespace() {
  std::ifstream file("/proc/self/uid_map");
  std::uint32_t inside = 0;
  std::uint32_t outside = 0;
  std::uint32_t count = 0;
  file >> inside >> outside >> count;
  return file && !(inside == 0 && outside == 0 && count == UINT32_MAX);
}

// A program that a user other than root starts in a user namespace has no capabilities, and
// fusermount3 cannot grant any there. So pass CAP_SYS_ADMIN on. Runs between fork and exec.
void PassOnMountRight(gpointer) {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, 2> data{};
  if (syscall(SYS_capget, &header, data.data()) == 0) {
    data[0].inheritable |= data[0].permitted & (1U << CAP_SYS_ADMIN);
    syscall(SYS_capset, &header, data.data());
    prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_RAISE, CAP_SYS_ADMIN, 0, 0);
  }
}

bool HasProgram(const char* name) {
  const TextPtr path(g_find_program_in_path(name));
  return path != nullptr;
}

std::string Why(const std::string& path) {
  return path + ": " + std::strerror(errno);
}

// The kernel knows which device is free, but a container may lack its node.
std::string WhyNoLoopDevice() {
  const std::string path = "/dev/loop-control";
  const Descriptor control(open(path.c_str(), O_RDWR | O_CLOEXEC));
  const int number = control.Get() < 0 ? -1 : ioctl(control.Get(), LOOP_CTL_GET_FREE);
  if (number < 0) {
    return Why(path);
  }
  const std::string device = "/dev/loop" + std::to_string(number);
  return Descriptor(open(device.c_str(), O_RDWR | O_CLOEXEC)).Get() < 0 ? Why(device) : "";
}

int RunProgram(const char* const* arguments, std::string& output) {
  gchar* text = nullptr;
  gint status = 0;
  GError* error = nullptr;
  if (g_spawn_sync(nullptr, const_cast<gchar**>(arguments), nullptr, G_SPAWN_SEARCH_PATH,
                   PassOnMountRight, nullptr, nullptr, &text, &status, &error) == 0) {
    const ErrorPtr owner(error);
    output = error->message;
    return FAILED;
  }
  output = text == nullptr ? "" : text;
  g_free(text);
  while (!output.empty() && output.back() == '\n') {
    output.pop_back();
  }
  for (char& c : output) {
    c = c == '\n' ? ' ' : c;
  }
  return status == 0 ? 0 : FAILED;
}

}  // namespace

std::string WhyNoLoop() {
  if (!MayMount()) {
    return "desk-tv may not mount (it runs without CAP_SYS_ADMIN)";
  }
  if (InOwnUserNamespace()) {
    return "desk-tv runs in a user namespace, where images cannot be loop-mounted";
  }
  return WhyNoLoopDevice();
}

int LoopMount(const MountCommand& command, std::string& reason) {
  const Context context = NewContext();
  if (context == nullptr || mnt_context_set_source(context.get(), command.image.c_str()) != 0 ||
      mnt_context_set_target(context.get(), command.directory.c_str()) != 0 ||
      mnt_context_set_options(context.get(), command.options.c_str()) != 0) {
    reason = std::strerror(ENOMEM);
    return FAILED;
  }
  const int result = mnt_context_mount(context.get());
  if (result == 0 && mnt_context_get_status(context.get()) == 1) {
    return 0;
  }
  reason = ReasonOf(context.get(), result);
  return result == -MNT_ERR_LOOPDEV ? NO_LOOP_DEVICE : FAILED;
}

std::string WhyNoFuse() {
  if (FuseDrivers().empty()) {
    return "no FUSE driver is installed: install squashfuse";
  }
  if (Descriptor(open(FUSE_DEVICE, O_RDWR | O_CLOEXEC)).Get() < 0) {
    return Why(FUSE_DEVICE) + ": load the kernel module fuse, or give the container this device";
  }
  if (!MayMount() && !HasProgram("fusermount3")) {
    return "fusermount3 is not installed: install fuse3";
  }
  return {};
}

std::string FuseDriverFor(const std::string& image, std::string& reason) {
  std::ifstream file(image, std::ios::binary);
  std::array<char, EXT_MAGIC_AT + 2> head{};
  file.read(head.data(), head.size());
  const char* driver = nullptr;
  if (std::memcmp(head.data(), "hsqs", 4) == 0) {
    driver = "squashfuse";
  } else if (std::memcmp(head.data() + EXT_MAGIC_AT, "\x53\xef", 2) == 0) {
    driver = "fuse2fs";
  }
  if (driver == nullptr) {
    reason = image + " contains no file system that a FUSE driver can mount (squashfs, ext)";
    return {};
  }
  if (!HasProgram(driver)) {
    reason = std::string("the FUSE driver ") + driver + " is not installed: install it";
    return {};
  }
  return driver;
}

std::string FuseDrivers() {
  std::string found;
  for (const char* driver : {"squashfuse", "fuse2fs"}) {
    if (HasProgram(driver)) {
      found += (found.empty() ? "" : ", ") + std::string(driver);
    }
  }
  return found;
}

int FuseMount(const std::string& driver, const MountCommand& command, std::string& reason) {
  std::string options = OptionsWithoutLoop(command.options);
  if (driver == "fuse2fs") {
    options += std::string(options.empty() ? "" : ",") + "ro,fakeroot";
  }
  const char* const plain[] = {driver.c_str(), command.image.c_str(), command.directory.c_str(),
                               nullptr};
  const char* const with[] = {
      driver.c_str(), "-o", options.c_str(), command.image.c_str(), command.directory.c_str(),
      nullptr};
  return RunProgram(options.empty() ? plain : with, reason);
}

int UnmountDirectory(const std::string& directory, std::string& reason) {
  if (umount2(directory.c_str(), UMOUNT_NOFOLLOW) == 0) {
    return 0;
  }
  const int error = errno;
  reason = std::strerror(error);
  if (error != EPERM) {
    return error;
  }
  const char* const arguments[] = {"fusermount3", "-u", directory.c_str(), nullptr};
  return RunProgram(arguments, reason);
}

}  // namespace desk::tv
