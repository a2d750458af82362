// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

/// Event types of the installer task. The signals keep the numbers that their senders use.
enum InstallerEvent : int {
  SIGNAL_TVS_ACTIVATE = 75,
  EVENT_PACKAGE_INSTALLED = 1000,
  EVENT_PACKAGE_UPDATED = 1001,
  EVENT_PACKAGE_UNINSTALLED = 1002,
  RUN_VALIDATION_TESTING = 1003,
  EVENT_TVS_TIME_TIMER = 1004,
  VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE = 90014
};

/// Its data begins with the id of the service, 64 bits.
inline constexpr int SIGNAL_TUNE_TO_SERVICEID = 103;

/// What a signal of the TV service means to the daemon.
enum class TvSignalKind {
  ACTIVATE,     ///< becomes an event of the same number
  TUNE,         ///< the new channel may belong to a boosting app
  NOT_BOOSTING  ///< the channel does not boost any more
};

struct TvSignal {
  int number;
  TvSignalKind kind;
};

/// The signals of the TV service that the daemon handles, in the order of the subscriptions.
inline constexpr std::array<TvSignal, 6> TV_SIGNALS = {{
    {SIGNAL_TVS_ACTIVATE, TvSignalKind::ACTIVATE},
    {135, TvSignalKind::NOT_BOOSTING},
    {SIGNAL_TUNE_TO_SERVICEID, TvSignalKind::TUNE},
    {170, TvSignalKind::NOT_BOOSTING},
    {25, TvSignalKind::NOT_BOOSTING},
    {2560, TvSignalKind::NOT_BOOSTING},
}};
