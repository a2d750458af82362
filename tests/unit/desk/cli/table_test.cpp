// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/table.h"

#include <gtest/gtest.h>

#include <sstream>

#include "desk/cli/progress_bar.h"

namespace desk::cli {
namespace {

std::string Printed(const Table& table) {
  std::ostringstream out;
  table.Print(out);
  return out.str();
}

TEST(CliTable, ColumnsAreAsWideAsTheirWidestCell) {
  Table table({"APP", "PID"});
  table.Add({"a", "1"});
  table.Add({"longer", "22"});
  EXPECT_EQ(Printed(table), "APP     PID\na       1\nlonger  22\n");
}

TEST(CliTable, NumbersStandFlushRight) {
  Table table({"ID", "NAME"});
  table.AlignRight(0);
  table.Add({"1", "a"});
  table.Add({"1000", "b"});
  EXPECT_EQ(Printed(table), "  ID  NAME\n   1  a\n1000  b\n");
}

TEST(CliTable, NoLineEndsInBlanks) {
  Table table({"A", "LONG HEAD"});
  table.Add({"x", "y"});
  EXPECT_EQ(Printed(table), "A  LONG HEAD\nx  y\n");
}

TEST(CliTable, AnEmptyCellIsADash) {
  Table table({"A", "B"});
  table.Add({"", "b"});
  table.Add({"a"});
  EXPECT_EQ(Printed(table), "A  B\n-  b\na  -\n");
}

TEST(CliTable, AWideCharacterCountsOnce) {
  Table table({"A", "B"});
  table.Add({"\xc3\xa4\xc3\xb6", "1"});
  table.Add({"ab", "2"});
  EXPECT_EQ(Printed(table), "A   B\n\xc3\xa4\xc3\xb6  1\nab  2\n");
}

TEST(CliTable, AValueCannotBreakTheLineOrSteerTheTerminal) {
  EXPECT_EQ(OneLine("a\nb\tc\rd\x1b[31m"), "a\\nb\\tc\\rd\\x1b[31m");
}

TEST(CliTable, ATableWithoutRowsIsItsHead) {
  EXPECT_EQ(Printed(Table({"A", "B"})), "A  B\n");
}

TEST(CliProgressBar, TheBarIsDrawnOverItselfAndTakenAway) {
  std::ostringstream out;
  {
    ProgressBar bar(out, "installing");
    bar.Show(50);
  }
  EXPECT_EQ(out.str(), "\rinstalling [###############...............] 50%\x1b[K\r\x1b[K");
}

TEST(CliProgressBar, WithoutProgressNothingIsDrawn) {
  std::ostringstream out;
  { const ProgressBar bar(out, "installing"); }
  EXPECT_EQ(out.str(), "");
}

TEST(CliProgressBar, APercentageBeyondItsBoundsIsCutOff) {
  std::ostringstream out;
  ProgressBar bar(out, "x");
  bar.Show(250);
  EXPECT_EQ(out.str(), "\rx [" + std::string(30, '#') + "] 100%\x1b[K");
}

}  // namespace
}  // namespace desk::cli
