// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/CustomUINames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<int> Known(const std::string& text) {
  const std::map<std::string, int> names = {{"one", 1}, {"two", 2}};
  std::vector<int> found;
  CustomUINames::AppendKnownNames(text, names, found);
  return found;
}

TEST(CustomUINames, NamesAreCutAtCommasAndComparedAsTheyStand) {
  EXPECT_THAT(Known("two,one,two"), ElementsAre(2, 1, 2));
  EXPECT_THAT(Known("one, two,ONE,"), ElementsAre(1));
  EXPECT_THAT(Known(",,two"), ElementsAre(2));
  EXPECT_THAT(Known(""), IsEmpty());
}

}  // namespace
