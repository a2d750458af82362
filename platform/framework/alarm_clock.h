// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

/// Where the framework's alarms take the time from. The system's clock, unless another is set.
namespace framework {

/// What an alarm was created with.
struct AlarmRequest {
  std::string task;
  unsigned int type = 0;
  int periodMs = 0;
  int repeat = 0;  ///< 0: without end
};

class AlarmClock {
 public:
  virtual ~AlarmClock() = default;

  /// Calls `tick` after every period, on a thread of the clock's choice, until it gives false or
  /// Stop() is called. The number is never 0 and names this alarm in Stop(). `tick` posts an event
  /// and neither blocks nor calls the clock.
  virtual unsigned long Start(const AlarmRequest& request, std::function<bool()> tick) = 0;
  /// When it returns no tick of the alarm runs or will. A number that is not known is ignored.
  virtual void Stop(unsigned long number) = 0;
};

/// The clock of the alarms that are created from now on; null for the system's. Not owned; must
/// outlive those alarms.
void SetAlarmClock(AlarmClock* clock);
AlarmClock& GetAlarmClock();

}  // namespace framework
