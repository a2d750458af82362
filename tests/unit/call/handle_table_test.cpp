// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "call/handle_table.h"

#include <gtest/gtest.h>

#include <string>

namespace platform {
namespace {

using ThingHandle = struct ThingShape*;

int g_open = 0;

class Handles : public testing::Test {
 protected:
  Handles() { g_open = 0; }

  ThingHandle Add(const std::string& text) {
    return m_table.Add(std::make_shared<std::string>(text));
  }

  HandleTable<ThingHandle, std::string> m_table{
      "thing",
      [](const char* kind, int change) { g_open += std::string(kind) == "thing" ? change : 0; }};
};

TEST_F(Handles, FindTheirObjects) {
  const ThingHandle one = Add("one");
  const ThingHandle two = Add("two");
  EXPECT_EQ("one", *m_table.Find(one));
  EXPECT_EQ("two", *m_table.Find(two));
  EXPECT_EQ(nullptr, m_table.Find(nullptr));
}

TEST_F(Handles, AreNeverUsedTwice) {
  const ThingHandle first = Add("first");
  EXPECT_EQ("first", *m_table.Take(first));
  const ThingHandle second = Add("second");
  EXPECT_NE(first, second);
  EXPECT_EQ(nullptr, m_table.Find(first));
  EXPECT_EQ(nullptr, m_table.Take(first));
}

TEST_F(Handles, AreNumberedByKind) {
  Add("one");
  EXPECT_EQ("thing#2", FormatText(m_table.Describe(Add("two"))));
  EXPECT_EQ("null", FormatText(m_table.Describe(nullptr)));
}

TEST_F(Handles, AreCountedWhileTheyAreOpen) {
  const ThingHandle one = Add("one");
  Add("two");
  EXPECT_EQ(2, g_open);
  m_table.Take(one);
  m_table.Take(one);
  EXPECT_EQ(1, g_open);
}

TEST_F(Handles, AreListedInTheOrderOfTheirAdd) {
  const ThingHandle one = Add("one");
  Add("two");
  Add("three");
  m_table.Take(one);
  const auto all = m_table.All();
  ASSERT_EQ(2U, all.size());
  EXPECT_EQ("two", *all[0]);
  EXPECT_EQ("three", *all[1]);
}

TEST_F(Handles, BeginWithOneAgainAfterAClear) {
  const ThingHandle old = Add("old");
  m_table.Clear();
  EXPECT_EQ(nullptr, m_table.Find(old));
  EXPECT_EQ("thing#1", FormatText(m_table.Describe(Add("new"))));
}

}  // namespace
}  // namespace platform
