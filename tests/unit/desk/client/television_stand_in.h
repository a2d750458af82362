// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

typedef struct _GDBusConnection GDBusConnection;
typedef struct _GDBusMethodInvocation GDBusMethodInvocation;
typedef struct _GMainContext GMainContext;
typedef struct _GMainLoop GMainLoop;
typedef struct _GTestDBus GTestDBus;
typedef struct _GVariant GVariant;

/// The peer of a client under test: a private bus with a service of the desk's name, whose replies
/// the test chooses. Sets TV_BUS for the process. One per process.
class TelevisionStandIn {
 public:
  /// Runs on the stand-in's thread. An exception becomes the error "Failed".
  using Answer = std::function<Json::Value(const Json::Value& request)>;

  TelevisionStandIn();
  ~TelevisionStandIn();
  TelevisionStandIn(const TelevisionStandIn&) = delete;
  TelevisionStandIn& operator=(const TelevisionStandIn&) = delete;

  /// A method without an Answer replies with an empty object.
  void On(const std::string& method, Answer answer);
  /// The requests to the method, in order.
  std::vector<Json::Value> Requests(const std::string& method) const;
  /// Broadcast. Callable from any thread, also within an Answer.
  void Emit(const std::string& topic, const Json::Value& body);
  /// Ends the bus while all are connected.
  void CutOff();

  /// For the bus library's method table.
  void Handle(GVariant* parameters, GDBusMethodInvocation* invocation);

 private:
  void Serve(const std::string& address);
  void QuitLoop();

  GTestDBus* const m_bus;
  GMainContext* m_context = nullptr;
  GMainLoop* m_loop = nullptr;
  GDBusConnection* m_connection = nullptr;
  bool m_cutOff = false;
  std::thread m_thread;

  mutable std::mutex m_mutex;  // guards the following members
  std::condition_variable m_changed;
  bool m_serving = false;
  std::map<std::string, Answer> m_answers;
  std::vector<std::pair<std::string, Json::Value>> m_requests;
};
