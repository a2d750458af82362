// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "common/SingleInstance.h"

/// The operation of a record to run. Any other number counts as a run.
enum OperationType : int {
  OPERATION_TYPE_RUN = 0,
  OPERATION_TYPE_UPDATE = 1,
  OPERATION_TYPE_STOP = 2
};

/// Runs the operations of records. It has no state, and any thread may call: a RecordGuard is held
/// during each operation, so a record has one operation at a time and is not destroyed meanwhile.
/// An exception of an operation is an error line and goes no further.
class ORVAppOperator {
 public:
  /// See SingleInstance.
  static ORVAppOperator* GetInstance();

  /// A package without a record is a log line. A run of a record whose widget id is still unknown
  /// is put off, see WidgetIDWait.
  void DoOperation(const std::string& rPackageID, OperationType eType);
  /// Appends every package id of the cache to the list and runs the list in order, without waiting
  /// for widget ids.
  void RunAllApps(std::vector<std::string>& rPackageIDs);
  /// Every record runs twice, one whole pass after the other.
  void RunInstalledApps();
  /// Stops the apps that the web-app service marks as gone.
  void RunValidationTesting();

 private:
  friend class SingleInstance<ORVAppOperator>;

  ORVAppOperator() = default;
};
