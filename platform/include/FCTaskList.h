// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// A counting semaphore of the framework.
class FCSemaphore {
 public:
  bool Create(int count);
  bool Destroy();

 private:
  void* m_pHandle = nullptr;
};

/// The list of the process's tasks, with the semaphore that guards it.
class FCList {
 public:
  /// Makes the list usable. Once, before the first task.
  bool Create();
  /// Makes the list unusable; the tasks in it are not touched.
  bool Destroy();
  /// The present number of tasks.
  std::size_t Size() const;
  void Add(void* pTask);
  void Remove(void* pTask);

 private:
  FCSemaphore m_Semaphore;
  void* m_pItems = nullptr;
};

class FCTaskList {
 public:
  /// The list of this process, or null. The process's entry creates and deletes it.
  static FCList* m_pTaskList;
  /// Non-zero when the list is already usable and must not be created again.
  static int FlagInitialize();
};

/// The framework's detector of tasks that wait for each other.
class FCSyncDet {
 public:
  static bool Create();
  static bool Destroy();
};
