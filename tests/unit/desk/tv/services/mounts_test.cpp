// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/mounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "desk/tv/services/image_mount.h"
#include "memory_router.h"
#include "package_maker.h"

namespace desk::tv {
namespace {

class MountCommandTest : public ::testing::Test {
 protected:
  MountCommandTest() {
    std::filesystem::create_directories(m_paths.Package("pkg0000001") + "/res");
    std::filesystem::create_directories(m_paths.DaemonSharedData() + "/hbbtv_app/temp_app");
    WriteFile(m_image, "image");
  }
  std::string ErrorOf(const std::string& command) {
    try {
      ParseMountCommand(command, m_paths);
    } catch (const DeskError& error) {
      return error.what();
    }
    return "accepted";
  }

  TemporaryDirectory m_directory;
  DeskPaths m_paths{m_directory.Path() + "/tv"};
  const std::string m_image = m_paths.Package("pkg0000001") + "/res/pkg0000001.App.tmg";
  const std::string m_target = m_paths.DaemonSharedData() + "/hbbtv_app/temp_app";
  const std::string m_seenImage = "/opt/usr/apps/pkg0000001/res/pkg0000001.App.tmg";
  const std::string m_seenTarget =
      "/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data/hbbtv_app/temp_app";
};

TEST_F(MountCommandTest, PathsOfTheSandboxLeadIntoTheDesk) {
  const MountCommand command =
      ParseMountCommand("-o loop,nosuid,nodev,noexec " + m_seenImage + " " + m_seenTarget, m_paths);
  EXPECT_EQ(command.options, "loop,nosuid,nodev,noexec");
  EXPECT_EQ(command.image, m_image);
  EXPECT_EQ(command.directory, m_target);
}

TEST_F(MountCommandTest, PathsOfTheDeskItselfStayAsTheyAre) {
  const MountCommand command = ParseMountCommand("-o loop " + m_image + " " + m_target, m_paths);
  EXPECT_EQ(command.image, m_image);
  EXPECT_EQ(command.directory, m_target);
}

TEST_F(MountCommandTest, AnyOtherFormIsRefused) {
  const std::string expected = "the command must be \"-o <options> <image> <directory>\": ";
  for (const std::string& command :
       {std::string(), std::string("-o"), "-o loop " + m_image, "loop " + m_image + " " + m_target,
        "-t ext4 " + m_image + " " + m_target, "-o  " + m_image + " " + m_target,
        "-o loop " + m_image + " " + m_target + " -B", "-o loop " + m_image + "  " + m_target}) {
    EXPECT_EQ(ErrorOf(command), expected + command);
  }
}

TEST_F(MountCommandTest, PathsOutsideTheDeskAreRefused) {
  EXPECT_EQ(ErrorOf("-o loop /etc/passwd " + m_target),
            "/etc/passwd is not in the package directory of this desk");
  EXPECT_EQ(ErrorOf("-o loop " + m_image + " /mnt"),
            "/mnt is not in the package directory of this desk");
  std::filesystem::create_symlink("/etc", m_paths.Package("pkg0000001") + "/link");
  EXPECT_EQ(ErrorOf("-o loop " + m_image + " /opt/usr/apps/pkg0000001/link"),
            "/opt/usr/apps/pkg0000001/link is not in the package directory of this desk");
  EXPECT_EQ(ErrorOf("-o loop " + m_image + " /opt/usr/apps/../../../.."),
            "/opt/usr/apps/../../../.. is not in the package directory of this desk");
}

TEST_F(MountCommandTest, AMissingImageIsNamed) {
  EXPECT_EQ(ErrorOf("-o loop /opt/usr/apps/none.tmg " + m_target),
            m_paths.Apps() + "/none.tmg: No such file or directory");
}

TEST(OptionsWithoutLoop, LeavesAllOtherOptions) {
  EXPECT_EQ(OptionsWithoutLoop("loop,nosuid,nodev,noexec"), "nosuid,nodev,noexec");
  EXPECT_EQ(OptionsWithoutLoop("ro,loop=/dev/loop3,looping"), "ro,looping");
  EXPECT_EQ(OptionsWithoutLoop("loop"), "");
}

// Works in a mount namespace of its own, so that nothing is mounted on the machine.
class MountsTest : public MountCommandTest {
 protected:
  void SetUp() override {
    if (!WhyNoLoop().empty()) {
      GTEST_SKIP() << "no loop devices here: " << WhyNoLoop();
    }
    ASSERT_EQ(unshare(CLONE_NEWNS), 0);
    ASSERT_EQ(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr), 0);
    m_mounts = std::make_unique<Mounts>(m_router, m_paths);
  }
  void MakeSquashfs() { MakeSquashfs(m_image, "archive"); }
  void MakeSquashfs(const std::string& image, const std::string& content) {
    WriteFile(m_directory.Path() + "/content/orv_app.zip", content);
    std::filesystem::remove(image);
    Run("mksquashfs " + m_directory.Path() + "/content " + image + " -quiet -no-progress");
  }
  static void Run(const std::string& command) {
    ASSERT_EQ(std::system((command + " >/dev/null").c_str()), 0) << command;
  }
  Json::Value Mount(const std::string& options = "loop,nosuid,nodev,noexec") {
    return MountImage(m_seenImage, options);
  }
  Json::Value MountImage(const std::string& image, const std::string& options) {
    Json::Value request;
    request["command"] = "-o " + options + " " + image + " " + m_seenTarget;
    return m_router.Call("mount.mount", request);
  }
  void MountTwo() {
    MakeSquashfs();
    const std::string second = m_paths.Package("pkg0000001") + "/res/second.tmg";
    MakeSquashfs(second, "second");
    ASSERT_EQ(Mount()["result"].asInt(), 0);
    ASSERT_EQ(MountImage(second, "loop")["result"].asInt(), 0);
    ASSERT_EQ(ReadFile(m_target + "/orv_app.zip"), "second");
  }
  Json::Value Unmount() {
    Json::Value request;
    request["path"] = m_seenTarget;
    return m_router.Call("mount.umount", request);
  }
  unsigned long Flags() {
    struct statvfs status {};
    EXPECT_EQ(statvfs(m_target.c_str(), &status), 0);
    return status.f_flag;
  }

