// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "desk/common/paths.h"

namespace desk::tv {

/// The TV's private bus: a dbus-daemon of its own. Main thread only.
class BusDaemon {
 public:
  /// Starts the bus and writes its address to paths.Address(). Throws DeskError.
  explicit BusDaemon(const DeskPaths& paths);
  /// Stops the bus.
  ~BusDaemon();
  BusDaemon(const BusDaemon&) = delete;
  BusDaemon& operator=(const BusDaemon&) = delete;

  const std::string& Address() const { return m_address; }
  /// Path of the socket: paths.BusSocket(), or a path under /tmp when that one is too long.
  const std::string& Socket() const { return m_socket; }
  /// The address of a bus with that socket.
  static std::string AddressOf(const std::string& socket);

  /// Calls the function when the bus has ended by itself; the TV cannot continue without it.
  void OnDied(std::function<void(const std::string& why)> function);

  /// Removes the socket and the address that a killed TV left behind.
  static void RemoveLeftovers(const DeskPaths& paths);

 private:
  void WriteConfiguration(const std::string& path) const;
  void Start(const std::string& configuration);

  const DeskPaths m_paths;
  std::string m_socket;
  std::string m_address;
  pid_t m_pid = 0;
  unsigned m_watch = 0;  ///< set by OnDied; 0 for none
};

}  // namespace desk::tv
