// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "call/value.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace platform {
namespace {

std::string Json(const Value& value) {
  std::string text;
  AppendJson(text, value);
  return text;
}

void ACallback() {}
enum Colour { RED = 3 };
enum class Sign : int { Minus = -2 };

TEST(Value, NumbersAreNumbersInBothFormats) {
  EXPECT_EQ("-5", FormatText(-5));
  EXPECT_EQ("-5", Json(-5));
  EXPECT_EQ("18446744073709551615", Json(ULLONG_MAX));
  EXPECT_EQ("-9223372036854775808", Json(LLONG_MIN));
}

TEST(Value, AnEnumeratorIsItsNumber) {
  EXPECT_EQ("3", Json(RED));
  EXPECT_EQ("-2", Json(Sign::Minus));
}

TEST(Value, AFlagIsTrueOrFalse) {
  EXPECT_EQ("true", FormatText(true));
  EXPECT_EQ("false", Json(false));
}

TEST(Value, ATextStaysATextWhateverItSays) {
  EXPECT_EQ("12", FormatText("12"));
  EXPECT_EQ("\"12\"", Json("12"));
  EXPECT_EQ("\"true\"", Json(std::string("true")));
  EXPECT_EQ("\"null\"", Json("null"));
}

TEST(Value, AJsonTextIsEscaped) {
  EXPECT_EQ(R"("say \"a\\b\"\u000a")", Json("say \"a\\b\"\n"));
  EXPECT_EQ("\"\xff\"", Json("\xff"));
}

TEST(Value, ANullPointerIsNullWhateverItsType) {
  EXPECT_EQ("null", FormatText(static_cast<const char*>(nullptr)));
  EXPECT_EQ("null", Json(static_cast<char*>(nullptr)));
  EXPECT_EQ("null", Json(static_cast<void*>(nullptr)));
  EXPECT_EQ("null", Json(static_cast<void (*)()>(nullptr)));
  EXPECT_EQ("null", FormatText(Value::OfHandle("app_control", 0)));
}

TEST(Value, OfAPointerOnlyItsPresenceIsKept) {
  int number = 0;
  EXPECT_EQ("set", FormatText(&number));
  EXPECT_EQ("\"pointer\"", Json(&number));
  EXPECT_EQ("set", FormatText(&ACallback));
  EXPECT_EQ("\"callback\"", Json(&ACallback));
}

TEST(Value, AHandleIsItsKindAndNumber) {
  EXPECT_EQ("app_control#7", FormatText(Value::OfHandle("app_control", 7)));
  EXPECT_EQ("7", Json(Value::OfHandle("app_control", 7)));
}

TEST(Value, NoValueIsVoidOrNull) {
  EXPECT_EQ("void", FormatText(Value()));
  EXPECT_EQ("null", Json(Value()));
}

}  // namespace
}  // namespace platform