  MemoryRouter m_router;
  std::unique_ptr<Mounts> m_mounts;
};

TEST_F(MountsTest, AnImageIsMountedWithExactlyTheOptionsGiven) {
  MakeSquashfs();
  const Json::Value answer = Mount();
  ASSERT_EQ(answer["result"], 0) << answer["reason"].asString();
  EXPECT_EQ(answer["ret"], 0);
  EXPECT_EQ(ReadFile(m_target + "/orv_app.zip"), "archive");
  const unsigned long wanted = ST_NOSUID | ST_NODEV | ST_NOEXEC;
  EXPECT_EQ(Flags() & wanted, wanted);
  ASSERT_EQ(m_mounts->Dump().size(), 1u);
  EXPECT_EQ(m_mounts->Dump()[0]["image"], m_image);
  EXPECT_EQ(m_mounts->Dump()[0]["how"], "loop");
  EXPECT_EQ(Unmount()["result"], 0);
  EXPECT_FALSE(std::filesystem::exists(m_target + "/orv_app.zip"));
  EXPECT_TRUE(m_mounts->Dump().empty());
}

TEST_F(MountsTest, OptionsThatWereNotAskedForAreNotAdded) {
  MakeSquashfs();
  ASSERT_EQ(Mount("loop,nodev")["result"], 0);
  EXPECT_EQ(Flags() & (ST_NOSUID | ST_NODEV | ST_NOEXEC), static_cast<unsigned long>(ST_NODEV));
  EXPECT_EQ(Unmount()["result"], 0);
}

TEST_F(MountsTest, TheFileSystemOfTheImageIsDetected) {
  std::filesystem::remove(m_image);
  Run("truncate -s 2M " + m_image);
  Run("mkfs.ext4 -q -F " + m_image + " 2>&1");
  ASSERT_EQ(Mount()["result"], 0);
  EXPECT_TRUE(std::filesystem::exists(m_target + "/lost+found"));
  EXPECT_EQ(Unmount()["result"], 0);
}

TEST_F(MountsTest, WhatHoldsNoFileSystemIsRefusedWithTheReason) {
  const Json::Value answer = Mount();
  EXPECT_EQ(answer["ret"], 0);
  EXPECT_NE(answer["result"], 0);
  EXPECT_NE(answer["reason"].asString(), "");
  EXPECT_NE(m_mounts->Describe().find("last failure: " + answer["reason"].asString()),
            std::string::npos);
  EXPECT_TRUE(m_mounts->Dump().empty());
}

TEST_F(MountsTest, WhatIsNotMountedCannotBeUnmounted) {
  const Json::Value answer = Unmount();
  EXPECT_EQ(answer["ret"], 0);
  EXPECT_NE(answer["result"], 0);
}

TEST_F(MountsTest, ImagesMayLieOverEachOther) {
  MountTwo();
  EXPECT_EQ(m_mounts->Dump().size(), 2u);
  EXPECT_EQ(Unmount()["result"], 0);
  EXPECT_EQ(ReadFile(m_target + "/orv_app.zip"), "archive");
  EXPECT_EQ(Unmount()["result"], 0);
}

// A /dev as in a container: with the loop control device but without loop devices.
class OwnDevices {
 public:
  OwnDevices() {
    EXPECT_EQ(mount("tmpfs", "/dev", "tmpfs", 0, nullptr), 0);
    Make("null", 1, 3);
    Make("fuse", 10, 229);
    Make("loop-control", 10, 237);
  }
  ~OwnDevices() { umount2("/dev", MNT_DETACH); }
  OwnDevices(const OwnDevices&) = delete;
  OwnDevices& operator=(const OwnDevices&) = delete;

