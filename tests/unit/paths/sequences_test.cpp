// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Everything that the daemon does on each of its paths, as one complete sequence of platform calls
// and log records for each thread, and the state that it leaves behind: compared with a text file
// for each path. A call or record too many, one too few, another order or another argument differs.
//
// A failure writes what it found below the build directory. After an intended change, read the
// difference and copy that file to sequences/.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fault/paths.h"
#include "support/files.h"
#include "unit/paths/more_paths.h"
#include "unit/paths/path_runner.h"

namespace {

/// The starts of the fault sweep race with the scheduler's thread.
std::vector<fault::Path> Paths() {
  std::vector<fault::Path> paths = MorePaths();
  for (const fault::Path& path : fault::Paths()) {
    if (!path.isRace && !path.IsStart()) {
      paths.push_back(path);
    }
  }
  return paths;
}

class APath : public testing::TestWithParam<std::string> {};

TEST_P(APath, IsTheRecordedSequenceOfCallsAndRecords) {
  const paths::Record record = paths::RunPath(FindAnyPath(GetParam()));
  EXPECT_TRUE(record.reachedMainLoop) << "the daemon did not reach its main loop";
  const std::string& found = record.text;
  const std::string file = "/" + GetParam() + ".txt";
  const bool isRecorded = support::Exists(ORV_SEQUENCES + file);
  const std::string expected = isRecorded ? support::ReadFile(ORV_SEQUENCES + file) : "";
  if (found != expected) {
    support::WriteFile(ORV_FOUND_SEQUENCES + file, found);
  }
  EXPECT_EQ(found, expected) << "found: " << ORV_FOUND_SEQUENCES << file;
}

std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const fault::Path& path : Paths()) {
    names.push_back(path.name);
  }
  return names;
}

std::string NameOf(const testing::TestParamInfo<std::string>& path) {
  return path.param;
}

INSTANTIATE_TEST_SUITE_P(Daemon, APath, testing::ValuesIn(Names()), NameOf);

}  // namespace
