// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The work that looks at all records at once. The first three are events of the installer task and
/// are called on its thread. A missing record is passed over.
namespace AllRecords {

/// Compares the records with the web-app service: stops the apps that it marks as gone, then
/// removes those and the ones that it does not list.
void RunValidationTesting();
/// Preloads the web apps of custom user interfaces. Results are ignored.
void PreloadWebApps();
/// Runs every record, the custom feeders first and once more among all.
void RunCustomFeeders();
/// The reset of all apps: every record runs, twice, and is then removed. Main-loop thread. Waits
/// for an operation that another thread runs on the same record.
void RunAndRemove();

}  // namespace AllRecords
