// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <vconf.h>

#include <thread>

#include "contract_test.h"

namespace contract {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* KEY = "memory/contract/key";

class Keys : public Contract {};

std::string Told(keynode_t* node) {
  const char* text = vconf_keynode_get_str(node);
  return text != nullptr ? text : std::to_string(vconf_keynode_get_int(node));
}

void OnChange(keynode_t* node, void* data) {
  Notes::Add((data == nullptr ? "" : static_cast<const char*>(data)) + Told(node));
}

void OnChangeToo(keynode_t* node, void*) {
  Notes::Add("too " + Told(node));
}

void OnRemoval(keynode_t* node, void*) {
  Notes::Add(vconf_keynode_get_str(node) == nullptr ? "no text" : "text");
}

void EndAtFirst(keynode_t* node, void*) {
  Notes::Add(Told(node));
  Notes::Add("ignored " + std::to_string(vconf_ignore_key_changed(KEY, EndAtFirst)));
}

TEST_F(Keys, AMissingIntIsAnErrorAndLeavesTheValue) {
  int value = 42;
  EXPECT_EQ(-1, vconf_get_int(KEY, &value));
  EXPECT_EQ(42, value);
}

TEST_F(Keys, AMissingTextIsNull) {
  EXPECT_EQ("null", Taken(vconf_get_str(KEY)));
}

TEST_F(Keys, ASetCreatesTheKey) {
  EXPECT_EQ(0, vconf_set_int(KEY, -5));
  int value = 0;
  EXPECT_EQ(0, vconf_get_int(KEY, &value));
  EXPECT_EQ(-5, value);
  EXPECT_EQ(0, vconf_set_str("memory/contract/text", "a text"));
  EXPECT_EQ("a text", Taken(vconf_get_str("memory/contract/text")));
}

TEST_F(Keys, ASetFromOutsideIsSeen) {
  Tv().SetKey(KEY, 7);
  int value = 0;
  EXPECT_EQ(0, vconf_get_int(KEY, &value));
  EXPECT_EQ(7, value);
  Tv().SetKey("memory/contract/text", "outside");
  EXPECT_EQ("outside", Taken(vconf_get_str("memory/contract/text")));
}

TEST_F(Keys, ATextMayBeEmptyLongAndOfAnyBytes) {
  const std::string odd = "\"quoted\"\n\t\\ \x01 \xc3\xa4 \xff {}";
  const std::string large(100000, 'x');
  for (const std::string& text : {std::string(), odd, large}) {
    EXPECT_EQ(0, vconf_set_str(KEY, text.c_str()));
    EXPECT_EQ(text, Taken(vconf_get_str(KEY)));
  }
}

TEST_F(Keys, AKeyOfTheOtherTypeIsAnErrorAndLeavesTheValue) {
  Tv().SetKey(KEY, "5");
  int value = 42;
  EXPECT_EQ(-1, vconf_get_int(KEY, &value));
  EXPECT_EQ(42, value);
  Tv().SetKey("memory/contract/int", 5);
  EXPECT_EQ("null", Taken(vconf_get_str("memory/contract/int")));
}

TEST_F(Keys, ARemovedKeyIsMissing) {
  Tv().SetKey(KEY, 5);
  Tv().UnsetKey(KEY);
  int value = 42;
  EXPECT_EQ(-1, vconf_get_int(KEY, &value));
}

TEST_F(Keys, EverySetIsToldInOrder) {
  ASSERT_EQ(0, vconf_notify_key_changed(KEY, OnChange, nullptr));
  std::vector<std::string> expected;
  for (int i = 0; i < 100; ++i) {
    if (i % 2 == 0) {
      Tv().SetKey(KEY, i);
    } else {
      vconf_set_int(KEY, i);
    }
    expected.push_back(std::to_string(i));
  }
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 100; }));
  EXPECT_EQ(expected, Notes::All());
}

TEST_F(Keys, ASetThatLeavesTheValueIsTold) {
  Tv().SetKey(KEY, "same");
  vconf_notify_key_changed(KEY, OnChange, nullptr);
  Tv().SetKey(KEY, "same");
  vconf_set_str(KEY, "same");
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 2; }));
  EXPECT_THAT(Notes::All(), ElementsAre("same", "same"));
}

