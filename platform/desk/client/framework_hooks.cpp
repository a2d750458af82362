// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "client/framework_hooks.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <mutex>

#include "client/environment.h"
#include "client/faults.h"
#include "client/journal.h"
#include "framework/hooks.h"

namespace desk {
namespace {

bool IsNumber(const std::string& text) {
  const std::size_t start = text[0] == '-' ? 1 : 0;
  return text.size() > start &&
         std::all_of(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(),
                     [](unsigned char c) { return std::isdigit(c) != 0; });
}

// The framework gives every value as text.
std::string ToJson(const std::string& text) {
  if (text == "true" || text == "false" || text == "null" || IsNumber(text)) {
    return text;
  }
  std::string quoted;
  AppendQuoted(quoted, text);
  return quoted;
}

// The number that the framework keeps for us is where the call's entry is, owned by the call.
unsigned long Begin(const char* call, const std::vector<std::string>& args) {
  Journal* journal = Journal::Get();
  if (journal == nullptr) {
    return 0;
  }
  auto entry = std::make_unique<Journal::Entry>();
  entry->call = call;
  for (const std::string& arg : args) {
    entry->args += (entry->args.empty() ? "" : ",") + ToJson(arg);
  }
  journal->Begin(*entry);
  return reinterpret_cast<unsigned long>(entry.release());
}

bool Fails(const char* call, int* result) {
  const auto fault = CheckFault(call, 0);
  *result = fault.value_or(*result);
  return fault.has_value();
}

void End(unsigned long number, const std::string& result) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): made from a pointer in Begin()
  const std::unique_ptr<Journal::Entry> entry(reinterpret_cast<Journal::Entry*>(number));
  if (entry == nullptr) {
    return;
  }
  entry->result = ToJson(result);
  Journal::Get()->Write(*entry);
}

}  // namespace

void HookFramework() {
  static std::once_flag hooked;
  std::call_once(hooked, [] {
    static constexpr framework::Hooks hooks = {Begin, Fails, End};
    if (!Environment::Get().journal.empty() || !Environment::Get().faults.empty()) {
      framework::SetHooks(&hooks);
    }
  });
}

}  // namespace desk
