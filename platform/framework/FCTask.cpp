// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "FCTask.h"

#include <pthread.h>

#include <algorithm>
#include <mutex>
#include <system_error>
#include <thread>

#include "FCTaskList.h"
#include "framework/events.h"
#include "framework/hooked_call.h"
#include "framework/sync_ticket.h"

namespace {

constexpr std::size_t kLongestThreadName = 15;

/// The task whose thread this is.
thread_local const FCTask* t_currentTask = nullptr;

void NameThisThread(const std::string& name) {
  pthread_setname_np(pthread_self(), name.substr(0, kLongestThreadName).c_str());
}

bool PushAndWait(FCQueue& queue, const FSEvent& rEvent, bool bUrgent) {
  framework::SyncTicket ticket;
  framework::SetTicketToPush(&ticket);
  const bool pushed = queue.Push(rEvent, bUrgent);
  framework::SetTicketToPush(nullptr);
  return pushed && ticket.Wait();
}

}  // namespace

struct FCTask::Impl {
  /// True when a thread was ended.
  bool End(FCTask& rTask);

  std::mutex lifeMutex;  // held while the thread is started or joined
  std::thread thread;    // guarded by lifeMutex
};

// The queue of a task that does not run holds nothing, so that Send() has one to ask.
FCTask::FCTask() : m_pQueue(std::make_unique<FCQueue>(0)), m_pImpl(std::make_unique<Impl>()) {}

FCTask::~FCTask() {
  m_pImpl->End(*this);
}

bool FCTask::Create(const char* pName, int stackSize, int queueSize) {
  framework::HookedCall call("FCTask::Create", pName, stackSize, queueSize);
  int fault = 0;
  if (call.Fails(&fault)) {
    return call.Return(fault > 0);
  }
  const std::lock_guard<std::mutex> lock(m_pImpl->lifeMutex);
  if (m_pImpl->thread.joinable()) {
    return call.Return(false);
  }
  m_sName = pName == nullptr ? "" : pName;
  m_pQueue = std::make_unique<FCQueue>(static_cast<std::size_t>(std::max(queueSize, 0)));
  try {
    m_pImpl->thread = std::thread([this] { t_Main(); });
  } catch (const std::system_error&) {
    m_pQueue->Close();
    return call.Return(false);
  }
  if (FCTaskList::m_pTaskList != nullptr) {
    FCTaskList::m_pTaskList->Add(this);
  }
  return call.Return(true);
}

bool FCTask::Impl::End(FCTask& rTask) {
  if (t_currentTask == &rTask) {
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
  framework::HookedCall call("FCTask::Destroy", m_sName);
  return call.Return(m_pImpl->End(*this));
}

bool FCTask::Send(const FSEvent& rEvent, bool bUrgent, bool bSync) {
  if (framework::GetHooks() == nullptr && !bSync) {
    return m_pQueue->Push(rEvent, bUrgent);
  }
  framework::HookedCall call("FCTask::Send", m_sName, rEvent.type, bUrgent, bSync);
  int fault = 0;
  if (call.Fails(&fault)) {
    return call.Return(fault > 0);
  }
  if (!bSync) {
    return call.Return(m_pQueue->Push(rEvent, bUrgent));
  }
  // On its own thread the task would wait for itself.
  return call.Return(t_currentTask != this && PushAndWait(*m_pQueue, rEvent, bUrgent));
}

void FCTask::t_Main() {
  t_currentTask = this;
  NameThisThread(m_sName);
  t_Create();
  FSEvent event;
  while (m_pQueue->Pop(event)) {
    framework::SyncTicket* ticket = framework::GetPoppedTicket();
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
  if (pEvent->type == framework::kEventSuspend) {
    if (t_CanSuspend()) {
      t_OnSuspend();
    }
    return true;
  }
  if (pEvent->type == framework::kEventResume) {
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
