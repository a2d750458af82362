// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/json.h"

#include <gtest/gtest.h>

#include "desk/common/desk_error.h"

namespace desk {
namespace {

TEST(Json, IsOneLineWithoutAnEnd) {
  Json::Value value;
  value["b"] = 1;
  value["a"][0] = "x";
  EXPECT_EQ(FormatJson(value), R"({"a":["x"],"b":1})");
}

TEST(Json, KeepsEveryByteOfAStringBothWays) {
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  Json::Value value;
  value["text"] = bytes;
  EXPECT_EQ(ParseJson(FormatJson(value))["text"].asString(), bytes);
}

TEST(Json, WritesBytesThatAreNoUtf8AsTheyAre) {
  EXPECT_EQ(FormatJson(Json::Value("\xff\xc3\xa4")), "\"\xff\xc3\xa4\"");
}

TEST(Json, AnEmptyTextIsAnEmptyObject) {
  EXPECT_EQ(ParseJson(""), Json::Value(Json::objectValue));
}

TEST(Json, BrokenTextIsAnError) {
  EXPECT_THROW(ParseJson("{"), DeskError);
  EXPECT_THROW(ParseJson("{} x"), DeskError);
  EXPECT_THROW(ParseJson("nul"), DeskError);
}

TEST(Json, ADepthWithoutEndIsAnErrorAndNoCrash) {
  EXPECT_THROW(ParseJson(std::string(100000, '[')), DeskError);
}

TEST(JsonMembers, AStringThatIsRequiredAndMissingIsAUsageError) {
  Json::Value request(Json::objectValue);
  request["number"] = 1;
  try {
    RequireString(request, "key");
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), DeskError::USAGE);
  }
  EXPECT_THROW(RequireString(request, "number"), DeskError);
  EXPECT_THROW(RequireString(Json::Value(3), "key"), DeskError);
}

TEST(JsonMembers, OptionalOnesFallBackOnlyWhenTheyAreAbsent) {
  Json::Value request(Json::objectValue);
  request["text"] = "x";
  request["number"] = 7;
  request["flag"] = true;
  EXPECT_EQ(OptionalString(request, "text", "y"), "x");
  EXPECT_EQ(OptionalString(request, "none", "y"), "y");
  EXPECT_EQ(OptionalInt(request, "number", 1), 7);
  EXPECT_EQ(OptionalInt(request, "none", 1), 1);
  EXPECT_TRUE(OptionalBool(request, "flag", false));
  EXPECT_TRUE(OptionalBool(request, "none", true));
  EXPECT_THROW(OptionalInt(request, "text", 1), DeskError);
  EXPECT_THROW(OptionalBool(request, "number", true), DeskError);
}

TEST(JsonMembers, ANumberOfMoreThan32BitsIsNone) {
  Json::Value request(Json::objectValue);
  request["number"] = Json::Int64(1) << 40;
  EXPECT_THROW(OptionalInt(request, "number", 1), DeskError);
}

}  // namespace
}  // namespace desk
