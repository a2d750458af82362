// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/web_app_requests.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "common/desk_error.h"

namespace desk::tv {

void WebAppOrders::Add(const std::string& word, std::shared_ptr<Reply> reply, const Send& send) {
  m_orders.push_back({word, std::move(reply)});
  if (!m_busName.empty()) {
    send(m_busName, word);
  }
}

void WebAppOrders::OnEntered(const std::string& busName, const std::string& word,
                             const Send& send) {
  if (m_busName.empty()) {
    m_busName = busName;
    // The words of the start are none of the orders, which come only now.
    for (const Order& order : m_orders) {
      send(m_busName, order.word);
    }
    return;
  }
  if (m_orders.empty() || m_orders.front().word != word) {
    return;
  }
  const Order done = std::move(m_orders.front());
  m_orders.pop_front();
  if (done.reply != nullptr) {
    done.reply->Return(Json::Value(Json::objectValue));
  }
}

void WebAppOrders::Fail(const std::string& message) {
  for (const Order& order : std::exchange(m_orders, {})) {
    if (order.reply != nullptr) {
      order.reply->Fail(DeskError::Failed, message);
    }
  }
}

bool IsWebAppWord(const std::string& word) {
  constexpr std::array<std::string_view, 7> words = {"init",  "load",    "preload", "resume",
                                                     "pause", "destroy", "quit"};
  return std::find(words.begin(), words.end(), word) != words.end();
}

}  // namespace desk::tv