  /// Nodes that can be opened but are not loop devices.
  static void MakeUselessLoops() {
    for (int i = 0; i < 64; ++i) {
      WriteFile("/dev/loop" + std::to_string(i), "");
    }
  }

 private:
  static void Make(const std::string& name, unsigned major, unsigned minor) {
    const std::string path = "/dev/" + name;
    EXPECT_EQ(mknod(path.c_str(), S_IFCHR | 0666, makedev(major, minor)), 0) << path;
  }
};

class NoLoopTest : public MountsTest {
 protected:
  void SetUp() override {
    MountsTest::SetUp();
    std::string reason;
    MakeSquashfs();
    if (!IsSkipped() && FuseDriverFor(m_image, reason).empty()) {
      GTEST_SKIP() << reason;
    }
  }
  void ExpectMountedByDriver() {
    const Json::Value answer = Mount();
    ASSERT_EQ(answer["result"], 0) << answer["reason"].asString();
    EXPECT_EQ(ReadFile(m_target + "/orv_app.zip"), "archive");
    EXPECT_EQ(m_mounts->Dump()[0]["how"], "squashfuse");
    EXPECT_EQ(Unmount()["result"], 0);
  }
};

TEST_F(NoLoopTest, WithoutTheNodeOfAFreeDeviceADriverMountsTheImage) {
  const OwnDevices devices;
  EXPECT_THAT(WhyNoLoop(), testing::MatchesRegex("/dev/loop[0-9]+: No such file or directory"));
  ExpectMountedByDriver();
  EXPECT_THAT(m_mounts->Describe(),
              testing::MatchesRegex("fuse \\(.*squashfuse.*\\): /dev/loop[0-9]+: No such file.*"));
}

TEST_F(NoLoopTest, ADeviceThatCannotBeSetUpIsAReasonForADriverToo) {
  const OwnDevices devices;
  OwnDevices::MakeUselessLoops();
  ASSERT_EQ(WhyNoLoop(), "");
  EXPECT_EQ(m_mounts->Describe(), "loop");
  ExpectMountedByDriver();
  EXPECT_THAT(m_mounts->Describe(), testing::StartsWith("fuse ("));
  EXPECT_THAT(m_mounts->Describe(), testing::HasSubstr("): failed to setup loop device"));
}

TEST_F(NoLoopTest, LoopDevicesAreUsedAgainWhenAvailable) {
  {
    const OwnDevices devices;
    OwnDevices::MakeUselessLoops();
    ExpectMountedByDriver();
  }
  ASSERT_EQ(Mount()["result"], 0);
  EXPECT_EQ(m_mounts->Dump()[0]["how"], "loop");
  EXPECT_EQ(m_mounts->Describe(), "loop");
  EXPECT_EQ(Unmount()["result"], 0);
}

TEST_F(NoLoopTest, AnImageThatTheKernelRefusesIsNotTriedWithADriver) {
  std::string image = ReadFile(m_image);
  image.at(28) = image.at(29) = '\xff';  // the version in the superblock
  WriteFile(m_image, image);
  std::string reason;
  ASSERT_EQ(FuseDriverFor(m_image, reason), "squashfuse");
  const Json::Value answer = Mount();
  EXPECT_NE(answer["result"], 0);
  EXPECT_THAT(answer["reason"].asString(), testing::HasSubstr("/dev/loop"));
  EXPECT_THAT(m_mounts->Describe(), testing::StartsWith("loop; last failure: "));
}

// An empty /dev: neither loop devices nor FUSE, whatever is installed.
class NoDeviceTest : public MountCommandTest {
 protected:
  void SetUp() override {
    if (unshare(CLONE_NEWNS) != 0 ||
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", "/dev", "tmpfs", 0, nullptr) != 0) {
      GTEST_SKIP() << "this process cannot mount";
    }
    m_mounts = std::make_unique<Mounts>(m_router, m_paths);
  }
  void TearDown() override { umount2("/dev", MNT_DETACH); }
  Json::Value Check(const std::string& package) {
    Json::Value request;
    request["package"] = package;
    return m_router.Call("mount.check", request)["unmountable"];
  }

