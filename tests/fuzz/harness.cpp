// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/harness.h"

#include <cstdio>
#include <cstdlib>

#include "support/sandbox.h"

extern "C" int LLVMFuzzerInitialize(int*, char*** argv) {
  support::EnterSandbox(*argv);
  fuzz::SetUp();
  return 0;
}

namespace fuzz {

std::string UpToNul(const std::string& text) {
  return text.substr(0, text.find('\0'));
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  while (true) {
    const std::size_t end = text.find('\n', begin);
    lines.push_back(text.substr(begin, end - begin));
    if (end == std::string::npos) {
      return lines;
    }
    begin = end + 1;
  }
}

std::pair<std::string, std::string> KeyAndValue(const std::string& line) {
  const std::size_t equals = line.find('=');
  return {line.substr(0, equals), equals == std::string::npos ? "" : line.substr(equals + 1)};
}

void Require(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "not true: %s\n", what);
    std::abort();
  }
}

}  // namespace fuzz
