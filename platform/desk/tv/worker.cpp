// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/worker.h"

#include <glib.h>
#include <pthread.h>

#include <exception>
#include <utility>

#include "desk/common/desk_error.h"

namespace desk::tv {
namespace {

[[noreturn]] void ThrowShuttingDown() {
  throw DeskError(DeskError::FAILED, "the TV is shutting down");
}

}  // namespace

// Shared by the worker and the main context.
struct Worker::Call {
  std::mutex mutex;
  std::condition_variable done;
  std::function<void()> function;  // empty once it has run or was dropped
  std::exception_ptr error;
  bool finished = false;

  void Finish(std::exception_ptr result) {
    const std::lock_guard<std::mutex> lock(mutex);
    function = nullptr;
    error = std::move(result);
    finished = true;
    done.notify_all();
  }
};

Worker::Worker(const char* name) {
  m_thread = std::thread([this] { Run(); });
  pthread_setname_np(m_thread.native_handle(), name);
}

Worker::~Worker() {
  Stop();
}

void Worker::Stop() {
  std::shared_ptr<Call> waiting;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stopping = true;
    m_jobs.clear();
    waiting = m_call;
    m_changed.notify_all();
  }
  // The main context is no longer running: a job that waits for it must fail.
  if (waiting != nullptr) {
    try {
      ThrowShuttingDown();
    } catch (const DeskError&) {
      waiting->Finish(std::current_exception());
    }
  }
  if (m_thread.joinable()) {
    m_thread.join();
  }
}

void Worker::Post(std::function<void()> job) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_jobs.push_back(std::move(job));
  m_changed.notify_all();
}

void Worker::CheckRunning() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_stopping) {
    ThrowShuttingDown();
  }
}

void Worker::OnMainLoop(std::function<void()> function) {
  const auto call = std::make_shared<Call>();
  call->function = std::move(function);
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stopping) {
      ThrowShuttingDown();
    }
    m_call = call;
  }
  g_main_context_invoke_full(nullptr, G_PRIORITY_DEFAULT, Dispatch, new std::shared_ptr<Call>(call),
                             [](void* held) { delete static_cast<std::shared_ptr<Call>*>(held); });
  std::unique_lock<std::mutex> lock(call->mutex);
  call->done.wait(lock, [&] { return call->finished; });
  const std::lock_guard<std::mutex> own(m_mutex);
  m_call.reset();
  if (call->error != nullptr) {
    std::rethrow_exception(call->error);
  }
}

int Worker::Dispatch(void* held) {
  const std::shared_ptr<Call> call = *static_cast<std::shared_ptr<Call>*>(held);
  std::function<void()> function;
  {
    const std::lock_guard<std::mutex> lock(call->mutex);
    function.swap(call->function);
  }
  if (function) {
    std::exception_ptr error;
    try {
      function();
    } catch (...) {  // rethrown in the thread of the job
      error = std::current_exception();
    }
    call->Finish(error);
  }
  return G_SOURCE_REMOVE;
}

void Worker::Run() {
  for (;;) {
    std::function<void()> job;
    {
      std::unique_lock<std::mutex> lock(m_mutex);
      m_changed.wait(lock, [this] { return m_stopping || !m_jobs.empty(); });
      if (m_stopping) {
        return;
      }
      job = std::move(m_jobs.front());
      m_jobs.pop_front();
    }
    job();
  }
}

}  // namespace desk::tv
