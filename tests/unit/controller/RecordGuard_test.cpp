// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/RecordGuard.h"

#include <optional>

#include "controller/ORVAppOperator.h"
#include "support/other_thread.h"
#include "unit/controller/creator_fixture.h"
#include "unit/controller/gate.h"
#include "unit/controller/recording_app.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNull;

TEST(RecordGuard, KeepsAnotherThreadOutUntilItIsReleased) {
  std::optional<RecordGuard> guard("a");
  support::OtherThread other([] { const RecordGuard second("a"); });
  ASSERT_TRUE(other.WaitUntilItStops());
  EXPECT_FALSE(other.Done());
  guard.reset();
  other.Join();
  EXPECT_TRUE(other.Done());
}

TEST(RecordGuard, IsHeldUntilTheThreadHasReleasedItAsOftenAsTaken) {
  std::optional<RecordGuard> guard("a");
  std::optional<RecordGuard> again("a");
  support::OtherThread other([] { const RecordGuard second("a"); });
  ASSERT_TRUE(other.WaitUntilItStops());
  again.reset();
  ASSERT_TRUE(other.WaitUntilItStops());
  EXPECT_FALSE(other.Done());
  guard.reset();
  other.Join();
}

TEST(RecordGuard, LetsOtherThreadsUseOtherPackages) {
  const RecordGuard guard("a");
  support::OtherThread other([] {
    const RecordGuard prefix("");
    const RecordGuard longer("ab");
    const RecordGuard upper("A");
  });
  EXPECT_TRUE(support::WaitFor([&] { return other.Done(); }, "the guards of other packages"));
}

/// What a record with a GatedLayer did, in order; guarded by the gates of its test.
std::vector<std::string>& Journal() {
  static std::vector<std::string> s_journal;
  return s_journal;
}

/// A layer whose Stop passes a gate.
class GatedLayer final : public AppTypeDecorator {
 public:
  GatedLayer(AppInfo* inner, const std::string& value) : AppTypeDecorator(inner, "gated", value) {}
  static void Release(AppInfo* layer) {
    Journal().push_back("release");
    delete static_cast<GatedLayer*>(layer);
  }
  void RunOperation(bool) override { Journal().push_back("run"); }
  void StopOperation() override {
    Journal().push_back("stop");
    s_gate->Pass();
    // The memory of the layer is not freed yet.
    Journal().push_back("stopped " + m_AppliedAppType.second);
  }
  ReleaseFunction GetReleaseFunction() const override { return &Release; }

  static inline Gate* s_gate = nullptr;

 private:
  ~GatedLayer() = default;
};

/// A record with two layers, one of them gated, while another thread is inside its Stop.
class RecordInUse : public CreatorTest {
 protected:
  static constexpr char OUTER[] = "outer";
  static inline const std::string PACKAGE = "com.example.a-package-whose-id-is-long";

  void SetUp() override {
    Journal().clear();
    GatedLayer::s_gate = &m_gate;
    Creator().RegisterAppType(
        "gated", {[](AppInfo* inner, const std::string& value, RequestEventCallback) -> AppInfo* {
                    return new GatedLayer(inner, value);
                  },
                  GatedLayer::Release});
    RegisterLayer<OUTER>();
    const MetadataMap metadata = {
        {"orv_type", {{"gated", "a value that is too long for a small string"}, {"outer", "x"}}}};
    ASSERT_TRUE(Creator().AddAppInfoToAppCache(records::Info(PACKAGE), metadata, true));
    m_stop.emplace(
        [] { ORVAppOperator::GetInstance()->DoOperation(PACKAGE, OPERATION_TYPE_STOP); });
    ASSERT_TRUE(m_gate.WaitUntilReached());
  }
  void TearDown() override {
    m_gate.Open();
    m_stop.reset();
    CreatorTest::TearDown();
  }

  /// Starts the operation, which must wait for the end of the Stop.
  void RunsAfterTheStop(const std::function<void()>& operation) {
    support::OtherThread other(operation);
    ASSERT_TRUE(other.WaitUntilItStops());
    EXPECT_FALSE(other.Done());
    EXPECT_THAT(Journal(), ElementsAre("stop"));
    m_gate.Open();
  }

  static inline const std::string STOPPED = "stopped a value that is too long for a small string";
  Gate m_gate;
  std::optional<support::OtherThread> m_stop;
};

TEST_F(RecordInUse, IsDestroyedOnlyWhenTheOtherThreadHasLeftIt) {
  RunsAfterTheStop([this] { Creator().RemoveApp(PACKAGE); });
  EXPECT_THAT(Journal(), ElementsAre("stop", STOPPED, "release"));
  EXPECT_THAT(Find(PACKAGE), IsNull());
  EXPECT_THAT(records::StoredPackages(), IsEmpty());
}

TEST_F(RecordInUse, LosesALayerOnlyWhenTheOtherThreadHasLeftIt) {
  fake::AddPackage(MakePackage(PACKAGE, {{TypeKey("outer"), "x"}}));
  RunsAfterTheStop([this] { EXPECT_EQ(Creator().UpdateApp(PACKAGE), UPDATE_RESULT_UPDATE); });
  EXPECT_THAT(Journal(), ElementsAre("stop", STOPPED, "release"));
  EXPECT_THAT(TakeApart(PACKAGE), ElementsAre("outer", "orv_app"));
}

TEST_F(RecordInUse, RunsOneOperationAtATime) {
  RunsAfterTheStop([] {
    std::vector<std::string> ids;
    ORVAppOperator::GetInstance()->RunAllApps(ids);
  });
  EXPECT_THAT(Journal(), ElementsAre("stop", STOPPED, "run"));
}

TEST_F(RecordInUse, IsReadMeanwhileByWalksUnderTheCachesLock) {
  std::vector<PreloadingApp> apps;
  support::OtherThread walk([&] { Cache().GetPreloadingApps(apps); });
  EXPECT_TRUE(support::WaitFor([&] { return walk.Done(); }, "the end of the walk"));
}

TEST(RecordGuardUse, AnOperationMayRemoveItsOwnRecord) {
  records::MakeStoreDirectory();
  ORVAppCreator::GetInstance();
  RecordingApp app("a");
  app.SetHook([] { ORVAppCreator::GetInstance()->RemoveApp("a"); });
  ORVAppOperator::GetInstance()->DoOperation("a", OPERATION_TYPE_STOP);
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.stop"));
  EXPECT_THAT(AppInfoCache::GetInstance()->GetAppInfo("a"), IsNull());
}

}  // namespace
