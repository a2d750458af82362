// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

class FCHandler;

/// One event. The sender makes it on its stack and the framework copies it.
struct FSEvent {
  FCHandler* pReceiver = nullptr;
  unsigned int type = 0;
  void* P0 = nullptr;  ///< payload; who owns it is agreed between sender and receiver
  void* P1 = nullptr;
};

/// Receives events.
class FCHandler {
 public:
  virtual ~FCHandler() = default;
  /// Runs on the receiver's own thread, one event at a time. Non-zero: the event was consumed.
  virtual bool t_OnEvent(const FSEvent* pEvent) = 0;
  /// Ends the receiver; see FCTask::Destroy().
  virtual bool Destroy() = 0;
};
