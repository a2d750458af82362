// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Records of channel-bound apps at the channel framework. Each text is one JSON object. The calls
/// are synchronous, run on the caller's thread and return true when the framework took the record.
class FCOrvAppInfoAPI {
 public:
  virtual bool CreateAppInfo(const std::string& rAppInfo) = 0;
  virtual bool RemoveAppInfo(const std::string& rAppInfo) = 0;
  virtual bool UpdateAppInfo(const std::string& rAppInfo) = 0;

 protected:
  ~FCOrvAppInfoAPI() = default;
};

class FCAPI {
 public:
  /// Owned by the framework and valid until the process ends; null while the framework is absent.
  static FCOrvAppInfoAPI* GetOrvAppInfoAPI();
};
