// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <optional>
#include <type_traits>

#include "client/journal.h"
#include "client/journal_text.h"

namespace desk {

/// One platform call, from its entry to its return: makes sure that the main loop's first run is
/// noticed, asks the fault table, keeps the work's exceptions from the caller, and writes the
/// journal's line when it goes out of scope. Lives on the stack of the call.
///
/// In the journal what a call gave back through a pointer comes after its arguments.
class Call {
 public:
  /// name as in the header ("vconf_get_int", "TCService::FindService"), alive for the whole call.
  template <typename... Args>
  explicit Call(const char* name, const Args&... args) : Call(name, Tag()) {
    if (m_journal != nullptr) {
      (Append(args), ...);
    }
  }
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  /// Adds to the arguments what the call gives back through a pointer.
  template <typename T>
  void Out(const T& value) {
    if (m_journal != nullptr) {
      Append(value);
    }
  }

  /// Does the work and returns its result; the fault's result without doing it when the call is to
  /// fail; and failure when the work threw, which is logged.
  template <typename T, typename Work>
  T Run(T failure, Work work) {
    const std::optional<int> fault = Fault(ToNumber(failure));
    if (fault.has_value()) {
      return Finish(FromNumber(*fault, failure));
    }
    try {
      return Finish(static_cast<T>(work()));
    } catch (const std::exception& e) {
      LogFailure(e);
      return Finish(failure);
    }
  }

  /// As above, for a call without a result.
  template <typename Work>
  void RunVoid(Work work) {
    if (Fault(-1).has_value()) {
      return;
    }
    try {
      work();
    } catch (const std::exception& e) {
      LogFailure(e);
    }
  }

  /// For calls whose failure is not told by the result alone: what the fault table orders.
  std::optional<int> Fault(int usualFailure);
  /// Notes the result in the journal and gives it back.
  template <typename T>
  T Finish(T result) {
    if (m_journal != nullptr) {
      m_entry.result = JournalText(result);
    }
    return result;
  }
  void LogFailure(const std::exception& failure);

 private:
  struct Tag {};
  Call(const char* name, Tag);

  template <typename T>
  static int ToNumber(T failure) {
    if constexpr (std::is_pointer_v<T>) {
      return 0;
    } else {
      return static_cast<int>(failure);
    }
  }
  template <typename T>
  static T FromNumber(int number, T failure) {
    if constexpr (std::is_pointer_v<T>) {
      return failure;
    } else if constexpr (std::is_same_v<T, bool>) {
      return number > 0;  // a negative number is an error's
    } else {
      return static_cast<T>(number);
    }
  }

  template <typename T>
  void Append(const T& value) {
    if (!m_entry.args.empty()) {
      m_entry.args += ',';
    }
    m_entry.args += JournalText(value);
  }

  Journal* const m_journal;
  Journal::Entry m_entry;
};

}  // namespace desk
