// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace support {

/// A list of log texts contains exactly this text: EXPECT_THAT(fake::LogTexts(),
/// HasLog("...")).
MATCHER_P(HasLog, text,
          std::string(negation ? "does not hold" : "holds") + " the record \"" + text + "\"") {
  return std::find(arg.begin(), arg.end(), text) != arg.end();
}

/// Contains this text exactly `times` times.
MATCHER_P2(HasLogTimes, text, times,
           std::string("holds ") + std::to_string(times) + " times the record \"" + text + "\"") {
  return std::count(arg.begin(), arg.end(), text) == times;
}

/// Contains these texts in this order, possibly with others in between.
MATCHER_P(HasLogsInOrder, texts,
          "holds the records in this order: " + testing::PrintToString(texts)) {
  auto next = arg.begin();
  for (const auto& text : texts) {
    next = std::find(next, arg.end(), text);
    if (next == arg.end()) {
      *result_listener << "none in place for \"" << text << "\"";
      return false;
    }
    ++next;
  }
  return true;
}

/// The texts for HasLogsInOrder.
inline std::vector<std::string> Texts(std::vector<std::string> texts) {
  return texts;
}

}  // namespace support
