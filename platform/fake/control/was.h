// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// The web-app service's table.
namespace fake {

struct WasApp {
  std::string package;
  std::string app;
  std::string widget;
  int kind = 2;
  int gone = 0;
};

/// Adds at the end; the same package and app twice are two entries. The list call gives all of them
/// in this order, the look-up by app id the first that has the id.
void AddWasApp(const WasApp& app);
/// Removes every entry of the package.
void RemoveWasPackage(const std::string& package);
void ClearWasApps();

}  // namespace fake
