// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "desk/cli/commands.h"

int main(int argc, char** argv) {
  // When the reader of the output exits, tv ends silently, like any filter.
  std::signal(SIGPIPE, SIG_DFL);
  std::ios::sync_with_stdio(false);
  const std::vector<std::string> words(argv + 1, argv + argc);
  return desk::cli::RunTv(words, std::cout, std::cerr, isatty(STDOUT_FILENO) == 1);
}
