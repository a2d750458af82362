// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/package/program_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace desk {
namespace {

constexpr std::size_t HEAD_SIZE = 256;  // what the kernel reads of a script's first line

std::string InterpreterOf(const std::string& head) {
  const std::string line = head.substr(
      2, head.find('\n') == std::string::npos ? std::string::npos : head.find('\n') - 2);
  const std::size_t start = line.find_first_not_of(" \t");
  if (start == std::string::npos) {
    return {};
  }
  return line.substr(start, line.find_first_of(" \t", start) - start);
}

std::optional<ProgramTrouble> WhyNoScript(const std::string& head, const std::string& path) {
  const std::string interpreter = InterpreterOf(head);
  const std::string name = std::filesystem::path(path).filename().string();
  const std::size_t end = head.find('\n');
  if (end != std::string::npos && end > 0 && head[end - 1] == '\r') {
    std::string shown = interpreter;
    if (!shown.empty() && shown.back() == '\r') {
      shown.replace(shown.size() - 1, 1, "\\r");
      return ProgramTrouble{"its interpreter `" + shown + "` does not exist",
                            "Convert the line ends: sed -i 's/\\r$//' " + name};
    }
    return ProgramTrouble{"its first line ends with a carriage return, which its interpreter " +
                              interpreter + " takes for a part of the argument",
                          "Convert the line ends: sed -i 's/\\r$//' " + name};
  }
  if (access(interpreter.c_str(), X_OK) != 0) {
    return ProgramTrouble{"its interpreter `" + interpreter + "`: " + std::strerror(errno),
                          "Correct the first line, or install the interpreter."};
  }
  return std::nullopt;
}

}  // namespace

std::optional<ProgramTrouble> WhyNotRunnable(const std::string& path) {
  std::string head(HEAD_SIZE, '\0');
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return ProgramTrouble{"the file cannot be read: " + std::string(std::strerror(errno)),
                          "Check that it exists and is readable."};
  }
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(file.gcount()));
  if (head.compare(0, 2, "#!") == 0) {
    return WhyNoScript(head, path);
  }
  if (head.compare(0, 4,
                   "\x7f"
                   "ELF") == 0) {
    return std::nullopt;
  }
  if (std::filesystem::path(path).extension() == ".js") {
    return ProgramTrouble{"it is a JavaScript file without a line that names its interpreter",
                          "Begin it with the line #!/usr/bin/env node"};
  }
  return ProgramTrouble{"it is neither a script with a first line like #!/bin/sh nor a binary",
                        "Add the line, or build the program for this machine."};
}

}  // namespace desk
