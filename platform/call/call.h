// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <exception>
#include <optional>
#include <type_traits>

#include "call/backend.h"
#include "call/value.h"

namespace platform {

/// One platform call, on the stack of the function that implements it. The record begins with the
/// constructor. It ends with the result, or without one in the destructor.
///
///   Call call(backend, "vconf_set_int", key, value);
///   return call.Run(-1, [&] { return Set(key, value); });
class Call {
 public:
  /// The name is as in the header ("vconf_get_int", "TCService::FindService") and must live as long
  /// as the call. Without a backend the call is neither recorded nor failed.
  template <typename... Args>
  Call(Backend* backend, const char* name, const Args&... args)
      : m_backend(backend), m_sink(backend == nullptr ? nullptr : backend->GetSink()) {
    m_record.name = name;
    if (m_sink != nullptr) {
      const std::array<Value, sizeof...(Args)> values = {Value(args)...};
      m_sink->Begin(m_record, values.data(), values.size());
    }
  }
  ~Call() { End(Value()); }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  /// Records a value that the call gives back through a pointer, behind the arguments.
  void AddOutput(const Value& value) {
    if (m_sink != nullptr) {
      m_sink->AddOutput(m_record, value);
    }
  }

  /// Does the work and returns its result. A fault takes the place of the work; `failure` is the
  /// result of a fault that names none, and of work that threw. A fault makes a bool true when its
  /// number is above 0, and a pointer `failure`. `show` gives the value that is recorded.
  template <typename T, typename Work, typename Show>
  T Run(T failure, Work work, Show show) {
    T result = failure;
    if (const std::optional<int> fault = TakeFault(ToNumber(failure))) {
      result = FromNumber(*fault, failure);
    } else {
      try {
        result = static_cast<T>(work());
      } catch (const std::exception& e) {
        OnException(e);
      }
    }
    End(show(result));
    return result;
  }
  template <typename T, typename Work>
  T Run(T failure, Work work) {
    return Run(failure, work, [](T result) { return Value(result); });
  }

  /// The same for a function without a result.
  template <typename Work>
  void RunVoid(Work work) {
    if (TakeFault(-1).has_value()) {
      return;
    }
    try {
      work();
    } catch (const std::exception& e) {
      OnException(e);
    }
  }

  /// Records the result of a call that no fault can fail, and returns it.
  template <typename T>
  T Return(T result) {
    End(Value(result));
    return result;
  }

 private:
  std::optional<int> TakeFault(int usualFailure);
  void OnException(const std::exception& exception);
  void End(const Value& result);

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
      return number > 0;
    } else if constexpr (std::is_unsigned_v<T>) {
      return number < 0 ? 0 : static_cast<T>(number);
    } else {
      return static_cast<T>(number);
    }
  }

  Backend* const m_backend;
  Sink* m_sink;  ///< null once the record has ended
  CallRecord m_record;
};

}  // namespace platform
