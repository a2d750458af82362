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

/// Adds an entry at the end, also when there is one of the same package and app. The list has this
/// order; the look-up by app id returns the first match.
void AddWasApp(const WasApp& app);
/// Removes all entries of the package.
void RemoveWasPackage(const std::string& package);

}  // namespace fake
