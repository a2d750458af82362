// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/channels.h"

#include <gtest/gtest.h>

#include "memory_router.h"
#include "package_maker.h"

namespace desk::tv {
namespace {

class ChannelsTest : public ::testing::Test {
 protected:
  ChannelsTest() { PowerOn(); }
  void PowerOn() {
    m_channels.reset();
    m_store = std::make_unique<TvStore>(m_directory.Path() + "/tv.json");
    m_channels = std::make_unique<Channels>(m_router, *m_store);
  }
  bool Do(const std::string& method, const std::string& record) {
    Json::Value request;
    request["record"] = record;
    return m_router.Call("channel." + method, request)["ok"].asBool();
  }
  Json::Value List() { return m_router.Call("channel.list")["channels"]; }
  std::size_t Told() { return m_router.Events("ems").size(); }

  TemporaryDirectory m_directory;
  MemoryRouter m_router;
  std::unique_ptr<TvStore> m_store;
  std::unique_ptr<Channels> m_channels;
};

TEST_F(ChannelsTest, ACreatedRecordIsShownWithItsMembersAndAServiceId) {
  EXPECT_TRUE(Do("create", "{\"channel_data_url\":\"u\",\"pkg_id\":\"a\",\"widget_id\":\"w\"}\n"));
  const Json::Value list = List();
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0]["pkg_id"], "a");
  EXPECT_EQ(list[0]["widget_id"], "w");
  EXPECT_EQ(list[0]["channel_data_url"], "u");
  EXPECT_EQ(list[0]["service_id"].asUInt64(), Channels::FIRST_SERVICE_ID);
  EXPECT_EQ(m_channels->PackageOfService(Channels::FIRST_SERVICE_ID), "a");
}

TEST_F(ChannelsTest, FetchedServicesAreToldOfAndRemovedOnesAreNot) {
  Do("create", "{\"pkg_id\":\"a\"}");
  EXPECT_EQ(Told(), 1u);
  EXPECT_EQ(m_router.Events("ems")[0].body["signal"], 90014);
  Do("update", "{\"pkg_id\":\"a\"}");
  EXPECT_EQ(Told(), 2u);
  Do("remove", "{\"pkg_id\":\"a\"}");
  EXPECT_EQ(Told(), 2u);
}

TEST_F(ChannelsTest, ACreateOfARecordThatIsThereReplacesIt) {
  Do("create", "{\"pkg_id\":\"a\",\"x\":\"1\",\"y\":\"1\"}");
  EXPECT_TRUE(Do("create", "{\"pkg_id\":\"a\",\"x\":\"2\"}"));
  ASSERT_EQ(List().size(), 1u);
  EXPECT_EQ(List()[0]["x"], "2");
  EXPECT_FALSE(List()[0].isMember("y"));
}

TEST_F(ChannelsTest, WhatIsNotThereIsNeitherUpdatedNorRemoved) {
  EXPECT_FALSE(Do("update", "{\"pkg_id\":\"a\"}"));
  EXPECT_FALSE(Do("remove", "{\"pkg_id\":\"a\"}"));
  Do("create", "{\"pkg_id\":\"a\"}");
  EXPECT_TRUE(Do("remove", "{\"pkg_id\":\"a\"}"));
  EXPECT_FALSE(Do("remove", "{\"pkg_id\":\"a\"}"));
  EXPECT_EQ(Told(), 1u);
}

TEST_F(ChannelsTest, ATextThatIsNoRecordIsRefused) {
  for (const char* text :
       {"", "{", "[]", "null", "7", "{}", "{\"pkg_id\":7}", "{\"pkg_id\":\"\"}"}) {
    EXPECT_FALSE(Do("create", text)) << text;
    EXPECT_FALSE(Do("update", text)) << text;
    EXPECT_FALSE(Do("remove", text)) << text;
  }
  EXPECT_TRUE(List().empty());
  EXPECT_EQ(Told(), 0u);
}

TEST_F(ChannelsTest, APackageKeepsItsServiceIdForGood) {
  Do("create", "{\"pkg_id\":\"b\"}");
  Do("create", "{\"pkg_id\":\"a\"}");
  EXPECT_EQ(List()[0]["service_id"].asUInt64(), Channels::FIRST_SERVICE_ID + 1);
  Do("remove", "{\"pkg_id\":\"b\"}");
  EXPECT_EQ(m_channels->PackageOfService(Channels::FIRST_SERVICE_ID), std::nullopt);
  Do("create", "{\"pkg_id\":\"c\"}");
  Do("create", "{\"pkg_id\":\"b\"}");
  EXPECT_EQ(m_channels->PackageOfService(Channels::FIRST_SERVICE_ID), "b");
  EXPECT_EQ(m_channels->PackageOfService(Channels::FIRST_SERVICE_ID + 2), "c");
}

TEST_F(ChannelsTest, TheRegistryOutlivesThePower) {
  Do("create", "{\"pkg_id\":\"a\",\"x\":\"\\u20ac\"}");
  const Json::Value before = List();
  PowerOn();
  EXPECT_EQ(List(), before);
}

TEST_F(ChannelsTest, ARemovedChannelsServiceIdIsNotGivenToAnother) {
  Do("create", "{\"pkg_id\":\"a\"}");
  Do("remove", "{\"pkg_id\":\"a\"}");
  Do("create", "{\"pkg_id\":\"b\"}");
  EXPECT_EQ(List()[0]["service_id"].asUInt64(), Channels::FIRST_SERVICE_ID + 1);
}

TEST(TvStore, ABrokenFileIsKeptBesideAndTheTvStartsWithoutIt) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/tv.json";
  for (const char* text : {"{\"a\":", "[1]", "\x01"}) {
    WriteFile(path, text);
    TvStore store(path);
    EXPECT_TRUE(store.Get("a").isNull());
    EXPECT_EQ(ReadFile(path + ".broken"), text);
    store.Set("a", 1);
    EXPECT_EQ(TvStore(path).Get("a"), 1);
  }
}

TEST(TvStore, WhatCannotBeWrittenIsNotTaken) {
  const TemporaryDirectory directory;
  TvStore store(directory.Path() + "/missing/tv.json");
  EXPECT_THROW(store.Set("a", 1), DeskError);
  EXPECT_TRUE(store.Get("a").isNull());
}

}  // namespace
}  // namespace desk::tv
