// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// Run, update and stop of every type reach the inner layer after their entry line and before the
// type's own work.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "app_info/app_type/ChFeederCustom.h"
#include "app_info/app_type/ChFeederStandard.h"
#include "app_info/app_type/CustomUIExtended.h"
#include "app_info/app_type/CustomUIStandard.h"
#include "fake/control/calls.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"
#include "layers.h"

namespace {

using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/// Events that the custom feeder requested from the scheduler.
std::vector<int>& Events() {
  static std::vector<int> events;
  return events;
}

/// All effects so far, by kind.
struct Deeds {
  std::vector<std::string> log = fake::LogTexts();
  std::vector<std::string> calls = fake::CallNames();
  std::vector<int> events = Events();
};

/// An inner layer that records when it was called.
class Witness final : public AppTypeDecorator {
 public:
  struct Testimony {
    std::string operation;
    Deeds before;
  };

  explicit Witness(AppInfo* inner) : AppTypeDecorator(inner, "witness", "") {}
  static void Release(AppInfo* layer) { delete static_cast<Witness*>(layer); }
  ReleaseFunction GetReleaseFunction() const override { return &Release; }

  void RunOperation(bool bStarted) override {
    m_testimonies.push_back({bStarted ? "run at start" : "run", {}});
  }
  void UpdateOperation() override { m_testimonies.push_back({"update", {}}); }
  void StopOperation() override { m_testimonies.push_back({"stop", {}}); }

  std::vector<Testimony> m_testimonies;

 private:
  ~Witness() = default;
};

struct Type {
  const char* name;
  AppInfo* (*decorate)(AppInfo*, const std::string& value);
  const char* value;   ///< in force
  const char* staged;  ///< another value, which the type treats as a change
  const char* entry;   ///< the first line of an update
};

struct Operation {
  const char* name;
  void (*act)(AppInfo&);
  const char* testimony;
};

// For the names of the tests.
std::ostream& operator<<(std::ostream& stream, const Type& type) {
  return stream << type.name;
}
std::ostream& operator<<(std::ostream& stream, const Operation& operation) {
  return stream << operation.name;
}

using Case = std::tuple<Type, Operation>;

std::string NameOf(const Case& which) {
  return std::string(std::get<0>(which).name) + std::get<1>(which).name;
}

class LayerOrder : public testing::TestWithParam<Case> {
 protected:
  LayerOrder()
      : m_witness(new Witness(layers::NewRecord())),
        m_layer(GetType().decorate(m_witness, GetType().value)) {
    fake::StoreKey("db/orv_channel/custom_ui_type", std::string());
    layers::StageValue(*m_layer, GetType().staged);
    Events().clear();
    fake::ClearLog();
    fake::ClearCalls();
  }
  static Type GetType() { return std::get<0>(GetParam()); }
  static Operation GetOperation() { return std::get<1>(GetParam()); }
  std::vector<std::string> EntryLines() {
    const std::string operation = GetOperation().testimony;
    if (operation == "update") {
      return {GetType().entry};
    }
    if (operation == "stop") {
      return {"[Info] In"};
    }
    return {};
  }

  Witness* const m_witness;
  const layers::Chain<AppInfo> m_layer;
};

TEST_P(LayerOrder, TheInnerLayerActsBehindTheEntryLineAndBeforeTheTypesOwnWork) {
  GetOperation().act(*m_layer);
  ASSERT_THAT(m_witness->m_testimonies, SizeIs(1));
  const Witness::Testimony& testimony = m_witness->m_testimonies[0];
  EXPECT_EQ(testimony.operation, GetOperation().testimony);
  EXPECT_EQ(testimony.before.log, EntryLines());
  EXPECT_THAT(testimony.before.calls, IsEmpty());
  EXPECT_THAT(testimony.before.events, IsEmpty());
  // Afterwards the type did its own work.
  const Deeds after;
  EXPECT_GT(after.log.size() + after.calls.size() + after.events.size(), EntryLines().size());
}

const Type TYPES[] = {
    {"ChFeederStandard", &ChFeederStandard::DecorateAppType, "basic", "other",
     "[Debug] Applied Metadata : basic, Updatable Metadata : other"},
    {"ChFeederCustom",
     [](AppInfo* inner, const std::string& value) {
       return ChFeederCustom::DecorateAppType(inner, value,
                                              [](int eType, void*) { Events().push_back(eType); });
     },
     "basic", "extended", "[Info] In"},
    {"CustomUIStandard", &CustomUIStandard::DecorateAppType, "info", "channel",
     "[Debug] Applied Metadata : info, Updatable Metadata : channel"},
    {"CustomUIExtended", &CustomUIExtended::DecorateAppType, "epg", "channel_list",
     "[Debug] Applied Metadata : epg, Updatable Metadata : channel_list"}};

const Operation OPERATIONS[] = {
    {"Run", [](AppInfo& layer) { layer.RunOperation(false); }, "run"},
    {"RunAtStart", [](AppInfo& layer) { layer.RunOperation(true); }, "run at start"},
    {"Update", [](AppInfo& layer) { layer.UpdateOperation(); }, "update"},
    {"Stop", [](AppInfo& layer) { layer.StopOperation(); }, "stop"}};

INSTANTIATE_TEST_SUITE_P(Types, LayerOrder,
                         testing::Combine(testing::ValuesIn(TYPES), testing::ValuesIn(OPERATIONS)),
                         [](const testing::TestParamInfo<Case>& which) {
                           return NameOf(which.param);
                         });

}  // namespace
