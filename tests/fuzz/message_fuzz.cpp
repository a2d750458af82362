// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Messages at the scheduler's port.
//   >app port      the sender and its reply port; either may be missing
//   key=value      a string
//   #N key=value   a value of the bundle type N
#include <cstdlib>

#include "app_info/AppInfoCache.h"
#include "app_info/ORVAppInfo.h"
#include "app_info/app_type/ChFeederCustom.h"
#include "controller/ORVAppCreator.h"
#include "controller/ORVScheduler.h"
#include "fake/control/fake.h"
#include "fuzz/daemon_world.h"
#include "fuzz/harness.h"
#include "support/drain.h"

namespace {

struct Message {
  std::string app;
  std::string replyPort;
  std::vector<fake::BundleEntry> entries;
};

/// Values of these types are not texts, and the platform does not treat them as texts.
bool IsArray(int type) {
  return (type & BUNDLE_TYPE_ARRAY) != 0;
}

fake::BundleEntry ParseEntry(std::string line) {
  int type = BUNDLE_TYPE_STR;
  if (line.front() == '#') {
    char* end = nullptr;
    type = static_cast<int>(std::strtol(line.c_str() + 1, &end, 0));
    line = *end == ' ' ? end + 1 : end;
  }
  const auto [key, value] = fuzz::KeyAndValue(line);
  return {key, type,
          IsArray(type) ? std::vector<std::string>{value, key} : std::vector<std::string>{value}};
}

Message Parse(const std::string& text) {
  Message message;
  for (const std::string& raw : fuzz::Lines(text)) {
    const std::string line = fuzz::UpToNul(raw);
    if (line.empty()) {
      continue;
    }
    if (line.front() == '>') {
      const std::size_t blank = line.find(' ');
      message.app = line.substr(1, blank == std::string::npos ? blank : blank - 1);
      message.replyPort = blank == std::string::npos ? "" : line.substr(blank + 1);
    } else {
      message.entries.push_back(ParseEntry(line));
    }
  }
  return message;
}

const char* NullIfEmpty(const std::string& text) {
  return text.empty() ? nullptr : text.c_str();
}

}  // namespace

void fuzz::SetUp() {
  MakeWorld();
  ORVAppCreator::GetInstance();
  AppInfo* record = ChFeederCustom::DecorateAppType(
      new ORVAppInfo({"fuzzpackag", "fuzzpackag.App", "", "fuzzpackag.Feed", "1"}), "standard",
      nullptr);
  AppInfoCache::GetInstance()->AddAppInfo("fuzzpackag", record, true);
  ORVScheduler::GetInstance();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Message message = Parse(fuzz::Text(data, size));
  fake::Incoming incoming;
  incoming.port = "orv_scheduler_command_port";
  incoming.app = NullIfEmpty(message.app);
  incoming.replyPort = NullIfEmpty(message.replyPort);
  incoming.message = message.entries;
  fuzz::Require(fake::SendMessage(incoming), "the port is there");
  support::Drain(*ORVScheduler::GetInstance());
  fuzz::Require(fake::SentMessages().size() <= 1, "a message has one reply at most");
  fuzz::ForgetInput();
  return 0;
}
