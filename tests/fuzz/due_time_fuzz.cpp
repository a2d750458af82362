// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Due times: any text can be read, and a written time is read back. The input is a text; a number
// at its beginning, if any, is a time.
#include <cstdlib>
#include <limits>

#include "fake/control/fake.h"
#include "fuzz/harness.h"
#include "utils/TimeUtils.h"

namespace {

/// Years of four digits, the only ones that the text can represent.
constexpr long long YEAR_ONE_THOUSAND = -30610224000;
constexpr long long YEAR_TEN_THOUSAND = 253402300800;

}  // namespace

void fuzz::SetUp() {
  fake::SetRecording(false);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Text(data, size);
  const std::time_t read = TimeUtils::GetEpochTime(text);
  TimeUtils::GetUTCTimeString(&read);
  const long long number = std::strtoll(text.c_str(), nullptr, 10);
  const auto written = static_cast<std::time_t>(number);
  const std::string again = TimeUtils::GetUTCTimeString(&written);
  if (number >= YEAR_ONE_THOUSAND && number < YEAR_TEN_THOUSAND) {
    fuzz::Require(TimeUtils::GetEpochTime(again) == written, "a written time is read back");
  }
  fake::ClearLog();
  return 0;
}
