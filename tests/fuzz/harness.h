// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Common code of the fuzz targets. A target is one file with LLVMFuzzerTestOneInput(); the
/// rest is linked with it: libFuzzer in a fuzzing build, a replay of its corpus in other builds.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// Called once per process, in the sandbox, before the first input. Each target defines its own.
void SetUp();

inline std::string Text(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// The text up to the first NUL byte, as the platform would pass it.
std::string UpToNul(const std::string& text);

/// Splits at newlines; the text after the last one is a line too.
std::vector<std::string> Lines(const std::string& text);
/// Splits at the first "="; without one, everything is the first part.
std::pair<std::string, std::string> KeyAndValue(const std::string& line);

/// Aborts the process if the condition is false, which a fuzzer reports as a finding.
void Require(bool condition, const char* what);

}  // namespace fuzz
