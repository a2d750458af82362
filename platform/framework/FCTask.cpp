// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "FCTask.h"

#include <pthread.h>

#include <algorithm>
#include <mutex>
#include <system_error>
#include <thread>

#include "FCTaskList.h"
#include "framework/backend.h"
#include "framework/events.h"
#include "framework/sync_ticket.h"

namespace {

constexpr std::size_t LONGEST_THREAD_NAME = 15;

/// The task that the calling thread belongs to.
thread_local const FCTask* g_currentTask = nullptr;

void NameThisThread(const std::string& name) {
  pthread_setname_np(pthread_self(), name.substr(0, LONGEST_THREAD_NAME).c_str());
}

}  // namespace

struct FCTask::Impl {
  bool Start(FCTask& rTask, const char* pName, int queueSize);
  /// True when a thread was ended.
  bool End(FCTask& rTask);

  std::mutex lifeMutex;  // held while the thread is started or joined
  std::thread thread;    // guarded by lifeMutex
};

// The queue of a task that is not running has no room, so Send() needs no null check.
FCTask::FCTask() : m_pQueue(std::make_unique<FCQueue>(0)), m_pImpl(std::make_unique<Impl>()) {}

FCTask::~FCTask() {
  m_pImpl->End(*this);
}

bool FCTask::Create(const char* pName, int stackSize, int queueSize) {
  framework::Call call("FCTask::Create", pName, stackSize, queueSize);
  return call.Run(false, [&] { return m_pImpl->Start(*this, pName, queueSize); });
}

bool FCTask::Impl::Start(FCTask& rTask, const char* pName, int queueSize) {
  const std::lock_guard<std::mutex> lock(lifeMutex);
  if (thread.joinable()) {
    return false;
  }
  rTask.m_sName = pName == nullptr ? "" : pName;
  rTask.m_pQueue = std::make_unique<FCQueue>(static_cast<std::size_t>(std::max(queueSize, 0)));
  try {
    thread = std::thread([&rTask] { rTask.t_Main(); });
  } catch (const std::system_error&) {
    rTask.m_pQueue->Close();
    return false;
  }
  if (FCTaskList::m_pTaskList != nullptr) {
    FCTaskList::m_pTaskList->Add(&rTask);
  }
  return true;
}

bool FCTask::Impl::End(FCTask& rTask) {
  if (g_currentTask == &rTask) {
    rTask.m_pQueue->Close();
    return false;
  }
  const std::lock_guard<std::mutex> lock(lifeMutex);
  if (!thread.joinable()) {
    return false;
  }
  rTask.m_pQueue->Close();
  thread.join();
  if (FCTaskList::m_pTaskList != nullptr) {
    FCTaskList::m_pTaskList->Remove(&rTask);
  }
  return true;
}

bool FCTask::Destroy() {
  framework::Call call("FCTask::Destroy", m_sName);
  return call.Return(m_pImpl->End(*this));
}

bool FCTask::Send(const FSEvent& rEvent, bool bUrgent, bool bSync) {
  if (framework::GetBackend() == nullptr && !bSync) {
    return m_pQueue->Push(rEvent, bUrgent);
  }
  framework::Call call("FCTask::Send", m_sName, rEvent.type, bUrgent, bSync);
  return call.Run(false, [&] {
    if (!bSync) {
      return m_pQueue->Push(rEvent, bUrgent);
    }
    // On its own thread the task would wait for itself.
    return g_currentTask != this && framework::TicketQueue::PushAndWait(*m_pQueue, rEvent, bUrgent);
  });
}

void FCTask::t_Main() {
  g_currentTask = this;
  NameThisThread(m_sName);
  t_Create();
  FSEvent event;
  framework::SyncTicket* ticket = nullptr;
  while (framework::TicketQueue::Pop(*m_pQueue, event, ticket)) {
    ExecuteEvent(&event);
    if (ticket != nullptr) {
      ticket->Finish(true);
    }
  }
}

bool FCTask::t_Create() {
  return true;
}

bool FCTask::t_OnEvent(const FSEvent* pEvent) {
  if (pEvent->type == framework::EVENT_SUSPEND) {
    if (t_CanSuspend()) {
      t_OnSuspend();
    }
    return true;
  }
  if (pEvent->type == framework::EVENT_RESUME) {
    if (t_CanResume()) {
      t_OnResume();
    }
    return true;
  }
  return false;
}

void FCTask::t_PurgeEvents() {
  FCQueue::Delete(m_pQueue.get(), this);
}

bool FCTask::ExecuteEvent(const FSEvent* pEvent) {
  return t_OnEvent(pEvent);
}
