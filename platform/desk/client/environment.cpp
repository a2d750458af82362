// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/client/environment.h"

#include <cstdlib>

#include "desk/common/paths.h"

namespace desk::client {
namespace {

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

Environment::Role ReadRole() {
  const std::string role = Variable("TV_ROLE");
  if (role == "daemon") {
    return Environment::Role::Daemon;
  }
  return role == "app" ? Environment::Role::App : Environment::Role::None;
}

// The daemon's prefix may be empty: its sandbox maps the desk's directories to their places on a
// television. An app has only the desk's directory.
std::string ReadPrefix() {
  const char* prefix = std::getenv("TV_PREFIX");
  return prefix == nullptr ? Variable("TV_ROOT") : std::string(prefix);
}

// An app id is the package id, a "." and a name.
std::string ReadPackage(Environment::Role role) {
  if (role == Environment::Role::Daemon) {
    return DeskPaths::DAEMON_ID;
  }
  const std::string app = Variable("TV_APP_ID");
  return app.substr(0, app.find('.'));
}

Environment Read() {
  Environment environment;
  environment.role = ReadRole();
  environment.busAddress = Variable("TV_BUS");
  environment.prefix = ReadPrefix();
  environment.package = ReadPackage(environment.role);
  environment.faults = Variable("TV_FAULTS");
  environment.log = Variable("TV_LOG");
  if (environment.role == Environment::Role::Daemon) {
    environment.journal = Variable("TV_JOURNAL");
  }
  return environment;
}

}  // namespace

const Environment& Environment::Get() {
  // Never destroyed: other threads may still log while the process ends.
  static const Environment* const environment = new Environment(Read());
  return *environment;
}

}  // namespace desk::client
