// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "app_info/app_type/AppTypeLayer.h"

/// The layer of a service app that feeds channels by itself: enters the app into the scheduler's
/// list and installs its packaged HbbTV part. It never calls the channel framework.
///
/// Failures are logged and not reported to the caller. An update leaves the value in force as it
/// is, so later updates compare with the value that the layer was created with.
class ChFeederCustom final : public AppTypeLayer<ChFeederCustom> {
 public:
  void RunOperation(bool bStarted) override;
  void UpdateOperation() override;
  /// Leaves the packaged data in place.
  void StopOperation() override;

 private:
  friend class AppTypeLayer<ChFeederCustom>;

  /// pfnRequestEvent may be null: the scheduler is not called then. It is called on the thread of
  /// the operation, with the package id as a C string that is valid during the call.
  ChFeederCustom(AppInfo* pAppInfo, const std::string& rMetadataValue,
                 RequestEventCallback pfnRequestEvent);
  ~ChFeederCustom() = default;

  /// Takes the app off the scheduler's list and removes its packaged data.
  void CleanUp();
  void RequestEvent(int eType);

  const RequestEventCallback m_pfnRequestEvent;
};
