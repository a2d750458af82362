// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/keys.h"

#include <gtest/gtest.h>

#include "desk/common/json.h"
#include "memory_router.h"
#include "support/files.h"

namespace desk::tv {
namespace {

// The code of the failure; empty when there is none.
template <typename Function>
std::string CodeOf(Function function) {
  try {
    function();
  } catch (const DeskError& e) {
    return e.Code();
  }
  return "";
}

class KeyTest : public testing::Test {
 protected:
  KeyTest() {
    support::MakeDirectories(m_paths.Db());
    Restart();
  }

  void Restart() {
    m_keys.reset();
    m_keys = std::make_unique<Keys>(m_router, m_paths);
  }

  support::TempDir m_dir;
  const DeskPaths m_paths{m_dir.Path()};
  MemoryRouter m_router;
  std::unique_ptr<Keys> m_keys;
};

TEST_F(KeyTest, ANewTvHasItsFirstValuesAndNoOthers) {
  EXPECT_EQ(m_keys->Dump(), JsonObject({{"db/orv_channel/custom_ui_type", ""},
                                        {"db/factory/factory_reset_count", 0},
                                        {"db/factory/service_reset_count", 0},
                                        {"db/tellahub/reset/apps", 1},
                                        {"db/boot/last_service", ""}}));
}

TEST_F(KeyTest, ASetIsReadBack) {
  m_router.Call("key.set", JsonObject({{"key", "memory/a"}, {"type", "int"}, {"value", -7}}));
  EXPECT_EQ(m_router.Call("key.get", JsonObject({{"key", "memory/a"}})),
            JsonObject({{"found", true}, {"key", "memory/a"}, {"type", "int"}, {"value", -7}}));
}

TEST_F(KeyTest, AKeyThatIsNotThereIsNotFound) {
  EXPECT_EQ(m_router.Call("key.get", JsonObject({{"key", "memory/a"}})),
            JsonObject({{"found", false}}));
}

TEST_F(KeyTest, EverySetIsToldInOrderWithItsNumberAlsoWhenNothingChanged) {
  for (int i = 0; i < 2; ++i) {
    m_router.Call("key.set", JsonObject({{"key", "memory/a"}, {"type", "int"}, {"value", 1}}));
  }
  m_router.Call("key.set", JsonObject({{"key", "rtc/b"}, {"type", "string"}, {"value", "x"}}));
  const auto events = m_router.Events("key");
  ASSERT_EQ(events.size(), 3U);
  EXPECT_EQ(
      events[0].body,
      JsonObject({{"seq", Json::Int64(1)}, {"key", "memory/a"}, {"type", "int"}, {"value", 1}}));
  EXPECT_EQ(
      events[1].body,
      JsonObject({{"seq", Json::Int64(2)}, {"key", "memory/a"}, {"type", "int"}, {"value", 1}}));
  EXPECT_EQ(events[2].body["key"].asString(), "rtc/b");
  EXPECT_EQ(events[2].body["seq"].asInt(), 3);
}

TEST_F(KeyTest, ASetRepliesWithItsNumberBeforeItsEvent) {
  class Order : public Reply {
   public:
    explicit Order(MemoryRouter& router) : m_router(router) {}
    void Return(const Json::Value&) override { eventsAtAnswer = m_router.Events("key").size(); }
    void Fail(const std::string&, const std::string&) override {}
    std::size_t eventsAtAnswer = 99;

   private:
    MemoryRouter& m_router;
  };
  // A router that hands the handler this reply instead of its own.
  class Catcher : public MemoryRouter {
   public:
    void AddDeferred(const std::string& method, DeferredHandler handler) override {
      if (method == "key.set") {
        set = std::move(handler);
      }
    }
    DeferredHandler set;
  };
  Catcher router;
  support::MakeDirectories(m_dir / "two/db");
  const Keys keys(router, DeskPaths(m_dir / "two"));
  const auto reply = std::make_shared<Order>(router);
  router.set(JsonObject({{"key", "memory/a"}, {"type", "int"}, {"value", 1}}), Caller(), reply);
  EXPECT_EQ(reply->eventsAtAnswer, 0U);
  EXPECT_EQ(router.Events("key").size(), 1U);
}

TEST_F(KeyTest, AWatchKnowsTheNumberOfTheLastSet) {
  EXPECT_EQ(m_router.Call("key.watch", JsonObject({{"key", "db/x"}}))["seq"].asInt(), 0);
  EXPECT_EQ(m_keys->Set("memory/a", 1), 1);
  EXPECT_EQ(m_router.Call("key.watch", JsonObject({{"key", "db/x"}}))["seq"].asInt(), 1);
}

TEST_F(KeyTest, OnlyKeysUnderDbOutlastTheTelevision) {
  m_keys->Set("db/a", "kept");
  m_keys->Set("db/n", -3);
  m_keys->Set("memory/a", 1);
  m_keys->Set("rtc/a", 1);
  Restart();
  EXPECT_EQ(m_keys->Get("db/a"), KeyValue("kept"));
  EXPECT_EQ(m_keys->Get("db/n"), KeyValue(-3));
  EXPECT_FALSE(m_keys->Get("memory/a"));
  EXPECT_FALSE(m_keys->Get("rtc/a"));
}

TEST_F(KeyTest, PowerOffDropsTheOthersWithoutAnEvent) {
  m_keys->Set("db/a", 1);
  m_keys->Set("memory/a", 1);
  m_keys->Set("rtc/a", 1);
  m_keys->DropVolatile();
  EXPECT_TRUE(m_keys->Get("db/a"));
  EXPECT_FALSE(m_keys->Get("memory/a"));
  EXPECT_FALSE(m_keys->Get("rtc/a"));
  EXPECT_EQ(m_router.Events("key").size(), 3U);
}

TEST_F(KeyTest, AnEmptyStringOutlastsTheTelevisionAsAString) {
  m_keys->Set("db/a", "");
  Restart();
  EXPECT_EQ(m_keys->Get("db/a"), KeyValue(""));
}

TEST_F(KeyTest, EveryByteOfAStringOutlastsTheTelevision) {
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  m_keys->Set("db/a", bytes);
  Restart();
  EXPECT_EQ(m_keys->Get("db/a"), KeyValue(bytes));
}

TEST_F(KeyTest, TheWholeRangeOfNumbersIsKept) {
  m_keys->Set("db/low", Json::Value::minInt);
  m_keys->Set("db/high", Json::Value::maxInt);
  Restart();
  EXPECT_EQ(m_keys->GetInt("db/low", 0), Json::Value::minInt);
  EXPECT_EQ(m_keys->GetInt("db/high", 0), Json::Value::maxInt);
}

TEST_F(KeyTest, ASetMayChangeTheType) {
  m_keys->Set("db/a", 1);
  m_keys->Set("db/a", "1");
  EXPECT_EQ(m_keys->GetInt("db/a", 42), 42);
  EXPECT_EQ(m_keys->Get("db/a"), KeyValue("1"));
}

TEST_F(KeyTest, AnUnsetKeyIsGoneForGoodAndToldAsNone) {
  m_keys->Set("db/a", 1);
  EXPECT_EQ(m_router.Call("key.unset", JsonObject({{"key", "db/a"}})),
            JsonObject({{"found", true}}));
  EXPECT_EQ(
      m_router.Events("key").back().body,
      JsonObject(
          {{"seq", Json::Int64(2)}, {"key", "db/a"}, {"type", "none"}, {"value", Json::Value()}}));
  Restart();
  EXPECT_FALSE(m_keys->Get("db/a"));
}

TEST_F(KeyTest, UnsettingAMissingKeySendsNoEvent) {
  EXPECT_EQ(m_router.Call("key.unset", JsonObject({{"key", "db/a"}})),
            JsonObject({{"found", false}}));
  EXPECT_TRUE(m_router.Events("key").empty());
}

TEST_F(KeyTest, AFirstValueThatWasChangedStaysChanged) {
  m_keys->Set("db/tellahub/reset/apps", 0);
  m_keys->Unset("db/boot/last_service");
  Restart();
  EXPECT_EQ(m_keys->GetInt("db/tellahub/reset/apps", -1), 0);
  EXPECT_FALSE(m_keys->Get("db/boot/last_service"));
}

TEST_F(KeyTest, AListHoldsThePrefixInOrder) {
  m_keys->Set("memory/b/2", 2);
  m_keys->Set("memory/b/1", "x");
  m_keys->Set("memory/c", 3);
  const Json::Value keys = m_router.Call("key.list", JsonObject({{"prefix", "memory/b"}}))["keys"];
  ASSERT_EQ(keys.size(), 2U);
  EXPECT_EQ(keys[0], JsonObject({{"key", "memory/b/1"}, {"type", "string"}, {"value", "x"}}));
  EXPECT_EQ(keys[1], JsonObject({{"key", "memory/b/2"}, {"type", "int"}, {"value", 2}}));
  EXPECT_EQ(m_router.Call("key.list")["keys"].size(), 8U);
}

TEST_F(KeyTest, AListOfAPrefixThatNothingHasIsEmpty) {
  EXPECT_EQ(m_router.Call("key.list", JsonObject({{"prefix", "x"}})),
            JsonObject({{"keys", Json::Value(Json::arrayValue)}}));
}

TEST_F(KeyTest, ANameOutsideTheThreeTreesIsRefused) {
  for (const char* key : {"", "a", "db", "db/", "/db/a", "memory/", "dbx/a"}) {
    EXPECT_EQ(CodeOf([&] { m_keys->Set(key, 1); }), "Usage") << key;
  }
}

TEST_F(KeyTest, AValueThatIsNeitherNumberNorStringIsRefused) {
  for (const Json::Value& value :
       {Json::Value(), Json::Value(true), Json::Value(1.5), Json::Value(Json::Int64(1) << 40),
        Json::Value(Json::arrayValue), Json::Value(std::string("a\0b", 3))}) {
    for (const char* type : {"int", "string"}) {
      const Json::Value request =
          JsonObject({{"key", "memory/a"}, {"type", type}, {"value", value}});
      EXPECT_EQ(CodeOf([&] { m_router.Call("key.set", request); }), "Usage");
    }
  }
  EXPECT_FALSE(m_keys->Get("memory/a"));
  EXPECT_TRUE(m_router.Events("key").empty());
}

TEST_F(KeyTest, AValueThatIsNotOfTheTypeToldIsRefused) {
  const auto set = [this](const char* type, const Json::Value& value) {
    m_router.Call("key.set", JsonObject({{"key", "memory/a"}, {"type", type}, {"value", value}}));
  };
  EXPECT_EQ(CodeOf([&] { set("int", "1"); }), "Usage");
  EXPECT_EQ(CodeOf([&] { set("string", 1); }), "Usage");
  EXPECT_EQ(CodeOf([&] { set("double", 1); }), "Usage");
}

TEST(KeyFile, AFileThatIsNotADatabaseIsNamed) {
  const support::TempDir dir;
  const DeskPaths paths(dir.Path());
  support::WriteFile(paths.KeysDb(), std::string(4096, 'x'));
  MemoryRouter router;
  EXPECT_EQ(CodeOf([&] { Keys(router, paths); }), "Failed");
}

}  // namespace
}  // namespace desk::tv
