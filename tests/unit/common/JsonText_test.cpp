// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/JsonText.h"

#include <gmock/gmock.h>
#include <malloc.h>

#include <sstream>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(JsonText, AnObjectIsOneLineWithAscendingKeysAndAClosingNewline) {
  Json::Value value;
  value["b"] = "2";
  value["a"]["z"] = 1;
  EXPECT_EQ(JsonText::Write(value), "{\"a\":{\"z\":1},\"b\":\"2\"}\n");
}

TEST(JsonText, NullIsTheWordAndANewline) {
  EXPECT_EQ(JsonText::Write(Json::Value()), "null\n");
}

TEST(JsonText, QuotesNewlinesAndForeignLettersComeBackAsTheyWere) {
  const std::string text = "\"\\\n\t' \xc3\xa4\xe2\x82\xac\xf0\x9f\x93\xba";
  Json::Value value;
  value["k"] = text;
  Json::Value read;
  ASSERT_TRUE(JsonText::Parse(JsonText::Write(value), read));
  EXPECT_EQ(read["k"].asString(), text);
}

TEST(JsonText, CommentsAreAccepted) {
  Json::Value read;
  ASSERT_TRUE(JsonText::Parse("// first\n{\"a\":1 /* second */}", read));
  EXPECT_EQ(read["a"].asInt(), 1);
}

TEST(JsonText, AnEmptyTextIsNoJson) {
  Json::Value read;
  EXPECT_FALSE(JsonText::Parse(std::string(), read));
}

TEST(JsonText, AFailureExplainsItselfWhenAsked) {
  Json::Value read;
  std::string errors;
  EXPECT_FALSE(JsonText::Parse("{\"a\":", read, &errors));
  EXPECT_THAT(errors, HasSubstr("Line 1, Column"));
}

TEST(JsonText, AStreamIsReadToItsEnd) {
  std::istringstream good("{\"a\":\n7}");
  Json::Value read;
  ASSERT_TRUE(JsonText::Parse(good, read));
  EXPECT_EQ(read["a"].asInt(), 7);

  std::istringstream bad("nothing");
  std::string errors;
  EXPECT_FALSE(JsonText::Parse(bad, read, &errors));
  EXPECT_THAT(errors, HasSubstr("Line 1, Column 1"));
  EXPECT_FALSE(JsonText::Parse(bad, read));
}

TEST(JsonText, TheExplanationOfAStreamsFailureSpeaksOfItsText) {
  std::istringstream bad("{\"" + std::string(5000, 'k') + "\":");
  Json::Value read;
  std::string errors;
  // Freed memory is filled with newlines; a read of freed memory would count them as lines.
  mallopt(M_PERTURB, '\n');
  EXPECT_FALSE(JsonText::Parse(bad, read, &errors));
  mallopt(M_PERTURB, 0);
  EXPECT_THAT(errors, StartsWith("* Line 1, Column "));
}

TEST(JsonText, NestingWithoutEndIsAnException) {
  Json::Value read;
  EXPECT_THROW(JsonText::Parse(std::string(100000, '['), read), std::exception);
}

}  // namespace
