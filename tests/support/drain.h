// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <FCTask.h>

#include "framework/events.h"
#include "framework/sync_ticket.h"

namespace support {

/// Waits until the task has handled what was posted before. Leaves neither a log record nor a call
/// behind, and no fault of FCTask::Send reaches it. Not on the task's own thread. False when the
/// task does not run.
inline bool Drain(FCTask& task) {
  FSEvent event;
  event.pReceiver = task.GetHandler();
  event.type = framework::kEventResume;  // the tasks of the daemon do nothing on it
  return framework::TicketQueue::PushAndWait(*task.GetQueue(), event, false);
}

}  // namespace support
