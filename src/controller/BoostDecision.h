// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// The boost decision: whether the current channel belongs to an app that asks for an early start
/// (metadata "ch.app.boosting"), and the two files that tell the rest of the system. The boost flag
/// exists while the current channel boosts; the ready file exists once the first screen may start.
///
/// Any thread may call. The functions that change a file throw what the file library throws.
namespace BoostDecision {

/// Whether the app of the service asks for an early start; false when a lookup fails.
bool IsBoostingApp(std::uint64_t serviceID);
/// The same for the current service of a TV that booted on a virtual channel.
bool IsBoostingAppOnCurrentCh();

/// Whether the boost flag exists.
bool HasBoostFlag();
/// Removes the boost flag, if there is one.
void RemoveBoostFlag();
/// Makes the boost flag follow a tune. pSignalData is the data of the tune signal; null counts as a
/// service that does not boost.
void OnTune(const void* pSignalData);

/// The decision after the start. bBoostFile: the flag existed before; bBoostChApp: the current
/// channel boosts now. False when the HbbTV side decides later about the first screen; true when
/// the question is closed.
bool DecideFirstScreen(bool bBoostFile, bool bBoostChApp);
/// Creates the ready file and launches the first-screen app. A refused launch is not reported.
void StartFirstScreen();

}  // namespace BoostDecision
