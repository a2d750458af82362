// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "tv/router.h"

namespace desk::tv {

/// What one web app was told to enter: an order is kept until the app has its connection, and
/// answered when the app says that it has entered the state. Main loop only.
class WebAppOrders {
 public:
  using Send = std::function<void(const std::string& busName, const std::string& word)>;

  /// reply may be null.
  void Add(const std::string& word, std::shared_ptr<Reply> reply, const Send& send);
  /// The app has entered a state; busName is that of its connection.
  void OnEntered(const std::string& busName, const std::string& word, const Send& send);
  /// The app is gone: whoever waits is told so.
  void Fail(const std::string& message);

 private:
  struct Order {
    std::string word;
    std::shared_ptr<Reply> reply;
  };

  std::string m_busName;  ///< empty until the app has said something
  std::deque<Order> m_orders;
};

/// "init", "load", "preload", "resume", "pause", "destroy", "quit".
bool IsWebAppWord(const std::string& word);

}  // namespace desk::tv
