// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "app_info/AppInfo.h"

/// Deleter of PinnedAppInfo: ends the pin and leaves the record alone.
struct UnpinAppInfo {
  void operator()(AppInfo* pAppInfo) const;
};
/// A record that is not destroyed while this object lives, see AppInfoCache::WaitUntilUnpinned().
/// Created and destroyed on the same thread. Null when there is no such record.
using PinnedAppInfo = std::unique_ptr<AppInfo, UnpinAppInfo>;
