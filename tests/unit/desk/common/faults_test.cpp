// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/faults.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "common/desk_error.h"
#include "support/files.h"

namespace desk {
namespace {

constexpr int USUAL = -1;

Fault Order(const std::string& call, std::optional<int> result, int times, int after) {
  Fault fault;
  fault.call = call;
  fault.result = result;
  fault.times = times;
  fault.after = after;
  return fault;
}

class Faults : public testing::Test {
 protected:
  support::TempDir m_dir;
  FaultTable m_table{m_dir / "faults", true};
};

TEST_F(Faults, AnEmptyTableLetsEveryCallThrough) {
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), std::nullopt);
}

TEST_F(Faults, AnOrderWithoutAResultGivesTheUsualFailure) {
  m_table.Add(Order("vconf_get_int", std::nullopt, 0, 0));
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), USUAL);
}

TEST_F(Faults, AnOrderWithAResultGivesIt) {
  m_table.Add(Order("app_control_create", -12, 0, 0));
  EXPECT_EQ(m_table.Check("app_control_create", USUAL), -12);
}

TEST_F(Faults, AResultOfZeroIsAResult) {
  m_table.Add(Order("PS_Mount", 0, 0, 0));
  EXPECT_EQ(m_table.Check("PS_Mount", USUAL), 0);
}

TEST_F(Faults, OtherCallsGoThrough) {
  m_table.Add(Order("vconf_get_int", std::nullopt, 0, 0));
  EXPECT_EQ(m_table.Check("vconf_get_in", USUAL), std::nullopt);
  EXPECT_EQ(m_table.Check("vconf_get_int2", USUAL), std::nullopt);
}

TEST_F(Faults, TimesLimitsHowManyUsesFail) {
  m_table.Add(Order("vconf_get_int", std::nullopt, 2, 0));
  EXPECT_TRUE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_TRUE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
}

TEST_F(Faults, AfterLetsThatManyUsesThroughFirst) {
  m_table.Add(Order("vconf_get_int", 7, 1, 2));
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 7);
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
}

TEST_F(Faults, TwoOrdersForOneCallFollowEachOther) {
  m_table.Add(Order("vconf_get_int", 1, 1, 0));
  m_table.Add(Order("vconf_get_int", 2, 1, 0));
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 1);
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 2);
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
}

TEST_F(Faults, AnotherMappingOfTheFileSeesAnOrderAtOnce) {
  FaultTable other(m_dir / "faults", false);
  m_table.Add(Order("vconf_get_int", 3, 1, 0));
  EXPECT_EQ(other.Check("vconf_get_int", USUAL), 3);
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
}

TEST_F(Faults, ClearLetsEverythingThroughAgain) {
  m_table.Add(Order("vconf_get_int", std::nullopt, 0, 0));
  m_table.Clear();
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_TRUE(m_table.List().empty());
}

TEST_F(Faults, TheListTellsWhatIsLeft) {
  m_table.Add(Order("vconf_get_int", std::nullopt, 1, 0));
  m_table.Add(Order("vconf_set_int", 5, 3, 1));
  m_table.Check("vconf_get_int", USUAL);
  m_table.Check("vconf_set_int", USUAL);
  m_table.Check("vconf_set_int", USUAL);
  const std::vector<Fault> left = m_table.List();
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(left[0].call, "vconf_set_int");
  EXPECT_EQ(left[0].result, 5);
  EXPECT_EQ(left[0].times, 2);
  EXPECT_EQ(left[0].after, 0);
}

TEST_F(Faults, AFullTableRefusesAnotherOrder) {
  for (std::size_t i = 0; i < FaultTable::CAPACITY; ++i) {
    m_table.Add(Order("call" + std::to_string(i), std::nullopt, 0, 0));
  }
  EXPECT_THROW(m_table.Add(Order("one", std::nullopt, 0, 0)), DeskError);
}

TEST_F(Faults, AnOrderThatIsUsedUpMakesRoomInAFullTable) {
  for (std::size_t i = 0; i < FaultTable::CAPACITY; ++i) {
    m_table.Add(Order("call" + std::to_string(i), std::nullopt, 1, 0));
  }
  EXPECT_TRUE(m_table.Check("call7", USUAL));
  m_table.Add(Order("one", 5, 1, 1));
  EXPECT_FALSE(m_table.Check("one", USUAL));
  EXPECT_EQ(m_table.Check("one", USUAL), 5);
  EXPECT_FALSE(m_table.Check("call7", USUAL));
  EXPECT_TRUE(m_table.Check("call8", USUAL));
  EXPECT_EQ(m_table.List().size(), FaultTable::CAPACITY - 2);
}

TEST_F(Faults, OrdersKeepTheirOrderInTheRoomOfOthers) {
  m_table.Add(Order("first", std::nullopt, 1, 0));
  m_table.Add(Order("vconf_get_int", 1, 1, 0));
  m_table.Check("first", USUAL);
  m_table.Add(Order("vconf_get_int", 2, 1, 0));
  const std::vector<Fault> list = m_table.List();
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].result, 1);
  EXPECT_EQ(list[1].result, 2);
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 1);
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 2);
}

// A place whose order was taken back may have uses left for those that have looked at it already.
TEST_F(Faults, AnOrderThatWasTakenBackDoesNotFailTheCallOfTheNextOne) {
  std::atomic<bool> stop{false};
  std::atomic<int> failed{0};
  std::thread bystander([&] {
    while (!stop.load()) {
      failed += m_table.Check("bystander", USUAL).has_value() ? 1 : 0;
    }
  });
  for (int i = 0; i < 50000; ++i) {
    m_table.Add(Order("another call", std::nullopt, 0, 0));
    m_table.Clear();
    m_table.Add(Order("bystander", std::nullopt, 0, INT32_MAX));
    m_table.Clear();
  }
  stop.store(true);
  bystander.join();
  EXPECT_EQ(failed.load(), 0);
}

TEST_F(Faults, ANameThatIsTooLongOrMissingIsRefused) {
  EXPECT_THROW(m_table.Add(Order(std::string(96, 'x'), std::nullopt, 0, 0)), DeskError);
  EXPECT_THROW(m_table.Add(Order("", std::nullopt, 0, 0)), DeskError);
  m_table.Add(Order(std::string(95, 'x'), std::nullopt, 0, 0));
  EXPECT_TRUE(m_table.Check(std::string(95, 'x').c_str(), USUAL));
}

TEST_F(Faults, ThreadsThatUseOneCallShareItsCount) {
  m_table.Add(Order("vconf_get_int", std::nullopt, 500, 0));
  std::atomic<int> failed{0};
  const auto use = [this, &failed] {
    for (int i = 0; i < 400; ++i) {
      failed += m_table.Check("vconf_get_int", USUAL).has_value() ? 1 : 0;
    }
  };
  std::thread one(use);
  std::thread two(use);
  one.join();
  two.join();
  EXPECT_EQ(failed.load(), 500);
}

TEST(FaultFile, AMissingFileIsToldAndNotMade) {
  const support::TempDir dir;
  EXPECT_THROW(FaultTable(dir / "faults", false), DeskError);
  EXPECT_FALSE(support::Exists(dir / "faults"));
}

TEST(FaultFile, AFileOfAnotherSizeIsNoTable) {
  const support::TempDir dir;
  support::WriteFile(dir / "faults", "short");
  EXPECT_THROW(FaultTable(dir / "faults", false), DeskError);
}

}  // namespace
}  // namespace desk
