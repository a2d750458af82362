// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// What the fuzz targets have in common. A target is one file with LLVMFuzzerTestOneInput(); the
/// rest is linked with it: libFuzzer in a fuzzing build, a replay of its corpus in all others.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// Once for a process, in the sandbox, before the first input. Each target has its own.
void SetUp();

inline std::string Text(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// What stands before the first NUL byte: the text as the platform would hand it over.
std::string UpToNul(const std::string& text);

/// Cuts at newlines; what stands behind the last one is a line too.
std::vector<std::string> Lines(const std::string& text);
/// Cuts at the first "="; without one all is the first part.
std::pair<std::string, std::string> KeyAndValue(const std::string& line);

/// Ends the process, which a fuzzer takes for a finding.
void Require(bool condition, const char* what);

}  // namespace fuzz
