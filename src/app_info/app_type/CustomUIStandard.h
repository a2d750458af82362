// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include "app_info/app_type/AppTypeLayer.h"

/// The layer of an app that replaces the TV's banners: announces the app in the member
/// "CustomBanner" of the settings key and preloads it. It registers no status callback. A release
/// leaves the settings key as it is.
///
/// Run, Update and Stop throw std::logic_error when the settings key does not exist.
class CustomUIStandard final : public AppTypeLayer<CustomUIStandard> {
 public:
  enum BannerType { BANNER_TYPE_INFO = 0, BANNER_TYPE_CHANNEL = 1 };

  /// With bStarted the key keeps the text of the earlier run.
  void RunOperation(bool bStarted) override;
  /// Acts only when the list of known banners or the cold-boot option changed.
  void UpdateOperation() override;
  /// Empties the announcement; the preloading goes on.
  void StopOperation() override;

  /// Appends the banners that the comma-separated text names, in its order, repeats included.
  static void GetEnabledBannerTypes(const std::string& rMetadataValue,
                                    std::vector<BannerType>& rTypes);
  /// True when the key was written. See CustomUIAnnouncement::WriteAppInfoVconfKey().
  bool WriteAppInfoVconfKey(bool bClear);

 private:
  friend class AppTypeLayer<CustomUIStandard>;

  static const std::map<std::string, BannerType> s_mapBannerTypes;

  CustomUIStandard(AppInfo* pAppInfo, const std::string& rMetadataValue);
  ~CustomUIStandard() = default;

  bool IsUpdateNeeded();
  bool IsOptionChanged();
  void Preload();
};
