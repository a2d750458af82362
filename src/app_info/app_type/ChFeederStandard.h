// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "app_info/app_type/AppTypeLayer.h"

/// The protocol of a data URL.
enum MetadataProtocol {
  METADATA_PROTOCOL_INVALID = 0,  ///< no colon, or a scheme that is not listed
  METADATA_PROTOCOL_HTTP = 1,     ///< "http" or "https"
  METADATA_PROTOCOL_FILE = 2,     ///< "file": a file in the package
};

/// The layer of an app that feeds virtual channels: installs the packaged data, points the file
/// URLs at the installed files and passes the record to the channel framework.
///
/// Failures are logged and not reported to the caller, except std::out_of_range from RunOperation()
/// and UpdateOperation() when one URL is a file URL and the other has fewer than six characters. An
/// update leaves the values in force as they are.
class ChFeederStandard final : public AppTypeLayer<ChFeederStandard> {
 public:
  void RunOperation(bool bStarted) override;
  void UpdateOperation() override;
  /// Leaves the packaged data in place.
  void StopOperation() override;

  /// Case-sensitive.
  static MetadataProtocol ParseInputMetaDataProtocol(const std::string& sInputMetaDataURL);
  /// The PackagedDataType bits of the staged side or of the side in force.
  int GetPackagedDataType(bool bUpdatable);
  /// Inserts the directory of the installed metadata into both URLs, whatever their protocols. A
  /// second call inserts it a second time.
  void SetMetaDataDataList(bool bUpdatable);

  /// Each passes one record to the channel framework, on the calling thread. True when the
  /// framework accepted it. A refused record is not kept for later.
  bool AddChannelUsingKelvoApi();
  bool UpdateChannelUsingKelvoApi();
  bool RemoveChannelUsingKelvoApi();

 private:
  friend class AppTypeLayer<ChFeederStandard>;

  ChFeederStandard(AppInfo* pAppInfo, const std::string& rMetadataValue);
  ~ChFeederStandard() = default;

  /// Asks the framework to remove the record, then removes the packaged data.
  void CleanUp();
  /// The text of a record with the staged URLs or those in force.
  std::string GetChannelRecord(bool bUpdatable);
  /// Clears what was staged; the boost mark stays staged.
  void ClearUpdatable();
};
