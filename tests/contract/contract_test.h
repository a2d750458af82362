// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "contract_control.h"

namespace contract {

/// Records what callbacks received, in order. Callable from any thread.
class Notes {
 public:
  static void Add(const std::string& note) {
    const std::lock_guard<std::mutex> lock(Mutex());
    List().push_back(note);
  }
  static std::vector<std::string> All() {
    const std::lock_guard<std::mutex> lock(Mutex());
    return List();
  }
  static void Clear() {
    const std::lock_guard<std::mutex> lock(Mutex());
    List().clear();
  }
  static std::size_t Count() { return All().size(); }

 private:
  static std::mutex& Mutex() {
    static std::mutex s_mutex;
    return s_mutex;
  }
  static std::vector<std::string>& List() {
    static auto* s_list = new std::vector<std::string>;
    return *s_list;
  }
};

/// Provides a television for the test.
class Contract : public testing::Test {
 protected:
  Contract() : m_control(MakeControl()) { Notes::Clear(); }

  Control& Tv() { return *m_control; }

 private:
  std::unique_ptr<Control> m_control;
};

/// Frees a malloc'ed string and returns its text; "null" for null.
inline std::string Taken(char* text) {
  const std::string copy = text == nullptr ? "null" : text;
  std::free(text);
  return copy;
}

}  // namespace contract
