// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vconf.h>

#include <string>
#include <vector>

/// Which operation of a record is asked for. Any other number counts as a run.
enum OperationType : int {
  OPERATION_TYPE_RUN = 0,
  OPERATION_TYPE_UPDATE = 1,
  OPERATION_TYPE_STOP = 2
};

/// Runs the operations of records. It has no state: any thread may call, and the records are used
/// unlocked. The operations' own failures are not seen here.
class ORVAppOperator {
 public:
  /// Created on the first call, without a lock, and never destroyed.
  static ORVAppOperator* GetInstance();

  /// A package without a record is a log line. A run of a record whose widget id is not known yet
  /// is put off until the web-app service tells one; only one record can wait, and a later one
  /// takes its place.
  void DoOperation(const std::string& rPackageID, OperationType eType);
  /// Appends every package id of the cache to the list and runs the list in order, without waiting
  /// for widget ids. A record that throws is logged and does not keep the others from running.
  void RunAllApps(std::vector<std::string>& rPackageIDs);
  /// Every record runs twice, one whole pass after the other.
  void RunInstalledApps();
  /// Stops the apps that the web-app service holds as gone. A record that throws is logged and does
  /// not keep the others from their stop.
  void RunValidationTesting();

 private:
  ORVAppOperator() = default;
};

/// Main-loop thread. user_data is the AppInfo that waits for its widget id. No exception leaves it.
void AppInstalledCallback(keynode_t* keynode, void* user_data);