TEST_F(Keys, ASetBeforeTheRegistrationIsNotTold) {
  Tv().SetKey(KEY, 1);
  vconf_set_int(KEY, 2);
  vconf_notify_key_changed(KEY, OnChange, nullptr);
  Tv().SetKey(KEY, 3);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 1; }));
  Tv().RunMainLoop();
  EXPECT_THAT(Notes::All(), ElementsAre("3"));
}

TEST_F(Keys, AChangeIsNotToldBeforeTheMainLoopRuns) {
  vconf_notify_key_changed(KEY, OnChange, nullptr);
  Tv().SetKey(KEY, 1);
  EXPECT_THAT(Notes::All(), IsEmpty());
  Tv().RunMainLoop();
  EXPECT_THAT(Notes::All(), ElementsAre("1"));
}

TEST_F(Keys, ANodeHasTheValueOfItsChange) {
  vconf_notify_key_changed(KEY, OnChange, nullptr);
  Tv().SetKey(KEY, 1);
  Tv().SetKey(KEY, "two");
  Tv().SetKey(KEY, 3);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 3; }));
  EXPECT_THAT(Notes::All(), ElementsAre("1", "two", "3"));
}

TEST_F(Keys, TheNodeOfARemovalHasNoText) {
  Tv().SetKey(KEY, "text");
  vconf_notify_key_changed(KEY, OnRemoval, nullptr);
  Tv().UnsetKey(KEY);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 1; }));
  EXPECT_THAT(Notes::All(), ElementsAre("no text"));
}

TEST_F(Keys, AnotherKeysChangeIsNotTold) {
  vconf_notify_key_changed(KEY, OnChange, nullptr);
  Tv().SetKey("memory/contract/key2", 1);
  Tv().SetKey("memory/contract", 2);
  Tv().RunMainLoop();
  EXPECT_THAT(Notes::All(), IsEmpty());
}

TEST_F(Keys, EachFunctionOfAKeyIsTold) {
  vconf_notify_key_changed(KEY, OnChange, nullptr);
  vconf_notify_key_changed(KEY, OnChangeToo, nullptr);
  Tv().SetKey(KEY, 1);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 2; }));
  EXPECT_THAT(Notes::All(), testing::UnorderedElementsAre("1", "too 1"));
}

TEST_F(Keys, ASecondRegistrationReplacesTheUserData) {
  char first[] = "first ";
  char second[] = "second ";
  EXPECT_EQ(0, vconf_notify_key_changed(KEY, OnChange, first));
  EXPECT_EQ(0, vconf_notify_key_changed(KEY, OnChange, second));
  Tv().SetKey(KEY, 1);
  Tv().RunMainLoop();
  EXPECT_THAT(Notes::All(), ElementsAre("second 1"));
}

TEST_F(Keys, AfterIgnoreNothingIsTold) {
  vconf_notify_key_changed(KEY, OnChange, nullptr);
  Tv().SetKey(KEY, 1);
  EXPECT_EQ(0, vconf_ignore_key_changed(KEY, OnChange));
  Tv().SetKey(KEY, 2);
  Tv().RunMainLoop();
  EXPECT_THAT(Notes::All(), IsEmpty());
}

TEST_F(Keys, IgnoringWhatIsNotRegisteredIsAnError) {
  EXPECT_EQ(-1, vconf_ignore_key_changed(KEY, OnChange));
  vconf_notify_key_changed(KEY, OnChange, nullptr);
  EXPECT_EQ(-1, vconf_ignore_key_changed(KEY, OnChangeToo));
  EXPECT_EQ(0, vconf_ignore_key_changed(KEY, OnChange));
  EXPECT_EQ(-1, vconf_ignore_key_changed(KEY, OnChange));
}

TEST_F(Keys, ACallbackMayIgnoreItself) {
  vconf_notify_key_changed(KEY, EndAtFirst, nullptr);
  Tv().SetKey(KEY, 1);
  Tv().SetKey(KEY, 2);
  Tv().RunMainLoop();
  EXPECT_THAT(Notes::All(), ElementsAre("1", "ignored 0"));
}

TEST_F(Keys, ARegistrationOfAnotherThreadIsToldInTheMainLoop) {
  std::thread([] { vconf_notify_key_changed(KEY, OnChange, nullptr); }).join();
  std::thread([] { vconf_set_int(KEY, 9); }).join();
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 1; }));
  EXPECT_THAT(Notes::All(), ElementsAre("9"));
}

}  // namespace
}  // namespace contract
