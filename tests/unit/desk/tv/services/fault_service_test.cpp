// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/fault_service.h"

#include <gtest/gtest.h>

#include "memory_router.h"
#include "support/files.h"

namespace desk::tv {
namespace {

class FaultMethods : public testing::Test {
 protected:
  FaultMethods() {
    support::MakeDirectories(m_paths.Run());
    m_service = std::make_unique<FaultService>(m_router, m_paths);
  }

  support::TempDir m_dir;
  const DeskPaths m_paths{m_dir.Path()};
  MemoryRouter m_router;
  std::unique_ptr<FaultService> m_service;
};

TEST_F(FaultMethods, AnOrderReachesWhoMapsTheFile) {
  Json::Value request;
  request["call"] = "vconf_get_int";
  request["result"] = -9;
  request["times"] = 1;
  request["after"] = 1;
  m_router.Call("fault.add", request);
  FaultTable daemons(m_paths.Faults(), false);
  EXPECT_FALSE(daemons.Check("vconf_get_int", -1));
  EXPECT_EQ(daemons.Check("vconf_get_int", -1), -9);
  EXPECT_FALSE(daemons.Check("vconf_get_int", -1));
}

TEST_F(FaultMethods, TheListPrintsAFaultAsItWasGiven) {
  Json::Value request;
  request["call"] = "PS_Mount";
  m_router.Call("fault.add", request);
  Json::Value wanted;
  wanted["call"] = "PS_Mount";
  wanted["times"] = 0;
  wanted["after"] = 0;
  const Json::Value faults = m_router.Call("fault.list")["faults"];
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults[0], wanted);
  EXPECT_EQ(m_service->Dump(), faults);
}

TEST_F(FaultMethods, ClearForgetsThem) {
  Json::Value request;
  request["call"] = "PS_Mount";
  m_router.Call("fault.add", request);
  m_router.Call("fault.clear");
  EXPECT_EQ(m_router.Call("fault.list")["faults"], Json::Value(Json::arrayValue));
}

TEST_F(FaultMethods, ACallWithoutANameIsAUsageError) {
  EXPECT_THROW(m_router.Call("fault.add", Json::Value(Json::objectValue)), DeskError);
}

TEST_F(FaultMethods, ANewTelevisionStartsWithoutFaults) {
  Json::Value request;
  request["call"] = "PS_Mount";
  m_router.Call("fault.add", request);
  m_service.reset();
  m_service = std::make_unique<FaultService>(m_router, m_paths);
  EXPECT_TRUE(m_service->Dump().empty());
}

}  // namespace
}  // namespace desk::tv
