// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/daemon_launcher.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "desk/common/desk_error.h"
#include "desk/common/line_log.h"
#include "desk/tv/bus_daemon.h"
#include "desk/tv/process.h"
#include "desk/tv/sandbox.h"

namespace desk::tv {
namespace {

constexpr const char* CLOCK_LIBRARY = "libdesk_clock.so";

std::string ChooseProgram(const std::string& tools) {
  const char* given = std::getenv("ORV_ENABLER");
  std::string program = given != nullptr ? std::filesystem::absolute(given).lexically_normal()
                                         : std::filesystem::path(tools + "/orv-enabler");
  if (access(program.c_str(), X_OK) != 0) {
    throw DeskError(DeskError::NOT_FOUND, "cannot run the daemon " + program + ": " +
                                              std::strerror(errno) +
                                              "; build it, or name its program in ORV_ENABLER");
  }
  return program;
}

// The sandbox lets the daemon write to these files, but not create any in their directory.
void MakeLogs(const DeskPaths& paths) {
  for (const std::string& path : {paths.DaemonLog(), paths.Journal()}) {
    const LineLog made(path);
  }
}

std::string OutputOf(const DeskPaths& paths) {
  return paths.Log() + "/daemon-output.log";
}

}  // namespace

DaemonLauncher::DaemonLauncher(const TvOptions& options, const std::string& busSocket)
    : m_options(options),
      m_socket(busSocket),
      m_tools(ProgramDirectory()),
      m_program(ChooseProgram(m_tools)),
      m_clock(options.paths.ClockState(), options.speed, options.resetClock) {
  if (options.sandbox && FindProgram("bwrap").empty()) {
    throw DeskError(DeskError::NOT_FOUND,
                    "the daemon's sandbox needs bubblewrap, which is not installed: install it, or "
                    "run the daemon without a sandbox with `tv up --no-sandbox`");
  }
  if (m_clock.Differs() && access((m_tools + "/" + CLOCK_LIBRARY).c_str(), R_OK) != 0) {
    throw DeskError(DeskError::NOT_FOUND, "the TV's clock needs " + m_tools + "/" + CLOCK_LIBRARY +
                                              ", which does not exist: build it");
  }
}

DaemonProcess DaemonLauncher::Launch() const {
  return m_options.sandbox ? LaunchInSandbox() : LaunchBare();
}

std::vector<std::string> DaemonLauncher::Environment(const std::string& root,
                                                     const std::string& log,
                                                     const std::string& prefix,
                                                     const std::string& socket,
                                                     const std::string& tools) const {
  std::vector<std::string> environment = {
      "TV_ROOT=" + root,
      "TV_BUS=" + BusDaemon::AddressOf(socket),
      "TV_PREFIX=" + prefix,
      "TV_ROLE=daemon",
      "TV_FAULTS=" + (m_options.sandbox ? root : m_options.paths.Run()) + "/faults",
      "TV_LOG=" + log + "/daemon.log",
      "TV_JOURNAL=" + log + "/journal.jsonl",
  };
  if (m_clock.Differs()) {
    environment.push_back("LD_PRELOAD=" + tools + "/" + CLOCK_LIBRARY);
    environment.push_back("DESK_CLOCK_SPEED=" + std::to_string(m_options.speed));
    environment.push_back("DESK_CLOCK_SINCE=" + std::to_string(m_clock.Since().count()));
    environment.push_back("DESK_CLOCK_BASE=" + std::to_string(m_clock.Base().count()));
    // The address sanitizer refuses a library that is loaded before its own.
    const char* options = std::getenv("ASAN_OPTIONS");
    environment.push_back("ASAN_OPTIONS=verify_asan_link_order=0" +
                          (options == nullptr ? std::string() : std::string(":") + options));
  }
  return environment;
}

DaemonProcess DaemonLauncher::LaunchInSandbox() const {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw DeskError(DeskError::FAILED,
                    std::string("cannot start the daemon: ") + std::strerror(errno));
  }
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  MakeLogs(m_options.paths);
  const std::string run = DeskPaths::SANDBOX_RUN;
  SandboxPlan plan;
  plan.paths = m_options.paths;
  plan.program = m_program;
  plan.tools = m_tools;
  plan.socket = m_socket;
  plan.infoFd = ends[1];
  plan.root = ListHost("/");
  plan.opt = ListHost("/opt");
  plan.home = ListHost("/home");
  plan.environment = Environment(run, run + "/log", "", SandboxSocket(plan), SANDBOX_TOOLS);
  ProcessSpec spec;
  spec.arguments = SandboxArguments(plan);
  spec.keep = {ends[1]};
  spec.output = OutputOf(m_options.paths);
  DaemonProcess process;
  process.sandboxed = true;
  process.infoFd = ends[0];
  process.output = spec.output;
  try {
    process.pid = StartProcess(spec);
  } catch (const DeskError&) {
    close(ends[0]);
    close(ends[1]);
    throw;
  }
  close(ends[1]);
  return process;
}

DaemonProcess DaemonLauncher::LaunchBare() const {
  const DeskPaths& paths = m_options.paths;
  ProcessSpec spec;
  spec.arguments = {m_program};
  spec.environment = Environment(paths.Root(), paths.Log(), paths.Root(), m_socket, m_tools);
  spec.output = OutputOf(paths);
  spec.directory = "/";
  DaemonProcess process;
  process.output = spec.output;
  process.pid = StartProcess(spec);
  return process;
}

}  // namespace desk::tv