  MemoryRouter m_router;
  std::unique_ptr<Mounts> m_mounts;
};

TEST_F(NoDeviceTest, WithoutTheFuseDeviceNothingCanBeMounted) {
  if (FuseDrivers().empty()) {
    GTEST_SKIP() << "no FUSE driver is installed";
  }
  EXPECT_THAT(m_mounts->Describe(), testing::StartsWith("none: "));
  EXPECT_THAT(m_mounts->Describe(), testing::HasSubstr("/dev/fuse: No such file or directory"));
  Json::Value request;
  request["command"] = "-o loop " + m_seenImage + " " + m_seenTarget;
  EXPECT_THAT(m_router.Call("mount.mount", request)["reason"].asString(),
              testing::HasSubstr("/dev/fuse: No such file or directory"));
}

TEST_F(NoDeviceTest, TheCheckNamesEachImageThatCannotBeMounted) {
  WriteFile(m_paths.Package("pkg0000001") + "/res/readme.txt", "no image");
  const Json::Value unmountable = Check("pkg0000001");
  ASSERT_EQ(unmountable.size(), 1u);
  EXPECT_EQ(unmountable[0]["image"], "pkg0000001.App.tmg");
  EXPECT_THAT(unmountable[0]["reason"].asString(), testing::HasSubstr("/dev/loop"));
}

TEST_F(NoDeviceTest, TheCheckOfAPackageWithoutImagesIsEmpty) {
  EXPECT_TRUE(Check("pkg0000002").empty());
  EXPECT_TRUE(Check("../apps/pkg0000001").empty());
}

TEST_F(NoLoopTest, TheCheckNamesAnImageThatNoDriverKnows) {
  const OwnDevices devices;
  Json::Value request;
  request["package"] = "pkg0000001";
  EXPECT_TRUE(m_router.Call("mount.check", request)["unmountable"].empty());
  WriteFile(m_image, "not a file system");
  const Json::Value unmountable = m_router.Call("mount.check", request)["unmountable"];
  ASSERT_EQ(unmountable.size(), 1u);
  EXPECT_THAT(unmountable[0]["reason"].asString(),
              testing::HasSubstr("no file system that a FUSE driver can mount"));
}

class FuseTest : public MountsTest {
 protected:
  void MountWith(const std::string& driver) {
    std::string reason;
    const std::string found = FuseDriverFor(m_image, reason);
    if (found.empty()) {
      GTEST_SKIP() << reason;
    }
    ASSERT_EQ(found, driver);
    ASSERT_EQ(FuseMount(driver, {"loop,nosuid,nodev,noexec", m_image, m_target}, reason), 0)
        << reason;
    const unsigned long wanted = ST_NOSUID | ST_NODEV | ST_NOEXEC;
    EXPECT_EQ(Flags() & wanted, wanted);
  }
};

TEST_F(FuseTest, ASquashfsImageIsMountedByItsDriver) {
  MakeSquashfs();
  MountWith("squashfuse");
  if (!IsSkipped()) {
    EXPECT_EQ(ReadFile(m_target + "/orv_app.zip"), "archive");
    EXPECT_EQ(Unmount()["result"], 0);
  }
}

TEST_F(FuseTest, AnExtImageIsMountedByItsDriver) {
  std::filesystem::remove(m_image);
  Run("truncate -s 2M " + m_image);
  Run("mkfs.ext4 -q -F " + m_image + " 2>&1");
  MountWith("fuse2fs");
  if (!IsSkipped()) {
    EXPECT_TRUE(std::filesystem::exists(m_target + "/lost+found"));
    EXPECT_EQ(Unmount()["result"], 0);
  }
}

TEST_F(FuseTest, AnUnknownImageHasNoDriver) {
  std::string reason;
  EXPECT_EQ(FuseDriverFor(m_image, reason), "");
  EXPECT_EQ(reason,
            m_image + " contains no file system that a FUSE driver can mount (squashfs, ext)");
}

TEST_F(MountsTest, PowerOffUnmountsWhatIsLeft) {
  MountTwo();
  m_mounts.reset();
  EXPECT_FALSE(std::filesystem::exists(m_target + "/orv_app.zip"));
}

}  // namespace
}  // namespace desk::tv
