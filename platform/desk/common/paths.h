// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace desk {

/// The paths of one desk. Constant after construction; creates nothing on the disk.
class DeskPaths {
 public:
  /// Makes root absolute; it need not exist.
  explicit DeskPaths(const std::string& root);

  /// The desk that a program uses: option if it is not empty, else $TV_ROOT, else
  /// $XDG_STATE_HOME/tv-desk, else ~/.local/state/tv-desk.
  static DeskPaths Select(const std::string& option);

  const std::string& Root() const { return m_root; }

  /// States that the directory is a desk, and the version of its layout.
  std::string Mark() const { return m_root + "/.tv-desk"; }

  std::string Apps() const { return m_root + "/opt/usr/apps"; }
  std::string Package(const std::string& id) const { return Apps() + "/" + id; }
  std::string DaemonPackage() const { return Package(DAEMON_ID); }
  std::string DaemonData() const { return DaemonPackage() + "/data"; }
  std::string DaemonSharedData() const { return DaemonPackage() + "/shared/data"; }
  std::string OptShare() const { return m_root + "/opt/share"; }
  std::string HomeOwner() const { return m_root + "/home/owner"; }
  std::string Tmp() const { return m_root + "/tmp"; }

  std::string Run() const { return m_root + "/run"; }
  std::string Address() const { return Run() + "/address"; }
  std::string BusSocket() const { return Run() + "/bus"; }
  std::string PidFile() const { return Run() + "/desk-tv.pid"; }
  std::string Faults() const { return Run() + "/faults"; }

  std::string Log() const { return m_root + "/log"; }
  std::string DaemonLog() const { return Log() + "/daemon.log"; }
  std::string Journal() const { return Log() + "/journal.jsonl"; }
  std::string TvLog() const { return Log() + "/desk-tv.log"; }

  std::string Db() const { return m_root + "/db"; }
  std::string KeysDb() const { return Db() + "/keys.sqlite"; }
  std::string PackagesDb() const { return Db() + "/packages.sqlite"; }
  std::string ClockState() const { return Db() + "/clock.json"; }
  std::string TvState() const { return Db() + "/tv.json"; }

  /// Package and app id of the daemon itself.
  static constexpr const char* DAEMON_ID = "com.kalmora.tv.orv-enabler";
  /// The path of Run() in the sandbox of the daemon.
  static constexpr const char* SANDBOX_RUN = "/run/tv-desk";

 private:
  std::string m_root;
};

/// The directory of the running program, without a closing slash, as it was at the first call: a
/// process in a chroot that then changes its mount namespace cannot find it any more. Throws
/// DeskError (Failed).
std::string ProgramDirectory();

}  // namespace desk
