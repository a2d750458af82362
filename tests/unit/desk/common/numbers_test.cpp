// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/numbers.h"

#include <gtest/gtest.h>

namespace desk {
namespace {

TEST(Numbers, AreDecimalAlsoWithZerosInFront) {
  EXPECT_EQ(ReadNumber("0"), 0);
  EXPECT_EQ(ReadNumber("10"), 10);
  EXPECT_EQ(ReadNumber("010"), 10);
  EXPECT_EQ(ReadNumber("089"), 89);
  EXPECT_EQ(ReadUnsigned("010"), 10U);
}

TEST(Numbers, AreHexadecimalBehind0x) {
  EXPECT_EQ(ReadNumber("0x10"), 16);
  EXPECT_EQ(ReadNumber("0XfF"), 255);
  EXPECT_EQ(ReadNumber("-0x10"), -16);
  EXPECT_EQ(ReadUnsigned("0xffffffffffffffff"), UINT64_MAX);
}

TEST(Numbers, MayHaveASign) {
  EXPECT_EQ(ReadNumber("-10"), -10);
  EXPECT_EQ(ReadNumber("+10"), 10);
  EXPECT_EQ(ReadUnsigned("-10"), std::nullopt);
  EXPECT_EQ(ReadUnsigned("+10"), std::nullopt);
}

TEST(Numbers, HaveSixtyFourBits) {
  EXPECT_EQ(ReadNumber("9223372036854775807"), INT64_MAX);
  EXPECT_EQ(ReadNumber("-9223372036854775808"), INT64_MIN);
  EXPECT_EQ(ReadNumber("9223372036854775808"), std::nullopt);
  EXPECT_EQ(ReadNumber("-9223372036854775809"), std::nullopt);
  EXPECT_EQ(ReadUnsigned("18446744073709551615"), UINT64_MAX);
  EXPECT_EQ(ReadUnsigned("18446744073709551616"), std::nullopt);
}

TEST(Numbers, AreTheWholeText) {
  for (const char* text : {"", "-", "+", "0x", "-0x", "x", "1x", "x1", " 1", "1 ", "1.0", "--1",
                           "-+1", "0x-1", "1e3", "0b1", "ff"}) {
    EXPECT_EQ(ReadNumber(text), std::nullopt) << text;
    EXPECT_EQ(ReadUnsigned(text), std::nullopt) << text;
  }
  EXPECT_EQ(ReadNumber(std::string("1\0", 2)), std::nullopt);
}

}  // namespace
}  // namespace desk
