// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "FCHandler.h"
#include "FCQueue.h"

/// The part of a task that is a thread.
class FCThread {
 public:
  virtual ~FCThread() = default;
  /// Body of the thread.
  virtual void t_Main() = 0;
};

/// A named worker with one thread and one bounded queue of events.
///
/// A derived class calls Create() in its constructor and Destroy() in its destructor: the thread
/// calls the virtual operations below and must end before the derived part is destroyed.
class FCTask : public FCThread, public FCHandler {
 public:
  FCTask();
  ~FCTask() override;
  FCTask(const FCTask&) = delete;
  FCTask& operator=(const FCTask&) = delete;

  /// Starts the thread, which carries the name (cut to 15 characters). stackSize is taken as a
  /// hint and may be ignored; queueSize is the number of events that fit. Returns without waiting
  /// for t_Create(). False when the task already runs or the thread cannot be started.
  bool Create(const char* pName, int stackSize, int queueSize);
  /// Lets the present event finish, ends the thread and joins it. Waiting events are dropped, their
  /// payloads not freed. True when a thread was ended. On the task's own thread it only requests
  /// the end. Idempotent.
  bool Destroy() override;

  /// Copies the event into the queue. bUrgent puts it in front; bSync waits until it was handled,
  /// and must not be set on the task's own thread. False when the queue is full or the task is not
  /// running. Callable from any thread.
  bool Send(const FSEvent& rEvent, bool bUrgent, bool bSync);

  const std::string& GetName() const { return m_sName; }
  FCQueue* GetQueue() { return m_pQueue.get(); }
  /// The receiver to put into an event for this task.
  FCHandler* GetHandler() { return this; }

  /// The framework's own events; true when the event was one of them.
  bool t_OnEvent(const FSEvent* pEvent) override;

 protected:
  void t_Main() override;
  /// Once, on the task's thread, before the first event. The result is ignored.
  virtual bool t_Create();
  virtual void t_OnSuspend() {}
  virtual void t_OnResume() {}
  virtual bool t_CanSuspend() { return true; }
  virtual bool t_CanResume() { return true; }
  /// Drops this task's waiting events.
  virtual void t_PurgeEvents();
  /// Hands one event from the queue to t_OnEvent().
  virtual bool ExecuteEvent(const FSEvent* pEvent);

 private:
  struct Impl;
  std::string m_sName;
  std::unique_ptr<FCQueue> m_pQueue;
  std::unique_ptr<Impl> m_pImpl;
};

/// Posts one event type to a task after a period.
class FCStateAlarm {
 public:
  FCStateAlarm();
  ~FCStateAlarm();
  FCStateAlarm(const FCStateAlarm&) = delete;
  FCStateAlarm& operator=(const FCStateAlarm&) = delete;

  /// Posts an event of the type with null parameters to the task every periodMs milliseconds,
  /// repeat times (0: without limit). False when it is already running.
  bool Create(FCTask* pTask, unsigned int type, int periodMs, int repeat);
  /// No event is posted after it has returned. Clears the flag of IsRunning(). Safe on any thread,
  /// also the task's.
  bool Destroy();
  /// True from Create() until Destroy(), also after the last event.
  bool IsRunning() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> m_pImpl;
};
