// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "call/call.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TestBackend : public Backend, public Sink {
 public:
  Sink* GetSink() override { return recording ? this : nullptr; }
  std::optional<int> TakeFault(const char* call, int usualFailure) override {
    asked.push_back(call);
    return fails ? std::optional<int>(fault.value_or(usualFailure)) : std::nullopt;
  }
  void OnException(const char* call, const std::exception& exception) override {
    exceptions.push_back(std::string(call) + ": " + exception.what());
    if (rethrows) {
      throw;
    }
  }

  void Begin(CallRecord& record, const Value* args, std::size_t count) override {
    record.text = std::string(record.name) + "(";
    for (std::size_t i = 0; i < count; ++i) {
      record.text += " " + FormatText(args[i]);
    }
  }
  void AddOutput(CallRecord& record, const Value& value) override {
    record.text += " ->" + FormatText(value);
  }
  void End(CallRecord& record, const Value& result) override {
    calls.push_back(record.text + " ) = " + FormatText(result));
  }

  bool recording = true;
  bool fails = false;
  bool rethrows = false;
  std::optional<int> fault;
  std::vector<std::string> asked;
  std::vector<std::string> exceptions;
  std::vector<std::string> calls;
};

class CallTest : public testing::Test {
 protected:
  template <typename T>
  T Run(T failure, T result) {
    Call call(&m_backend, "name", 1, "two", nullptr);
    return call.Run(failure, [&] {
      ++m_works;
      return result;
    });
  }

  TestBackend m_backend;
  int m_works = 0;
};

TEST_F(CallTest, IsRecordedWithItsArgumentsOutputsAndResult) {
  {
    Call call(&m_backend, "name", 1, "two", nullptr);
    EXPECT_EQ(5, call.Run(-1, [&] {
      call.AddOutput(3);
      return 5;
    }));
  }
  EXPECT_THAT(m_backend.calls, ElementsAre("name( 1 two null ->3 ) = 5"));
}

TEST_F(CallTest, WithoutAResultIsRecordedOnce) {
  Call(&m_backend, "name").RunVoid([&] { ++m_works; });
  EXPECT_EQ(1, m_works);
  EXPECT_THAT(m_backend.calls, ElementsAre("name( ) = void"));
}

TEST_F(CallTest, CanBeRecordedWithAnotherValueThanItsResult) {
  Call call(&m_backend, "name");
  call.Run(
      0, [] { return 4; }, [](int) { return Value::OfHandle("thing", 4); });
  EXPECT_THAT(m_backend.calls, ElementsAre("name( ) = thing#4"));
}

TEST_F(CallTest, AFaultReplacesTheWork) {
  m_backend.fails = true;
  m_backend.fault = -7;
  EXPECT_EQ(-7, Run(-1, 5));
  EXPECT_EQ(0, m_works);
  EXPECT_THAT(m_backend.asked, ElementsAre("name"));
  EXPECT_THAT(m_backend.calls, ElementsAre("name( 1 two null ) = -7"));
  Call(&m_backend, "void").RunVoid([&] { ++m_works; });
  EXPECT_EQ(0, m_works);
}

TEST_F(CallTest, AFaultWithoutAResultIsTheUsualFailure) {
  m_backend.fails = true;
  EXPECT_EQ(-1, Run(-1, 5));
}

TEST_F(CallTest, AFaultMakesABoolTrueAboveZeroOnly) {
  m_backend.fails = true;
  for (const int number : {-1, 0}) {
    m_backend.fault = number;
    EXPECT_FALSE(Run(true, true));
  }
  m_backend.fault = 1;
  EXPECT_TRUE(Run(false, false));
}

TEST_F(CallTest, AFaultMakesAPointerItsFailure) {
  m_backend.fails = true;
  m_backend.fault = 5;
  int number = 0;
  EXPECT_EQ(nullptr, Run<int*>(nullptr, &number));
}

TEST_F(CallTest, ANegativeFaultMakesAnUnsignedNumberZero) {
  m_backend.fails = true;
  m_backend.fault = -5;
  EXPECT_EQ(0U, Run(1U, 2U));
  m_backend.fault = 5;
  EXPECT_EQ(5U, Run(1U, 2U));
}

TEST_F(CallTest, WorkThatThrowsMakesTheUsualFailure) {
  Call call(&m_backend, "name");
  EXPECT_EQ(-1, call.Run(-1, []() -> int { throw std::runtime_error("boom"); }));
  EXPECT_THAT(m_backend.exceptions, ElementsAre("name: boom"));
  EXPECT_THAT(m_backend.calls, ElementsAre("name( ) = -1"));
}

TEST_F(CallTest, TheBackendCanRethrowWhatTheWorkThrew) {
  m_backend.rethrows = true;
  {
    Call call(&m_backend, "name");
    EXPECT_THROW(call.RunVoid([] { throw std::runtime_error("boom"); }), std::runtime_error);
  }
  EXPECT_THAT(m_backend.calls, ElementsAre("name( ) = void"));
}

TEST_F(CallTest, FailsAlsoWhileItIsNotRecorded) {
  m_backend.recording = false;
  m_backend.fails = true;
  m_backend.fault = -7;
  EXPECT_EQ(-7, Run(-1, 5));
  EXPECT_THAT(m_backend.calls, IsEmpty());
}

TEST_F(CallTest, WithoutABackendOnlyWorks) {
  Call call(nullptr, "name", 1);
  EXPECT_EQ(5, call.Run(-1, [] { return 5; }));
  EXPECT_THROW(call.Run(-1, []() -> int { throw std::runtime_error("boom"); }), std::runtime_error);
}

TEST_F(CallTest, ThatNoFaultFailsDoesNotTakeOne) {
  m_backend.fails = true;
  {
    Call call(&m_backend, "name");
    EXPECT_TRUE(call.Return(true));
  }
  EXPECT_THAT(m_backend.asked, IsEmpty());
  EXPECT_THAT(m_backend.calls, ElementsAre("name( ) = true"));
}

}  // namespace
}  // namespace platform
