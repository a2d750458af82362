// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/line_log.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "support/files.h"

namespace desk {
namespace {

TEST(LineLog, EndsEachLineOnce) {
  const support::TempDir dir;
  LineLog log(dir / "log");
  log.Append("one");
  log.Append("two\n");
  log.Append("");
  EXPECT_EQ(support::ReadFile(dir / "log"), "one\ntwo\n\n");
}

TEST(LineLog, GoesOnAtTheEndOfAFile) {
  const support::TempDir dir;
  support::WriteFile(dir / "log", "old\n");
  LineLog(dir / "log").Append("new");
  EXPECT_EQ(support::ReadFile(dir / "log"), "old\nnew\n");
}

TEST(LineLog, LinesOfTwoThreadsDoNotMix) {
  const support::TempDir dir;
  LineLog one(dir / "log");
  LineLog two(dir / "log");
  const auto write = [](LineLog& log, char letter) {
    for (int i = 0; i < 500; ++i) {
      log.Append(std::string(300, letter));
    }
  };
  std::thread other([&] { write(one, 'a'); });
  write(two, 'b');
  other.join();
  std::istringstream text(support::ReadFile(dir / "log"));
  int lines = 0;
  for (std::string line; std::getline(text, line); ++lines) {
    EXPECT_EQ(line, std::string(300, line.at(0)));
  }
  EXPECT_EQ(lines, 1000);
}

TEST(LineLog, WithoutAFileItIsWithoutEffect) {
  const support::TempDir dir;
  LineLog log(dir / "no/such/place");
  log.Append("x");
  EXPECT_FALSE(support::Exists(dir / "no"));
}

}  // namespace
}  // namespace desk
