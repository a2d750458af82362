// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/mount_command.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "desk/common/desk_error.h"

namespace desk::tv {
namespace {

constexpr char APPS[] = "/opt/usr/apps";

bool IsBelow(const std::string& path, const std::string& directory) {
  return path.compare(0, directory.size() + 1, directory + "/") == 0;
}

std::string RealPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                         std::free);
  if (real == nullptr) {
    throw DeskError(DeskError::FAILED, path + ": " + std::strerror(errno));
  }
  return real.get();
}

std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  std::size_t at = 0;
  for (std::size_t end = 0; end != std::string::npos; at = end + 1) {
    end = text.find(' ', at);
    words.push_back(text.substr(at, end == std::string::npos ? end : end - at));
  }
  return words;
}

}  // namespace

MountCommand ParseMountCommand(const std::string& command, const DeskPaths& paths) {
  const std::vector<std::string> words = Words(command);
  if (words.size() != 4 || words[0] != "-o" || words[1].empty()) {
    throw DeskError(DeskError::FAILED,
                    "the command must be \"-o <options> <image> <directory>\": " + command);
  }
  return {words[1], ResolveMountPath(words[2], paths), ResolveMountPath(words[3], paths)};
}

std::string ResolveMountPath(const std::string& path, const DeskPaths& paths) {
  const bool sandboxed = !IsBelow(path, paths.Apps()) && IsBelow(path, APPS);
  std::string real = RealPath(sandboxed ? paths.Root() + path : path);
  if (path.empty() || path.front() != '/' || !IsBelow(real, RealPath(paths.Apps()))) {
    throw DeskError(DeskError::FAILED, path + " is not in the package directory of this desk");
  }
  return real;
}

std::string OptionsWithoutLoop(const std::string& options) {
  std::string kept;
  for (std::size_t at = 0; at <= options.size();) {
    const std::size_t end = std::min(options.find(',', at), options.size());
    const std::string option = options.substr(at, end - at);
    if (option != "loop" && option.rfind("loop=", 0) != 0 && !option.empty()) {
      kept += (kept.empty() ? "" : ",") + option;
    }
    at = end + 1;
  }
  return kept;
}

}  // namespace desk::tv
