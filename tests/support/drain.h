// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <FCTask.h>

#include "framework/events.h"
#include "framework/sync_ticket.h"

namespace support {

/// Waits until the task has handled what was posted before. Leaves no log record and no recorded
/// call, and is not affected by faults of FCTask::Send. Not on the task's thread. False when the
/// task is not running.
inline bool Drain(FCTask& task) {
  FSEvent event;
  event.pReceiver = task.GetHandler();
  event.type = framework::EVENT_RESUME;  // the daemon's tasks ignore it
  return framework::TicketQueue::PushAndWait(*task.GetQueue(), event, false);
}

}  // namespace support
