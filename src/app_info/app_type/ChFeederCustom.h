// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "app_info/app_type/AppTypeDecorator.h"

/// The layer of a service app that feeds channels by itself: enters the app into the scheduler's
/// list and installs its packaged HbbTV part. The channel framework never hears of it.
///
/// Nothing is reported to the caller. An update never moves the applied value forward, so later
/// updates go on comparing with the value that the object was born with.
class ChFeederCustom final : public AppTypeDecorator {
 public:
  /// Takes ownership of pAppInfo. pfnRequestEvent may be null: the scheduler is not told then. It
  /// is called on the thread of the operation, with the package id as a C string that is valid
  /// during the call.
  static AppInfo* DecorateAppType(AppInfo* pAppInfo, const std::string& rMetadataValue,
                                  RequestEventCallback pfnRequestEvent);
  /// Tells the scheduler, removes the packaged data and frees the object with all that it wraps.
  /// Throws nothing.
  static void Release(AppInfo* pAppInfo);

  void RunOperation(bool bStarted) override;
  void UpdateOperation() override;
  /// Leaves the packaged data in place.
  void StopOperation() override;
  ReleaseFunction GetReleaseFunction() const override;

 private:
  ChFeederCustom(AppInfo* pAppInfo, const std::string& rMetadataValue,
                 RequestEventCallback pfnRequestEvent);
  ~ChFeederCustom() = default;

  void CleanUp();
  void RequestEvent(int eType);

  const RequestEventCallback m_pfnRequestEvent;
};
