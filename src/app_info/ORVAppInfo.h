// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app_info/AppInfo.h"

/// The innermost object of a chain: holds the identity and does nothing.
class ORVAppInfo final : public AppInfo {
 public:
  explicit ORVAppInfo(const AppBaseInfo& rInfo);

  /// Destroys and frees a plain record. Accepts null.
  static void Release(AppInfo* pAppInfo);

  void SetMetadata(const std::string& rType, const std::pair<std::string, std::string>& rKeyValue,
                   bool bUpdatable) override;
  std::string GetMetadata(const std::string& rType, const std::string& rKey) const override;
  void GetAllMetadata(MetadataMap& rMetadata) const override;
  void RemoveMetadata(const std::string& rFirst, const std::string& rSecond) override;
  /// Always null: no layer of the chain has the type.
  AppInfo* ExtractTargetAppType(const std::string& rTargetType, AppInfo** ppNext) override;
  const std::string& GetAppType() const override;
  ReleaseFunction GetReleaseFunction() const override;

 private:
  ~ORVAppInfo() = default;
};
