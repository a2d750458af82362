// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// A connection to the process that sends the signals of the TV's middleware.
class FIIPCConnection {
 public:
  /// Owned by the framework; null when the process cannot be reached.
  static FIIPCConnection* GetInstance();

 protected:
  FIIPCConnection() = default;
  virtual ~FIIPCConnection() = default;
};

/// Called on a thread of the library, and not before the process's main loop runs.
typedef int (*FCEMSSignalCallback)(int signalType, void* pData);

class FCEMSProxy {
 public:
  /// Owned by the framework. One callback per process: a second one replaces the first. Null
  /// when pConnection is null or the proxy cannot be created.
  static FCEMSProxy* GetInstance(FIIPCConnection* pConnection, FCEMSSignalCallback pCallback);
  virtual bool Subscribe(int signalType) = 0;

 protected:
  FCEMSProxy() = default;
  virtual ~FCEMSProxy() = default;
};
