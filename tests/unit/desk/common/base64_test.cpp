// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/base64.h"

#include <gtest/gtest.h>

namespace desk {
namespace {

TEST(DeskBase64, BytesComeBackWhole) {
  const std::string bytes("\x00\xff\x10 text", 8);
  EXPECT_EQ(ToBase64(bytes), "AP8QIHRleHQ=");
  EXPECT_EQ(FromBase64(ToBase64(bytes)), bytes);
}

TEST(DeskBase64, AnEmptyTextIsNoBytes) {
  EXPECT_EQ(ToBase64(""), "");
  EXPECT_EQ(FromBase64(""), "");
}

}  // namespace
}  // namespace desk
