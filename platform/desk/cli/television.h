// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "common/paths.h"

namespace desk {

/// The running TV as a command sees it. For one thread: the one that runs the command.
class Television {
 public:
  using EventFunction = std::function<void(const Json::Value& body)>;

  virtual ~Television() = default;

  /// Waits for the answer. Events that come meanwhile are handed out by this call too, so that a
  /// long one can show how it goes on. Throws DeskError.
  virtual Json::Value Call(const std::string& method, const Json::Value& request) = 0;

  /// Waits for the answer no longer than that, and hands out no events meanwhile. Throws DeskError,
  /// with the code Timeout when the time is over; the TV goes on with what it was asked for.
  virtual Json::Value CallWithin(std::chrono::milliseconds most, const std::string& method,
                                 const Json::Value& request) = 0;

  /// Every later event of the topic, in order, from within Call() and Wait(). Throws DeskError.
  virtual void Subscribe(const std::string& topic, EventFunction function) = 0;

  /// Hands out events until one has been handed out or the time is over. Throws DeskError (NoTv)
  /// when the TV has gone.
  virtual void Wait(std::chrono::milliseconds most) = 0;
};

/// Connects to the TV of that desk. Throws DeskError (NoTv) when none answers.
std::unique_ptr<Television> ConnectToTv(const DeskPaths& paths);

}  // namespace desk
