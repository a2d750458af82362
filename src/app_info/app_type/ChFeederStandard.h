// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include "app_info/app_type/AppTypeDecorator.h"

/// Where a data URL points to.
enum MetadataProtocol {
  METADATA_PROTOCOL_INVALID = 0,  ///< no colon, or a scheme that is not listed
  METADATA_PROTOCOL_HTTP = 1,     ///< "http" or "https"
  METADATA_PROTOCOL_FILE = 2,     ///< "file": a file that ships in the package
};

/// The layer of an app that feeds virtual channels: installs what the package brings along, points
/// its file URLs at the installed files and hands the record to the channel framework.
///
/// No failure reaches the caller, but for std::out_of_range out of RunOperation() and
/// UpdateOperation() when one URL is a file URL and the other has fewer than six characters. An
/// update never moves the applied side forward: it keeps what the object was born with.
class ChFeederStandard final : public AppTypeDecorator {
 public:
  /// Takes ownership of pAppInfo.
  static AppInfo* DecorateAppType(AppInfo* pAppInfo, const std::string& rMetadataValue);
  /// Asks the framework to remove the record, removes the packaged data and frees the object with
  /// all that it wraps. Throws nothing.
  static void Release(AppInfo* pAppInfo);

  void RunOperation(bool bStarted) override;
  void UpdateOperation() override;
  /// Leaves the packaged data in place.
  void StopOperation() override;
  ReleaseFunction GetReleaseFunction() const override;

  /// Case matters.
  static MetadataProtocol ParseInputMetaDataProtocol(const std::string& sInputMetaDataURL);
  /// The PackagedDataType bits of the staged side or of the side in force.
  int GetPackagedDataType(bool bUpdatable);
  /// Puts the directory of the installed metadata into both URLs, whatever their protocols. Once
  /// more does it once more.
  void SetMetaDataDataList(bool bUpdatable);

  /// One record each to the channel framework, on the calling thread. True when the framework took
  /// it. A record that it did not take is not kept for later.
  bool AddChannelUsingKelvoApi();
  bool UpdateChannelUsingKelvoApi();
  bool RemoveChannelUsingKelvoApi();

 private:
  using DataMap = std::map<std::string, std::string>;

  ChFeederStandard(AppInfo* pAppInfo, const std::string& rMetadataValue);
  ~ChFeederStandard() = default;

  void CleanUp();
  /// The text of a record with the URLs of rData.
  std::string GetChannelRecord(DataMap& rData) const;
};
