// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

/// The clock of the framework's alarms: the system's, unless another one is set.
namespace framework {

/// The arguments that an alarm was created with.
struct AlarmRequest {
  std::string task;
  unsigned int type = 0;
  int periodMs = 0;
  int repeat = 0;  ///< 0: without limit
};

class AlarmClock {
 public:
  virtual ~AlarmClock() = default;

  /// Calls `tick` after every period, on a thread of the clock's choice, until it returns false or
  /// Stop() is called. Returns a number for Stop(), never 0. `tick` posts an event; it neither
  /// blocks nor calls the clock.
  virtual unsigned long Start(const AlarmRequest& request, std::function<bool()> tick) = 0;
  /// After it has returned, no tick of the alarm is running or will run. An unknown number is
  /// ignored.
  virtual void Stop(unsigned long number) = 0;
};

/// The clock of the alarms that are created from now on; null for the system's. Not owned; must
/// outlive those alarms.
void SetAlarmClock(AlarmClock* clock);
AlarmClock& GetAlarmClock();

}  // namespace framework
