// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/condition.h"

#include <gtest/gtest.h>

#include "desk/cli/failure.h"
#include "desk/common/json.h"

namespace desk::cli {
namespace {

const char* const DUMP = R"({"daemon":{"running":true,"pid":7,"restarts":0},
  "channels":[{"pkg_id":"a"},{"pkg_id":"b"}],"store":[],"keys":{"db/x":1},"text":"a and b"})";

bool Holds(const std::string& expression) {
  return Condition(expression).Holds(ParseJson(DUMP));
}

std::string Missing(const std::string& expression) {
  return Condition(expression).Missing(ParseJson(DUMP));
}

std::string Refusal(const std::string& expression) {
  try {
    Condition(expression).CheckMembers(ParseJson(DUMP));
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Code(), Exit::Usage);
    return failure.what();
  }
  return "";
}

TEST(CliCondition, ATrueComparisonHolds) {
  EXPECT_TRUE(Holds(".channels | length == 2"));
}

TEST(CliCondition, AFalseComparisonDoesNotHold) {
  EXPECT_FALSE(Holds(".channels | length == 3"));
}

TEST(CliCondition, NullAndFalseDoNotHoldAndZeroDoes) {
  EXPECT_FALSE(Holds(".nothing"));
  EXPECT_FALSE(Holds("false"));
  EXPECT_TRUE(Holds(".daemon.restarts"));
}

TEST(CliCondition, OneTrueValueAmongSeveralHolds) {
  EXPECT_TRUE(Holds(".channels[].pkg_id == \"b\""));
  EXPECT_TRUE(Holds(".channels[].pkg_id == \"a\""));
  EXPECT_FALSE(Holds(".channels[].pkg_id == \"c\""));
}

TEST(CliCondition, NoValueAtAllDoesNotHold) {
  EXPECT_FALSE(Holds(".channels[] | select(.pkg_id == \"c\")"));
}

TEST(CliCondition, AnExpressionThatFailsDoesNotHold) {
  EXPECT_FALSE(Holds(".daemon.pid.x == 1"));
}

TEST(CliCondition, ATextThatIsNotAProgramIsAUsageError) {
  try {
    Condition condition(".a ==");
    FAIL() << "it was accepted";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Code(), Exit::Usage);
    EXPECT_EQ(std::string(failure.what()).find("\".a ==\" is not a jq expression: syntax error"),
              0U);
  }
}

TEST(CliCondition, AnUnknownFunctionIsAUsageError) {
  EXPECT_THROW(Condition("lenght(.a)"), Failure);
}

TEST(CliCondition, TheValuesOfTheNamedMembersAreShown) {
  EXPECT_EQ(Missing(".daemon.running and .daemon.restarts == 1"),
            "`.daemon.running and .daemon.restarts == 1` does not hold: `.daemon.restarts` is 0; "
            "`.daemon.running` is true");
}

TEST(CliCondition, AMemberInBracketsIsShown) {
  EXPECT_EQ(Missing(".keys[\"db/x\"] == 2"),
            "`.keys[\"db/x\"] == 2` does not hold: `.keys[\"db/x\"]` is 1");
}

TEST(CliCondition, AListIsShownWithItsSize) {
  EXPECT_EQ(Missing(".channels | length == 3"),
            "`.channels | length == 3` does not hold: `.channels` has 2 elements");
  EXPECT_EQ(Missing("(.store | length) > 0"),
            "`(.store | length) > 0` does not hold: `.store` has 0 elements");
}

TEST(CliCondition, OfAListsElementsTheNamedMembersAreShown) {
  EXPECT_EQ(Missing("any(.channels[]; .pkg_id == \"c\")"),
            "`any(.channels[]; .pkg_id == \"c\")` does not hold: `.channels` has 2 elements: "
            "[{\"pkg_id\":\"a\"},{\"pkg_id\":\"b\"}]");
}

TEST(CliCondition, AnErrorIsShownBesideTheValues) {
  EXPECT_EQ(Missing(".text.x == 1"),
            "`.text.x == 1` does not hold: `.text.x` fails: Cannot index string with string "
            "\"x\"; the expression fails: Cannot index string with string \"x\"");
}

TEST(CliCondition, AnExpressionWithoutMembersShowsNone) {
  EXPECT_EQ(Missing("false"), "`false` does not hold");
}

TEST(CliCondition, AMemberThatNoDumpHasIsRefused) {
  EXPECT_EQ(Refusal(".chanels"), "the dump has no member chanels (did you mean channels?)");
  EXPECT_EQ(Refusal(".qqqqqqqqqqqqqqq == 1"),
            "the dump has no member qqqqqqqqqqqqqqq: `tv dump` shows its members");
}

TEST(CliCondition, AMisspeltMemberIsFoundHoweverItIsUsed) {
  for (const char* expression :
       {".chanels | length == 2", "any(.chanels[]; .pkg_id == \"c\")", ".chanels == \"on\"",
        ".chanels > 3", ".daemon.running and .chanels == 7", "[.chanels] | length == 9 or .[0]",
        "(.chanels | not) | not"}) {
    EXPECT_EQ(Refusal(expression), "the dump has no member chanels (did you mean channels?)")
        << expression;
  }
}

TEST(CliCondition, MembersOfOtherObjectsAreNotRefused) {
  for (const char* expression :
       {"any(.store[]; .package_id == \"c\")", ".keys.missing == 1", ".daemon.stat == \"ready\"",
        ".text | fromjson | .CustomBanner.pkg_id == 1", "any(.[]; .foo? == 1)",
        "\".chanels\" == .text", "[.[] | objects | .foo] | length == 9"}) {
    EXPECT_EQ(Refusal(expression), "") << expression;
  }
}

TEST(CliCondition, ALongValueIsCut) {
  Json::Value dump;
  dump["a"] = std::string(1000, 'x');
  const std::string missing = Condition(".a == 1").Missing(dump);
  EXPECT_LT(missing.size(), 300U);
  EXPECT_EQ(missing.substr(missing.size() - 3), "...");
}

TEST(CliCondition, AByteOutsideUtf8DoesNotStopTheEvaluation) {
  Json::Value dump;
  dump["keys"]["a"] = "\xff";
  dump["b"] = 1;
  EXPECT_TRUE(Condition(".b == 1").Holds(dump));
}

}  // namespace
}  // namespace desk::cli
