// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vconf.h>

#include <string>
#include <vector>

#include "fake/control/fake.h"
#include "fake_fixture.h"

namespace {

using testing::ElementsAre;

void Note(keynode_t* node, void* data) {
  const char* text = vconf_keynode_get_str(node);
  const std::string prefix = data == nullptr ? "" : static_cast<const char*>(data);
  Told().push_back(prefix + (text != nullptr
                                 ? "text " + std::string(text)
                                 : "int " + std::to_string(vconf_keynode_get_int(node))));
}

void IgnoreAtOnce(keynode_t*, void*) {
  Told().push_back("ignored");
  vconf_ignore_key_changed("db/a", IgnoreAtOnce);
}

void IgnoreTheOther(keynode_t*, void*) {
  vconf_ignore_key_changed("db/a", Note);
}

void SetAgain(keynode_t* node, void*) {
  const int value = vconf_keynode_get_int(node);
  Told().push_back("saw " + std::to_string(value));
  if (value < 3) {
    vconf_set_int("db/a", value + 1);
  }
}

class Keys : public FakeTest {};

TEST_F(Keys, AreDeliveredOnlyByTheTest) {
  vconf_notify_key_changed("db/a", Note, nullptr);
  vconf_set_int("db/a", 1);
  EXPECT_TRUE(Told().empty());
  EXPECT_EQ(1U, fake::PendingKeyChanges());
  EXPECT_EQ(1U, fake::DeliverKeyChanges());
  EXPECT_THAT(Told(), ElementsAre("int 1"));
}

TEST_F(Keys, ASetBeforeTheRegistrationIsNotTold) {
  vconf_set_int("db/a", 1);
  vconf_notify_key_changed("db/a", Note, nullptr);
  EXPECT_EQ(0U, fake::DeliverKeyChanges());
}

TEST_F(Keys, ASecondRegistrationReplacesTheUserData) {
  char first[] = "1:";
  char second[] = "2:";
  vconf_notify_key_changed("db/a", Note, first);
  vconf_notify_key_changed("db/a", Note, second);
  EXPECT_EQ(1U, fake::KeySubscriptions("db/a"));
  fake::SetKey("db/a", "x");
  EXPECT_EQ(1U, fake::DeliverKeyChanges());
  EXPECT_THAT(Told(), ElementsAre("2:text x"));
}

TEST_F(Keys, ACallbackMayTakeItselfAway) {
  vconf_notify_key_changed("db/a", IgnoreAtOnce, nullptr);
  fake::SetKey("db/a", 1);
  fake::SetKey("db/a", 2);
  EXPECT_EQ(1U, fake::DeliverKeyChanges());
  EXPECT_THAT(Told(), ElementsAre("ignored"));
}

TEST_F(Keys, ACallbackTakenAwayByAnEarlierOneDoesNotBegin) {
  vconf_notify_key_changed("db/a", IgnoreTheOther, nullptr);
  vconf_notify_key_changed("db/a", Note, nullptr);
  fake::SetKey("db/a", 1);
  EXPECT_EQ(1U, fake::DeliverKeyChanges());
  EXPECT_TRUE(Told().empty());
}

TEST_F(Keys, ChangesMadeByACallbackAreDeliveredInTheSameRun) {
  vconf_notify_key_changed("db/a", SetAgain, nullptr);
  fake::SetKey("db/a", 1);
  EXPECT_EQ(3U, fake::DeliverKeyChanges());
  EXPECT_THAT(Told(), ElementsAre("saw 1", "saw 2", "saw 3"));
}

TEST_F(Keys, DroppedChangesAreNotDelivered) {
  vconf_notify_key_changed("db/a", Note, nullptr);
  fake::SetKey("db/a", 1);
  fake::SetKey("db/other", 5);
  EXPECT_EQ(2U, fake::PendingKeyChanges());
  fake::DropKeyChanges();
  EXPECT_EQ(0U, fake::DeliverKeyChanges());
  fake::SetKey("db/a", 2);
  EXPECT_EQ(1U, fake::DeliverKeyChanges());
  EXPECT_THAT(Told(), ElementsAre("int 2"));
}

TEST_F(Keys, ANodeHasTheValueOfItsChange) {
  vconf_notify_key_changed("db/a", Note, nullptr);
  fake::SetKey("db/a", 1);
  fake::SetKey("db/a", "two");
  fake::UnsetKey("db/a");
  EXPECT_EQ(3U, fake::DeliverKeyChanges());
  EXPECT_THAT(Told(), ElementsAre("int 1", "text two", "int 0"));
}

}  // namespace
