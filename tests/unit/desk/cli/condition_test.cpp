// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "cli/condition.h"

#include <gtest/gtest.h>

#include "cli/failure.h"
#include "common/json.h"

namespace desk {
namespace {

const char* const DUMP = R"({"daemon":{"running":true,"pid":7,"restarts":0},
  "channels":[{"pkg_id":"a"},{"pkg_id":"b"}],"store":[],"keys":{"db/x":1},"text":"a and b"})";

bool Holds(const std::string& expression) {
  return Condition(expression).Holds(ParseJson(DUMP));
}

std::string Missing(const std::string& expression) {
  return Condition(expression).Missing(ParseJson(DUMP));
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

TEST(CliCondition, AnErrorIsNotHolding) {
  EXPECT_FALSE(Holds(".daemon.pid.x == 1"));
}

TEST(CliCondition, WhatIsNoExpressionIsAUsageError) {
  try {
    Condition condition(".a ==");
    FAIL() << "it was taken";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Code(), Exit::Usage);
    EXPECT_EQ(std::string(failure.what()).find("\".a ==\" is no jq expression: syntax error"), 0U);
  }
}

TEST(CliCondition, AnUnknownFunctionIsAUsageError) {
  EXPECT_THROW(Condition("lenght(.a)"), Failure);
}

TEST(CliCondition, TheLeftSideOfTheComparisonIsShown) {
  EXPECT_EQ(Missing(".daemon.restarts == 1"),
            "`.daemon.restarts == 1` does not hold: `.daemon.restarts` is 0");
}

TEST(CliCondition, TheLeftSideBehindAPipeIsShownWithThePipe) {
  EXPECT_EQ(Missing(".channels | length == 3"),
            "`.channels | length == 3` does not hold: `.channels | length` is 2");
}

TEST(CliCondition, OnlyThePartsThatDoNotHoldAreShown) {
  EXPECT_EQ(Missing(".daemon.running and .daemon.pid == 8 and (.store|length) > 0"),
            "`.daemon.running and .daemon.pid == 8 and (.store|length) > 0` does not hold: "
            "`.daemon.pid` is 7; `(.store|length)` is 0");
}

TEST(CliCondition, AnAndInsideATextIsNoCut) {
  EXPECT_EQ(Missing(".text == \"a and c\""),
            "`.text == \"a and c\"` does not hold: `.text` is \"a and b\"");
}

TEST(CliCondition, AConditionWithoutAComparisonShowsItsValue) {
  EXPECT_EQ(Missing(".nothing"), "`.nothing` does not hold: `.nothing` is null");
  EXPECT_EQ(Missing(".store[]"), "`.store[]` does not hold: `.store[]` is nothing");
}

TEST(CliCondition, WhatAnyComparesIsShown) {
  EXPECT_EQ(Missing("any(.channels[]; .pkg_id == \"c\")"),
            "`any(.channels[]; .pkg_id == \"c\")` does not hold: `[.channels[] | .pkg_id]` is "
            "[\"a\",\"b\"]");
}

TEST(CliCondition, SeveralThingsThatAnyComparesAreShownTogether) {
  EXPECT_EQ(Missing("any(.channels[]; .pkg_id == \"a\" and .x == 1)"),
            "`any(.channels[]; .pkg_id == \"a\" and .x == 1)` does not hold: `[.channels[] | "
            "[.pkg_id,.x]]` is [[\"a\",null],[\"b\",null]]");
}

TEST(CliCondition, WhatAnyLooksThroughIsShownWhenItComparesNothing) {
  EXPECT_EQ(Missing("any(.channels[]; has(\"x\"))"),
            "`any(.channels[]; has(\"x\"))` does not hold: `[.channels[]]` is "
            "[{\"pkg_id\":\"a\"},{\"pkg_id\":\"b\"}]");
}

TEST(CliCondition, AnErrorIsShownInPlaceOfAValue) {
  EXPECT_EQ(Missing(".text.x == 1"),
            "`.text.x == 1` does not hold: `.text.x` is an error: Cannot index string with string "
            "\"x\"");
}

TEST(CliCondition, AnExpressionThatBindsIsNotCutAtItsPipe) {
  EXPECT_EQ(Missing(".daemon as $d | $d.pid == 8"),
            "`.daemon as $d | $d.pid == 8` does not hold: `.daemon as $d | $d.pid` is 7");
  EXPECT_EQ(
      Missing("if .daemon.pid == 8 then true else false end"),
      "`if .daemon.pid == 8 then true else false end` does not hold: `if .daemon.pid == 8 then "
      "true else false end` is false");
}

TEST(CliCondition, ALongValueIsCut) {
  Json::Value dump;
  dump["a"] = std::string(1000, 'x');
  const std::string missing = Condition(".a == 1").Missing(dump);
  EXPECT_LT(missing.size(), 300U);
  EXPECT_EQ(missing.substr(missing.size() - 3), "...");
}

TEST(CliCondition, AByteThatIsNoUtf8DoesNotStopTheEvaluation) {
  Json::Value dump;
  dump["keys"]["a"] = "\xff";
  dump["b"] = 1;
  EXPECT_TRUE(Condition(".b == 1").Holds(dump));
}

TEST(CliExpression, TheLastPipeOfTheTopLevelIsTheCut) {
  const auto cut = CutExpression(".a | .b | (.c | .d) == 1");
  EXPECT_EQ(cut.pipe, ".a | .b");
  EXPECT_EQ(cut.parts, std::vector<std::string>{"(.c | .d) == 1"});
}

TEST(CliExpression, AWordThatHoldsAndIsNoCut) {
  EXPECT_EQ(CutExpression(".band == .order").parts, std::vector<std::string>{".band == .order"});
}

TEST(CliExpression, QuotesWithinATextAreNoEnd) {
  const auto cut = CutExpression(R"(.a == "x\" and y" and .b)");
  EXPECT_EQ(cut.parts, (std::vector<std::string>{R"(.a == "x\" and y")", ".b"}));
}

TEST(CliExpression, TheLeftSideOfEachComparisonIsFound) {
  EXPECT_EQ(LeftSide(".a <= 1"), ".a");
  EXPECT_EQ(LeftSide(".a != 1"), ".a");
  EXPECT_EQ(LeftSide("(.a == 1)"), "");
}

}  // namespace
}  // namespace desk
