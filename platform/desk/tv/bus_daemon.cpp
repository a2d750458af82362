// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/bus_daemon.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "desk/common/desk_error.h"
#include "desk/common/gio_ptr.h"
#include "desk/tv/process.h"

namespace desk::tv {
namespace {

namespace fs = std::filesystem;

// sockaddr_un has 108 bytes for the path, of which libraries reserve some.
constexpr std::size_t LONGEST_SOCKET = 100;
constexpr const char* SHORT_DIRECTORY = "/tmp/tv-desk-bus-";

constexpr const char* CONFIGURATION_HEAD =
    "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
    " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
    "<busconfig>\n"
    "  <type>tv-desk</type>\n"
    "  <auth>EXTERNAL</auth>\n"
    "  <apparmor mode=\"disabled\"/>\n";

// The bus belongs to one user. Its limits are so high that no connection reaches them.
constexpr const char* CONFIGURATION_TAIL =
    "  <policy context=\"default\">\n"
    "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
    "    <allow eavesdrop=\"true\"/>\n"
    "    <allow own=\"*\"/>\n"
    "  </policy>\n"
    "  <limit name=\"max_incoming_bytes\">1000000000</limit>\n"
    "  <limit name=\"max_outgoing_bytes\">1000000000</limit>\n"
    "  <limit name=\"max_message_size\">134217728</limit>\n"
    "  <limit name=\"auth_timeout\">240000</limit>\n"
    "  <limit name=\"max_completed_connections\">100000</limit>\n"
    "  <limit name=\"max_incomplete_connections\">10000</limit>\n"
    "  <limit name=\"max_connections_per_user\">100000</limit>\n"
    "  <limit name=\"max_names_per_connection\">50000</limit>\n"
    "  <limit name=\"max_match_rules_per_connection\">50000</limit>\n"
    "  <limit name=\"max_replies_per_connection\">50000</limit>\n"
    "</busconfig>\n";

std::string ChooseSocket(const DeskPaths& paths) {
  if (paths.BusSocket().size() <= LONGEST_SOCKET) {
    return paths.BusSocket();
  }
  std::string directory = std::string(SHORT_DIRECTORY) + "XXXXXX";
  if (mkdtemp(directory.data()) == nullptr) {
    throw DeskError(DeskError::FAILED, "cannot create a directory for the bus's socket in /tmp: " +
                                           std::string(std::strerror(errno)));
  }
  return directory + "/bus";
}

std::string EscapeXml(const std::string& text) {
  const TextPtr escaped(g_markup_escape_text(text.c_str(), static_cast<gssize>(text.size())));
  return escaped.get();
}

bool IsShortSocket(const std::string& socket) {
  return socket.compare(0, std::strlen(SHORT_DIRECTORY), SHORT_DIRECTORY) == 0;
}

void RemoveSocket(const std::string& socket) {
  std::error_code ignored;
  fs::remove(socket, ignored);
  if (IsShortSocket(socket)) {
    fs::remove(fs::path(socket).parent_path(), ignored);
  }
}

}  // namespace

BusDaemon::BusDaemon(const DeskPaths& paths)
    : m_paths(paths), m_socket(ChooseSocket(paths)), m_address(AddressOf(m_socket)) {
  const std::string configuration = paths.Run() + "/bus.conf";
  WriteConfiguration(configuration);
  Start(configuration);
  std::ofstream file(paths.Address(), std::ios::trunc);
  file << m_address << '\n';
  if (!file.flush()) {
    throw DeskError(DeskError::FAILED, "cannot write " + paths.Address());
  }
}

BusDaemon::~BusDaemon() {
  if (m_watch != 0) {
    UnwatchProcess(m_watch);
  }
  if (m_pid > 0) {
    kill(m_pid, SIGTERM);
    waitpid(m_pid, nullptr, 0);
  }
  RemoveSocket(m_socket);
}

std::string BusDaemon::AddressOf(const std::string& socket) {
  const TextPtr escaped(g_dbus_address_escape_value(socket.c_str()));
  return std::string("unix:path=") + escaped.get();
}

void BusDaemon::WriteConfiguration(const std::string& path) const {
  std::ofstream file(path, std::ios::trunc);
  file << CONFIGURATION_HEAD << "  <listen>" << EscapeXml(m_address) << "</listen>\n"
       << CONFIGURATION_TAIL;
  if (!file.flush()) {
    throw DeskError(DeskError::FAILED, "cannot write " + path);
  }
}

void BusDaemon::Start(const std::string& configuration) {
  if (getpwuid(geteuid()) == nullptr) {
    throw DeskError(DeskError::FAILED, "the private bus cannot run as user " +
                                           std::to_string(geteuid()) +
                                           ", who is not in the user database: run it as another "
                                           "user");
  }
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw DeskError(DeskError::FAILED,
                    "cannot start the bus: " + std::string(std::strerror(errno)));
  }
  ProcessSpec spec;
  spec.arguments = {"dbus-daemon", "--nofork", "--nopidfile", "--config-file=" + configuration,
                    "--print-address=" + std::to_string(ends[1])};
  spec.keep = {ends[1]};
  spec.output = m_paths.Log() + "/bus.log";
  try {
    m_pid = StartProcess(spec);
  } catch (const DeskError&) {
    close(ends[0]);
    close(ends[1]);
    throw;
  }
  close(ends[1]);
  // It writes its address when it listens, and closes the pipe without writing when it fails.
  char byte = 0;
  const bool listens = read(ends[0], &byte, 1) == 1;
  close(ends[0]);
  if (!listens) {
    int status = 0;
    waitpid(m_pid, &status, 0);
    throw DeskError(DeskError::FAILED, "the private bus did not start (" + DescribeStatus(status) +
                                           "): see " + spec.output);
  }
}

void BusDaemon::OnDied(std::function<void(const std::string& why)> function) {
  m_watch = WatchProcess(m_pid, [this, function = std::move(function)](int status) {
    m_pid = 0;
    m_watch = 0;
    function(DescribeStatus(status));
  });
}

void BusDaemon::RemoveLeftovers(const DeskPaths& paths) {
  std::ifstream file(paths.Address());
  std::string address;
  const std::string prefix = "unix:path=";
  if (std::getline(file, address) && address.compare(0, prefix.size(), prefix) == 0) {
    RemoveSocket(address.substr(prefix.size()));
  }
  std::error_code ignored;
  fs::remove(paths.Address(), ignored);
  fs::remove(paths.BusSocket(), ignored);
}

}  // namespace desk::tv
