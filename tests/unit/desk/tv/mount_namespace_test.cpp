// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/mount_namespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "desk/tv/process.h"
#include "support/files.h"
#include "support/wait_for.h"

namespace desk::tv {
namespace {

// In a process of its own, which must have one thread; what it returns is its exit status.
int InChild(const std::function<int()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(work());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class MountNamespace : public testing::Test {
 protected:
  MountNamespace() { support::MakeDirectories(m_dir / "tv/m"); }

  // The exit status is the number of the failed step.
  int EnterAndMount() const {
    const std::string how = EnterMountNamespace(DeskPaths(m_dir / "tv"));
    if (how.find("the desk's own mount namespace") != 0) {
      return 1;
    }
    return mount("none", (m_dir / "tv/m").c_str(), "tmpfs", 0, nullptr) == 0 ? 0 : 2;
  }

  support::TempDir m_dir;
};

TEST_F(MountNamespace, AMountUnderTheTvIsNotTheMachines) {
  EXPECT_EQ(InChild([this] {
              const int step = EnterAndMount();
              support::WriteFile(m_dir / "tv/m/inside", "x");
              return step;
            }),
            0);
  EXPECT_FALSE(support::Exists(m_dir / "tv/m/inside"));
  EXPECT_EQ(support::ReadFile("/proc/self/mountinfo").find(m_dir / "tv"), std::string::npos);
}

TEST_F(MountNamespace, AMountThatIsMadeLaterReachesASandboxThatRuns) {
  EXPECT_EQ(
      InChild([this] {
        const std::string how = EnterMountNamespace(DeskPaths(m_dir / "tv"));
        ProcessSpec spec;
        spec.arguments = {
            "bwrap",
            "--ro-bind",
            "/",
            "/",
            "--bind",
            m_dir / "tv",
            "/mnt",
            "--",
            "sh",
            "-c",
            "touch /mnt/up; until [ -e /mnt/go ]; do sleep 0.02; done; cat /mnt/m/inside"};
        spec.output = m_dir / "tv/said";
        const pid_t sandbox = StartProcess(spec);
        if (!support::WaitFor([this] { return support::Exists(m_dir / "tv/up"); }, "the sandbox")) {
          return 1;
        }
        if (mount("none", (m_dir / "tv/m").c_str(), "tmpfs", 0, nullptr) != 0) {
          return 2;
        }
        support::WriteFile(m_dir / "tv/m/inside", "here");
        support::WriteFile(m_dir / "tv/go", "");
        int status = 0;
        waitpid(sandbox, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 3;
      }),
      0);
  EXPECT_EQ(support::ReadFile(m_dir / "tv/said"), "here");
}

TEST_F(MountNamespace, TheUserStaysTheSame) {
  const uid_t user = geteuid();
  EXPECT_EQ(InChild([this, user] {
              EnterMountNamespace(DeskPaths(m_dir / "tv"));
              return geteuid() == user ? 0 : 1;
            }),
            0);
}

TEST_F(MountNamespace, ADirectoryThatIsNotThereLeavesTheProcessWithoutOne) {
  EXPECT_EQ(
      InChild([this] {
        const std::string how = EnterMountNamespace(DeskPaths(m_dir / "none"));
        return how.find(
                   "the machine's, since this process may not create one (mount: No such file") == 0
                   ? 0
                   : 1;
      }),
      0);
}

}  // namespace
}  // namespace desk::tv
