// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include "app_info/app_type/AppTypeDecorator.h"

/// The layer of an app that replaces the TV's banners: announces the app in the member
/// "CustomBanner" of the settings key and preloads it. It wants to hear nothing of the app's state.
///
/// Run, Update and Stop throw std::logic_error when the settings key does not exist.
class CustomUIStandard final : public AppTypeDecorator {
 public:
  enum BannerType { BANNER_TYPE_INFO = 0, BANNER_TYPE_CHANNEL = 1 };

  /// Takes ownership of pAppInfo.
  static AppInfo* DecorateAppType(AppInfo* pAppInfo, const std::string& rMetadataValue);
  /// Frees the object with all that it wraps; the settings key stays as it is.
  static void Release(AppInfo* pAppInfo);

  /// With bStarted the key keeps the text of the earlier run.
  void RunOperation(bool bStarted) override;
  /// Works only when the list of known banners or the cold-boot option changed.
  void UpdateOperation() override;
  /// Empties the announcement; the preloading goes on.
  void StopOperation() override;
  ReleaseFunction GetReleaseFunction() const override;

  /// Appends the banners that the comma-separated text names, in its order, repeats included.
  static void GetEnabledBannerTypes(const std::string& rMetadataValue,
                                    std::vector<BannerType>& rTypes);
  /// True when the key was written. See CustomUITypes::WriteAppInfoVconfKey().
  bool WriteAppInfoVconfKey(bool bClear);

 private:
  static const std::map<std::string, BannerType> s_mapBannerTypes;

  CustomUIStandard(AppInfo* pAppInfo, const std::string& rMetadataValue);
  ~CustomUIStandard() = default;

  bool IsUpdateNeeded();
  void Preload();
};
