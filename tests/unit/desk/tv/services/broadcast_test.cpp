// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/broadcast.h"

#include <gtest/gtest.h>

#include <limits>

#include "memory_router.h"
#include "package_maker.h"

namespace desk::tv {
namespace {

class BroadcastTest : public ::testing::Test {
 protected:
  BroadcastTest() { PowerOn(); }
  void PowerOn() {
    m_broadcast.reset();
    m_channels.reset();
    m_store = std::make_unique<TvStore>(m_directory.Path() + "/tv.json");
    m_channels = std::make_unique<Channels>(m_router, *m_store);
    const Needs needs{m_router,
                      DeskPaths(m_directory.Path()),
                      m_callers,
                      "",
                      "",
                      [this](const std::string& key, const std::string& value) {
                        m_keys.push_back(key + "=" + value);
                      },
                      nullptr};
    m_broadcast = std::make_unique<Broadcast>(needs, *m_store, *m_channels);
    m_broadcast->TurnOn();
  }
  static Json::Value Id(std::uint64_t id) {
    Json::Value request;
    request["id"] = Json::UInt64(id);
    return request;
  }
  void Add(std::uint64_t id, const std::string& package = "") {
    Json::Value request = Id(id);
    request["package"] = package;
    m_router.Call("service.add", request);
  }
  void CreateChannel(const std::string& package) {
    Json::Value request;
    request["record"] = "{\"pkg_id\":\"" + package + "\"}";
    m_router.Call("channel.create", request);
  }
  void RemoveChannel(const std::string& package) {
    Json::Value request;
    request["record"] = "{\"pkg_id\":\"" + package + "\"}";
    m_router.Call("channel.remove", request);
  }
  Json::Value Find(std::uint64_t id) { return m_router.Call("service.find", Id(id)); }
  std::string CodeOf(const std::string& method, const Json::Value& request) {
    try {
      m_router.Call(method, request);
    } catch (const DeskError& error) {
      return error.Code();
    }
    return "done";
  }

  TemporaryDirectory m_directory;
  MemoryRouter m_router;
  CallerTable m_callers;
  std::vector<std::string> m_keys;
  std::unique_ptr<TvStore> m_store;
  std::unique_ptr<Channels> m_channels;
  std::unique_ptr<Broadcast> m_broadcast;
};

using Texts = std::vector<std::string>;

TEST_F(BroadcastTest, TheListHoldsAddedServicesAndChannels) {
  Add(7, "a");
  CreateChannel("b");
  const Json::Value services = m_router.Call("service.list")["services"];
  ASSERT_EQ(services.size(), 2u);
  EXPECT_EQ(services[0]["id"].asUInt64(), 7u);
  EXPECT_EQ(services[0]["package"], "a");
  EXPECT_EQ(services[1]["id"].asUInt64(), Channels::FIRST_SERVICE_ID);
  EXPECT_EQ(services[1]["package"], "b");
  EXPECT_EQ(Find(7)["package"], "a");
  EXPECT_EQ(Find(Channels::FIRST_SERVICE_ID)["package"], "b");
  EXPECT_FALSE(Find(8)["found"].asBool());
}

TEST_F(BroadcastTest, ATuneIsToldWithTheServiceId) {
  Add(0x0102030405060708, "a");
  m_router.Call("tune", Id(0x0102030405060708));
  const auto events = m_router.Events("tvs");
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].body["signal"], 103);
  EXPECT_EQ(events[0].body["data"], "0807060504030201");
  const Json::Value current = m_router.Call("service.current");
  EXPECT_TRUE(current["found"].asBool());
  EXPECT_EQ(current["id"].asUInt64(), 0x0102030405060708u);
  EXPECT_EQ(current["output"], 1);
  EXPECT_EQ(current["source"], 0);
  EXPECT_EQ(m_broadcast->Tuned()["package"], "a");
}

