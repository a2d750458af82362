// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "FCTaskList.h"

#include <semaphore.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

#include "framework/backend.h"

namespace {

struct Items {
  std::mutex mutex;
  std::vector<void*> tasks;  // guarded by mutex
};

Items* ItemsOf(void* pItems) {
  return static_cast<Items*>(pItems);
}

/// The list that was created last, until it is destroyed.
std::atomic<const FCList*> g_usableList{nullptr};

std::atomic<bool> g_detecting{false};

}  // namespace

FCList* FCTaskList::m_pTaskList = nullptr;

bool FCSemaphore::Create(int count) {
  if (m_pHandle != nullptr || count < 0) {
    return false;
  }
  auto* pSemaphore = new sem_t;  // owned by m_pHandle until Destroy()
  if (sem_init(pSemaphore, 0, static_cast<unsigned int>(count)) != 0) {
    delete pSemaphore;
    return false;
  }
  m_pHandle = pSemaphore;
  return true;
}

bool FCSemaphore::Destroy() {
  auto* pSemaphore = static_cast<sem_t*>(m_pHandle);
  m_pHandle = nullptr;
  if (pSemaphore == nullptr) {
    return false;
  }
  sem_destroy(pSemaphore);
  delete pSemaphore;
  return true;
}

bool FCList::Create() {
  framework::Call call("FCList::Create");
  return call.Run(false, [this] {
    if (m_pItems != nullptr || !m_Semaphore.Create(1)) {
      return false;
    }
    m_pItems = new Items;  // owned by m_pItems until Destroy()
    g_usableList = this;
    return true;
  });
}

bool FCList::Destroy() {
  framework::Call call("FCList::Destroy");
  return call.Run(false, [this] {
    if (m_pItems == nullptr) {
      return false;
    }
    const FCList* pSelf = this;
    g_usableList.compare_exchange_strong(pSelf, nullptr);
    delete ItemsOf(m_pItems);
    m_pItems = nullptr;
    return m_Semaphore.Destroy();
  });
}

std::size_t FCList::Size() const {
  if (m_pItems == nullptr) {
    return 0;
  }
  const std::lock_guard<std::mutex> lock(ItemsOf(m_pItems)->mutex);
  return ItemsOf(m_pItems)->tasks.size();
}

void FCList::Add(void* pTask) {
  if (m_pItems == nullptr) {
    return;
  }
  const std::lock_guard<std::mutex> lock(ItemsOf(m_pItems)->mutex);
  ItemsOf(m_pItems)->tasks.push_back(pTask);
}

void FCList::Remove(void* pTask) {
  if (m_pItems == nullptr) {
    return;
  }
  const std::lock_guard<std::mutex> lock(ItemsOf(m_pItems)->mutex);
  auto& tasks = ItemsOf(m_pItems)->tasks;
  tasks.erase(std::remove(tasks.begin(), tasks.end(), pTask), tasks.end());
}

int FCTaskList::FlagInitialize() {
  framework::Call call("FCTaskList::FlagInitialize");
  return call.Run(0, [] { return m_pTaskList != nullptr && g_usableList == m_pTaskList ? 1 : 0; });
}

bool FCSyncDet::Create() {
  framework::Call call("FCSyncDet::Create");
  return call.Run(false, [] { return !g_detecting.exchange(true); });
}

bool FCSyncDet::Destroy() {
  framework::Call call("FCSyncDet::Destroy");
  return call.Run(false, [] { return g_detecting.exchange(false); });
}
