// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "common/paths.h"

namespace desk::tv {

/// The TV's private bus: one dbus-daemon that nobody else knows of. Main thread only.
class BusDaemon {
 public:
  /// Starts it and writes its address. Throws DeskError.
  explicit BusDaemon(const DeskPaths& paths);
  /// Ends it.
  ~BusDaemon();
  BusDaemon(const BusDaemon&) = delete;
  BusDaemon& operator=(const BusDaemon&) = delete;

  const std::string& Address() const { return m_address; }
  /// Path of the socket: paths.BusSocket(), or elsewhere when that is too long for a socket.
  const std::string& Socket() const { return m_socket; }
  /// The address of a bus whose socket is there.
  static std::string AddressOf(const std::string& socket);

  /// Calls the function when the bus has ended unasked: the TV cannot go on without it.
  void OnDied(std::function<void(const std::string& why)> function);

  /// The socket of a TV that was killed.
  static void RemoveLeftovers(const DeskPaths& paths);

 private:
  void WriteConfiguration(const std::string& path) const;
  void Start(const std::string& configuration);

  const DeskPaths m_paths;
  std::string m_socket;
  std::string m_address;
  pid_t m_pid = 0;
  unsigned m_watch = 0;  ///< of OnDied; 0 without
};

}  // namespace desk::tv
