// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "desk/common/paths.h"

namespace desk::cli {

/// The running TV, as a command sees it. Use it on the thread that runs the command.
class Television {
 public:
  using EventFunction = std::function<void(const Json::Value& body)>;

  virtual ~Television() = default;

  /// Waits for the answer. Delivers events that arrive meanwhile, so that a command can show the
  /// progress of a long call. Throws DeskError.
  virtual Json::Value Call(const std::string& method, const Json::Value& request) = 0;

  /// Waits at most that long for the answer and delivers no events meanwhile. Throws DeskError,
  /// with the code Timeout when the time is over; the TV still completes the request.
  virtual Json::Value CallWithin(std::chrono::milliseconds most, const std::string& method,
                                 const Json::Value& request) = 0;

  /// Calls the function for every later event of the topic, in order, within Call() and Wait().
  /// Throws DeskError.
  virtual void Subscribe(const std::string& topic, EventFunction function) = 0;

  /// Returns after it delivered an event, or when the time is over. Throws DeskError (NoTv) when
  /// the TV was switched off.
  virtual void Wait(std::chrono::milliseconds most) = 0;
};

/// Connects to the TV of that desk. Throws DeskError (NoTv) when none answers.
std::unique_ptr<Television> ConnectToTv(const DeskPaths& paths);

}  // namespace desk::cli