TEST_F(BroadcastTest, ServiceIdsHave64Bits) {
  const auto all = std::numeric_limits<std::uint64_t>::max();
  Add(all, "a");
  m_router.Call("tune", Id(all));
  EXPECT_EQ(m_router.Events("tvs")[0].body["data"], "ffffffffffffffff");
  EXPECT_EQ(Find(all)["package"], "a");
  PowerOn();
  EXPECT_EQ(m_router.Call("service.current")["id"].asUInt64(), all);
}

TEST_F(BroadcastTest, NothingIsTunedOnANewTv) {
  EXPECT_FALSE(m_router.Call("service.current")["found"].asBool());
  EXPECT_TRUE(m_keys.empty());
}

TEST_F(BroadcastTest, WhatIsNotInTheListCannotBeTunedTo) {
  EXPECT_EQ(CodeOf("tune", Id(7)), "NotFound");
  EXPECT_EQ(CodeOf("tune", Json::objectValue), "Usage");
  Json::Value negative;
  negative["id"] = -1;
  EXPECT_EQ(CodeOf("tune", negative), "Usage");
  EXPECT_TRUE(m_router.Events("tvs").empty());
}

TEST_F(BroadcastTest, AServiceThatGoesIsNotCurrentAnyMore) {
  CreateChannel("b");
  m_router.Call("tune", Id(Channels::FIRST_SERVICE_ID));
  EXPECT_TRUE(m_router.Call("service.current")["found"].asBool());
  RemoveChannel("b");
  EXPECT_FALSE(m_router.Call("service.current")["found"].asBool());
}

TEST_F(BroadcastTest, TheTvComesUpOnItsLastServiceAndSaysOfWhatKindItIs) {
  CreateChannel("b");
  Add(7);
  m_router.Call("tune", Id(Channels::FIRST_SERVICE_ID));
  EXPECT_TRUE(m_keys.empty());
  PowerOn();
  EXPECT_EQ(m_keys, Texts{"db/boot/last_service=vc-service"});
  m_router.Call("tune", Id(7));
  PowerOn();
  EXPECT_EQ(m_keys.back(), "db/boot/last_service=tv-service");
}

TEST_F(BroadcastTest, AddingAgainReplacesAndRemovingNeedsAService) {
  Add(7, "a");
  Add(7, "b");
  EXPECT_EQ(m_broadcast->Dump().size(), 1u);
  EXPECT_EQ(Find(7)["package"], "b");
  EXPECT_EQ(CodeOf("service.remove", Id(7)), "done");
  EXPECT_EQ(CodeOf("service.remove", Id(7)), "NotFound");
}

TEST_F(BroadcastTest, AVirtualChannelIsNeitherReplacedNorRemovedByHand) {
  CreateChannel("b");
  EXPECT_EQ(CodeOf("service.add", Id(Channels::FIRST_SERVICE_ID)), "Failed");
  EXPECT_EQ(CodeOf("service.remove", Id(Channels::FIRST_SERVICE_ID)), "Failed");
}

TEST_F(BroadcastTest, ASignalGoesOutAsItIs) {
  Json::Value request;
  request["signal"] = 75;
  request["data"] = "00FFa0";
  m_router.Call("signal", request);
  EXPECT_EQ(m_router.Events("tvs")[0].body["signal"], 75);
  EXPECT_EQ(m_router.Events("tvs")[0].body["data"], "00FFa0");
  request["signal"] = 90014;
  m_router.Call("signal", request);
  EXPECT_EQ(m_router.Events("tvs").size(), 1u);
  EXPECT_EQ(m_router.Events("ems")[0].body["signal"], 90014);
}

TEST_F(BroadcastTest, ASignalNeedsANumberAndWholeBytes) {
  Json::Value request;
  EXPECT_EQ(CodeOf("signal", request), "Usage");
  request["signal"] = 75;
  EXPECT_EQ(CodeOf("signal", request), "done");
  request["data"] = "abc";
  EXPECT_EQ(CodeOf("signal", request), "Usage");
  request["data"] = "zz";
  EXPECT_EQ(CodeOf("signal", request), "Usage");
}

}  // namespace
}  // namespace desk::tv
