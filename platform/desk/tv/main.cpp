// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <glib-unix.h>
#include <sys/stat.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "desk/common/desk_error.h"
#include "desk/common/gio_ptr.h"
#include "desk/tv/bus_daemon.h"
#include "desk/tv/bus_router.h"
#include "desk/tv/callers.h"
#include "desk/tv/desk_directory.h"
#include "desk/tv/mount_namespace.h"
#include "desk/tv/options.h"
#include "desk/tv/television.h"
#include "desk/tv/tv_log.h"

namespace desk::tv {
namespace {

constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;

// Reports the result of the start once, to the process that started this one.
class Announcement {
 public:
  explicit Announcement(int fd) : m_fd(fd) {
    if (m_fd >= 0) {
      fcntl(m_fd, F_SETFD, FD_CLOEXEC);
    }
  }
  ~Announcement() { Say("failed: the TV was stopped while it started"); }
  Announcement(const Announcement&) = delete;
  Announcement& operator=(const Announcement&) = delete;

  void Say(const std::string& text) {
    if (m_fd < 0) {
      return;
    }
    const std::string line = text + "\n";
    [[maybe_unused]] const ssize_t written = write(m_fd, line.data(), line.size());
    close(m_fd);
    m_fd = -1;
  }

 private:
  int m_fd;
};

// Feeds the watchdog of the service manager, if there is one.
void FeedServiceManager() {
  std::uint64_t microseconds = 0;
  if (sd_watchdog_enabled(0, &microseconds) <= 0) {
    return;
  }
  g_timeout_add(
      static_cast<guint>(microseconds / 2000),
      [](gpointer) -> gboolean {
        sd_notify(0, "WATCHDOG=1");
        return G_SOURCE_CONTINUE;
      },
      nullptr);
}

void LogWarning(const gchar*, GLogLevelFlags, const gchar* message, gpointer log) {
  static_cast<TvLog*>(log)->Say(message == nullptr ? "" : message);
}

gboolean OnSignal(gpointer television) {
  static_cast<Television*>(television)->GoDown([] {});
  return G_SOURCE_CONTINUE;
}

// Runs the TV until it is switched off. False when it did not start.
bool Live(const TvOptions& options, TvLog& log, const std::string& mounts,
          Announcement& announcement) {
  const MainLoopPtr loop(g_main_loop_new(nullptr, FALSE));
  CallerTable callers;
  BusDaemon bus(options.paths);
  BusRouter router(bus.Address(), callers);
  Television television({options, router, callers, log, mounts, bus.Address(), bus.Socket(),
                         [&loop] { g_main_loop_quit(loop.get()); }});
  bool up = false;
  bus.OnDied([&log, &loop](const std::string& why) {
    log.Say("the private bus ended (" + why + "): the TV cannot continue and ends");
    g_main_loop_quit(loop.get());
  });
  g_unix_signal_add(SIGTERM, OnSignal, &television);
  g_unix_signal_add(SIGINT, OnSignal, &television);
  g_unix_signal_add(SIGHUP, OnSignal, &television);
  FeedServiceManager();
  television.TurnOn([&](const std::string& failure) {
    up = failure.empty();
    if (up) {
      announcement.Say("ready");
      sd_notify(0, "READY=1");
      return;
    }
    std::fprintf(stderr, "desk-tv: %s\n", failure.c_str());
    announcement.Say("failed: " + failure);
    television.GoDown([] {});
  });
  g_main_loop_run(loop.get());
  sd_notify(0, "STOPPING=1");
  router.Flush();
  return up;
}

// Leaves the directory that the TV was started in, so that it does not keep a file system busy.
void LeaveDirectory() {
  if (const char* daemon = std::getenv("ORV_ENABLER")) {
    setenv("ORV_ENABLER", std::filesystem::absolute(daemon).c_str(), 1);
  }
  if (chdir("/") != 0) {
    throw DeskError(DeskError::FAILED, std::string("cannot enter /: ") + std::strerror(errno));
  }
}

int Run(const TvOptions& options, Announcement& announcement) {
  umask(022);
  signal(SIGPIPE, SIG_IGN);
  for (const char* name : {"TV_APP_ID", "TV_OPERATION", "TV_DATA"}) {
    unsetenv(name);
  }
  DeskDirectory directory(options.paths);
  TvLog log(options.log);
  g_log_set_default_handler(LogWarning, &log);
  directory.ClearLeftovers(log);
  ProgramDirectory();  // remembered now; it cannot be read in the mount namespace
  const std::string mounts = EnterMountNamespace(options.paths);
  LeaveDirectory();
  log.Say("starting a TV in " + options.paths.Root() + "; mount namespace: " + mounts);
  const bool good = Live(options, log, mounts, announcement);
  log.Say("off");
  return good ? EXIT_SUCCESS : EXIT_FAILED;
}

int Main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    std::fputs(TvOptions::HelpText(), stdout);
    return EXIT_SUCCESS;
  }
  TvOptions options;
  try {
    options = TvOptions::Parse(argc, argv);
  } catch (const DeskError& e) {
    std::fprintf(stderr, "desk-tv: %s\n", e.what());
    return EXIT_USAGE;
  }
  Announcement announcement(options.readyFd);
  try {
    return Run(options, announcement);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "desk-tv: %s\n", e.what());
    announcement.Say(std::string("failed: ") + e.what());
    return EXIT_FAILED;
  }
}

}  // namespace
}  // namespace desk::tv

int main(int argc, char** argv) {
  return desk::tv::Main(argc, argv);
}
