// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Replaces libFuzzer: passes each file of the given files and directories to the target once.
#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "fuzz/harness.h"
#include "support/files.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> FilesOf(const std::string& path) {
  if (!fs::is_directory(path)) {
    return {path};
  }
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(path)) {
    files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  int replayed = 0;
  for (int i = 1; i < argc; ++i) {
    for (const std::string& file : FilesOf(argv[i])) {
      // Printed before the input runs, so that the file is known after a crash.
      std::printf("%s\n", file.c_str());
      std::fflush(stdout);
      const std::string input = support::ReadFile(file);
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
      ++replayed;
    }
  }
  std::printf("%d inputs\n", replayed);
  return replayed > 0 ? 0 : 1;
}
