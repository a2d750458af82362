// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/fault_entry.h"

#include <gtest/gtest.h>

namespace desk {
namespace {

Fault Times(const std::string& call, int times, std::optional<int> result = std::nullopt) {
  Fault fault;
  fault.call = call;
  fault.times = times;
  fault.result = result;
  return fault;
}

class FaultPlace : public testing::Test {
 protected:
  FaultEntry m_entry{};
};

TEST_F(FaultPlace, ANewOneIsUsedUp) {
  EXPECT_TRUE(m_entry.IsUsedUp());
  EXPECT_EQ(m_entry.Read().order, 0U);
}

TEST_F(FaultPlace, AnOrderIsReadAsItWasWritten) {
  m_entry.Write(7, Times("PS_Mount", 2, -3));
  const FaultEntry::Snapshot snapshot = m_entry.Read();
  EXPECT_EQ(snapshot.order, 7U);
  EXPECT_EQ(snapshot.name, FaultEntry::NameOf("PS_Mount"));
  EXPECT_EQ(snapshot.result, -3);
  EXPECT_FALSE(m_entry.IsUsedUp());
}

TEST_F(FaultPlace, ItIsUsedUpWhenAllUsesHaveFailed) {
  m_entry.Write(1, Times("call", 2));
  EXPECT_TRUE(m_entry.Fails(1));
  EXPECT_FALSE(m_entry.IsUsedUp());
  EXPECT_TRUE(m_entry.Fails(1));
  EXPECT_TRUE(m_entry.IsUsedUp());
  EXPECT_FALSE(m_entry.Fails(1));
}

TEST_F(FaultPlace, WhoHasReadTheOldOrderUsesNothingOfTheNewOne) {
  m_entry.Write(1, Times("old", 1));
  const FaultEntry::Order seen = m_entry.Read().order;
  ASSERT_TRUE(m_entry.Fails(1));
  m_entry.Write(2, Times("new", 1));
  EXPECT_FALSE(m_entry.Fails(seen));
  EXPECT_TRUE(m_entry.Fails(2));
}

TEST_F(FaultPlace, NorDoesANewOrderWithoutEndFailTheCallOfTheOldOne) {
  m_entry.Write(1, Times("old", 1));
  m_entry.Write(2, Times("new", 0));
  EXPECT_FALSE(m_entry.Fails(1));
  EXPECT_TRUE(m_entry.Fails(2));
}

TEST_F(FaultPlace, NorAreTheUsesCountedThatPassFirst) {
  m_entry.Write(1, Times("old", 1));
  Fault late = Times("new", 1);
  late.after = 1;
  m_entry.Write(2, late);
  EXPECT_FALSE(m_entry.Fails(1));
  EXPECT_EQ(m_entry.Describe().after, 1);
}

}  // namespace
}  // namespace desk
