// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/faults.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <csignal>
#include <thread>

#include "desk/common/desk_error.h"
#include "support/files.h"
#include "support/wait_for.h"

namespace desk {
namespace {

constexpr int USUAL = -1;

Fault MakeFault(const std::string& call, std::optional<int> result, int times, int after) {
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

TEST_F(Faults, AnEmptyTableFailsNoCall) {
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), std::nullopt);
}

TEST_F(Faults, AFaultWithoutAResultGivesTheUsualFailure) {
  m_table.Add(MakeFault("vconf_get_int", std::nullopt, 0, 0));
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), USUAL);
}

TEST_F(Faults, AFaultWithAResultGivesIt) {
  m_table.Add(MakeFault("app_control_create", -12, 0, 0));
  EXPECT_EQ(m_table.Check("app_control_create", USUAL), -12);
}

TEST_F(Faults, AResultOfZeroIsAResult) {
  m_table.Add(MakeFault("PS_Mount", 0, 0, 0));
  EXPECT_EQ(m_table.Check("PS_Mount", USUAL), 0);
}

TEST_F(Faults, OtherCallsSucceed) {
  m_table.Add(MakeFault("vconf_get_int", std::nullopt, 0, 0));
  EXPECT_EQ(m_table.Check("vconf_get_in", USUAL), std::nullopt);
  EXPECT_EQ(m_table.Check("vconf_get_int2", USUAL), std::nullopt);
}

TEST_F(Faults, TimesLimitsHowManyUsesFail) {
  m_table.Add(MakeFault("vconf_get_int", std::nullopt, 2, 0));
  EXPECT_TRUE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_TRUE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
}

TEST_F(Faults, AfterIsHowManyUsesSucceedFirst) {
  m_table.Add(MakeFault("vconf_get_int", 7, 1, 2));
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 7);
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
}

TEST_F(Faults, TwoFaultsOfOneCallFollowEachOther) {
  m_table.Add(MakeFault("vconf_get_int", 1, 1, 0));
  m_table.Add(MakeFault("vconf_get_int", 2, 1, 0));
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 1);
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 2);
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
}

TEST_F(Faults, AnotherMappingOfTheFileSeesAFaultAtOnce) {
  FaultTable other(m_dir / "faults", false);
  m_table.Add(MakeFault("vconf_get_int", 3, 1, 0));
  EXPECT_EQ(other.Check("vconf_get_int", USUAL), 3);
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
}

TEST_F(Faults, ClearRemovesAllFaults) {
  m_table.Add(MakeFault("vconf_get_int", std::nullopt, 0, 0));
  m_table.Clear();
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_TRUE(m_table.List().empty());
}

TEST_F(Faults, TheListShowsTheRemainingUses) {
  m_table.Add(MakeFault("vconf_get_int", std::nullopt, 1, 0));
  m_table.Add(MakeFault("vconf_set_int", 5, 3, 1));
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

TEST_F(Faults, AFullTableRefusesAnotherFault) {
  for (std::size_t i = 0; i < FaultTable::CAPACITY; ++i) {
    m_table.Add(MakeFault("call" + std::to_string(i), std::nullopt, 0, 0));
  }
  EXPECT_THROW(m_table.Add(MakeFault("one", std::nullopt, 0, 0)), DeskError);
}

TEST_F(Faults, AUsedUpFaultMakesRoomInAFullTable) {
  for (std::size_t i = 0; i < FaultTable::CAPACITY; ++i) {
    m_table.Add(MakeFault("call" + std::to_string(i), std::nullopt, 1, 0));
  }
  EXPECT_TRUE(m_table.Check("call7", USUAL));
  m_table.Add(MakeFault("one", 5, 1, 1));
  EXPECT_FALSE(m_table.Check("one", USUAL));
  EXPECT_EQ(m_table.Check("one", USUAL), 5);
  EXPECT_FALSE(m_table.Check("call7", USUAL));
  EXPECT_TRUE(m_table.Check("call8", USUAL));
  EXPECT_EQ(m_table.List().size(), FaultTable::CAPACITY - 2);
}

TEST_F(Faults, FaultsStayInTheOrderOfTheirAdd) {
  m_table.Add(MakeFault("first", std::nullopt, 1, 0));
  m_table.Add(MakeFault("vconf_get_int", 1, 1, 0));
  m_table.Check("first", USUAL);
  m_table.Add(MakeFault("vconf_get_int", 2, 1, 0));
  const std::vector<Fault> list = m_table.List();
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].result, 1);
  EXPECT_EQ(list[1].result, 2);
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 1);
  EXPECT_EQ(m_table.Check("vconf_get_int", USUAL), 2);
}

