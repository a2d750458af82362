// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <dlog.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "desk/common/timestamp.h"
#include "support/files.h"

namespace {

class ClientLog : public testing::Test {
 protected:
  ClientLog() {
    unsetenv("TV_FAULTS");
    setenv("TV_LOG", m_path.c_str(), 1);
  }
  std::string Written() const { return support::ReadFile(m_path); }

  support::TempDir m_directory;
  const std::string m_path = m_directory / "daemon.log";
};

TEST_F(ClientLog, ARecordIsALineWithTimeProcessThreadLevelAndTag) {
  const int bytes = __dlog_print(LOG_ID_MAIN, DLOG_INFO, "orv-enabler", "%s = %d\n", "answer", 42);
  EXPECT_THAT(Written(), testing::MatchesRegex("[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:"
                                               "[0-9][0-9]\\.[0-9][0-9][0-9] +[0-9]+ +[0-9]+ "
                                               "I/orv-enabler: answer = 42\n"));
  EXPECT_EQ(bytes, static_cast<int>(Written().size()));
}

TEST_F(ClientLog, TimesAreInUtcWhateverTheZone) {
  setenv("TZ", "XXX-5:30", 1);
  tzset();
  const std::string before = desk::FormatTimestamp(desk::WallClock());
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "t", "x");
  const std::string after = desk::FormatTimestamp(desk::WallClock());
  const std::string written = Written().substr(0, 18);
  EXPECT_GE(written, before.substr(5, 5) + " " + before.substr(11, 12));
  EXPECT_LE(written, after.substr(5, 5) + " " + after.substr(11, 12));
}

TEST_F(ClientLog, EachLevelHasItsLetter) {
  std::string letters;
  for (int prio = DLOG_VERBOSE; prio <= DLOG_FATAL + 1; ++prio) {
    __dlog_print(LOG_ID_MAIN, prio, "t", "x");
  }
  const std::string written = Written();
  for (std::size_t at = 0; (at = written.find("/t: x\n", at)) != std::string::npos; ++at) {
    letters += written[at - 1];
  }
  EXPECT_EQ(letters, "VDIWEF?");
}

TEST_F(ClientLog, NewlinesWithinATextDoNotEndItsLine) {
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "t", "one\ntwo\\n\n");
  EXPECT_THAT(Written(), testing::EndsWith("I/t: one\\ntwo\\n\n"));
}

TEST_F(ClientLog, ALongTextIsWhole) {
  const std::string text(300000, 'x');
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "t", "<%s>\n", text.c_str());
  EXPECT_THAT(Written(), testing::EndsWith("I/t: <" + text + ">\n"));
}

TEST_F(ClientLog, TextsAroundTheSizeOfTheShortBufferAreWhole) {
  for (const std::size_t size : {1022U, 1023U, 1024U, 1025U}) {
    const std::string text(size, 'y');
    __dlog_print(LOG_ID_MAIN, DLOG_INFO, "t", "%s", text.c_str());
    EXPECT_THAT(Written(), testing::EndsWith("I/t: " + text + "\n"));
  }
}

TEST_F(ClientLog, BytesThatAreNoUtf8AreKept) {
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "t", "\xff\xfe\n");
  EXPECT_THAT(Written(), testing::EndsWith("I/t: \xff\xfe\n"));
}

}  // namespace