// The slot of a cleared fault is used again while another thread checks its calls.
TEST_F(Faults, AClearedFaultDoesNotFailTheNextFaultsCall) {
  std::atomic<bool> stop{false};
  std::atomic<int> failed{0};
  std::thread bystander([&] {
    while (!stop.load()) {
      failed += m_table.Check("bystander", USUAL).has_value() ? 1 : 0;
    }
  });
  for (int i = 0; i < 50000; ++i) {
    m_table.Add(MakeFault("another call", std::nullopt, 0, 0));
    m_table.Clear();
    m_table.Add(MakeFault("bystander", std::nullopt, 0, INT32_MAX));
    m_table.Clear();
  }
  stop.store(true);
  bystander.join();
  EXPECT_EQ(failed.load(), 0);
}

TEST_F(Faults, ANameThatIsTooLongOrMissingIsRefused) {
  EXPECT_THROW(m_table.Add(MakeFault(std::string(96, 'x'), std::nullopt, 0, 0)), DeskError);
  EXPECT_THROW(m_table.Add(MakeFault("", std::nullopt, 0, 0)), DeskError);
  m_table.Add(MakeFault(std::string(95, 'x'), std::nullopt, 0, 0));
  EXPECT_TRUE(m_table.Check(std::string(95, 'x').c_str(), USUAL));
}

TEST_F(Faults, ThreadsThatUseOneCallShareItsCount) {
  m_table.Add(MakeFault("vconf_get_int", std::nullopt, 500, 0));
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

TEST_F(Faults, AnEmptyTableIsEmptyAgainAfterTheLastUse) {
  m_table.Add(MakeFault("vconf_get_int", std::nullopt, 1, 0));
  EXPECT_TRUE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_TRUE(m_table.List().empty());
  m_table.Add(MakeFault("vconf_set_int", std::nullopt, 1, 0));
  EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
  EXPECT_TRUE(m_table.Check("vconf_set_int", USUAL));
}

// A killed daemon may hold the mutex of the table. In most of these rounds the child does.
TEST_F(Faults, TheDeathOfAProcessDuringACheckBlocksNoOther) {
  m_table.Add(MakeFault("vconf_get_int", std::nullopt, 0, INT32_MAX));
  for (int round = 0; round < 50; ++round) {
    const int before = m_table.List().at(0).after;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      for (;;) {
        m_table.Check("vconf_get_int", USUAL);
      }
    }
    const auto runs = support::WaitFor([&] { return m_table.List().at(0).after < before; },
                                       "a check of the child");
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    ASSERT_TRUE(runs);
    EXPECT_FALSE(m_table.Check("vconf_get_int", USUAL));
  }
}

TEST(FaultFile, AMissingFileIsAnErrorAndIsNotCreated) {
  const support::TempDir dir;
  EXPECT_THROW(FaultTable(dir / "faults", false), DeskError);
  EXPECT_FALSE(support::Exists(dir / "faults"));
}

TEST(FaultFile, AFileOfAnotherSizeIsRefused) {
  const support::TempDir dir;
  support::WriteFile(dir / "faults", "short");
  EXPECT_THROW(FaultTable(dir / "faults", false), DeskError);
}

}  // namespace
}  // namespace desk
