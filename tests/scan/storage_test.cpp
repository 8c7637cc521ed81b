#include "scan/storage.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temp_dir.h"

namespace kolum::test {
namespace {

using scan::Device;
using scan::Medium;
using scan::Storage;

// A machine's tables of mounts and disks.
class Machine {
 public:
  void mount(const std::string& number, const std::string& place, const std::string& type,
             const std::string& source) {
    mounts_ += "36 35 " + number + " / " + place + " rw,noatime master:1 - " + type + " " + source +
               " rw\n";
  }
  // A disk with its partitions: "8:0" and "8:1".
  void disk(const std::string& name, const std::string& number, bool isRotating) {
    const std::string place = "sys/devices/" + name;
    folder_.write(place + "/queue/rotational", isRotating ? "1\n" : "0\n");
    link(place, number);
  }
  void partition(const std::string& disk, const std::string& name, const std::string& number) {
    const std::string place = "sys/devices/" + disk + "/" + name;
    folder_.write(place + "/partition", "1\n");
    link(place, number);
  }
  // A logical volume on other devices.
  void volume(const std::string& name, const std::string& number, bool isRotating,
              const std::vector<std::string>& on) {
    disk(name, number, isRotating);
    std::filesystem::create_directories(folder_.path("sys/devices/" + name + "/slaves"));
    for (const std::string& device : on)
      std::filesystem::create_directory_symlink(
          folder_.path("sys/devices/" + device),
          folder_.path("sys/devices/" + name + "/slaves/" +
                       std::filesystem::path(device).filename().string()));
  }
  Device deviceOf(const std::string& path) const {
    return Storage(folder_.write("mountinfo", mounts_), folder_.path("sys")).deviceOf(path);
  }

 private:
  void link(const std::string& place, const std::string& number) {
    std::filesystem::create_directories(folder_.path("sys/dev/block"));
    std::filesystem::create_directory_symlink(folder_.path(place),
                                              folder_.path("sys/dev/block/" + number));
  }

  TempDir folder_;
  std::string mounts_;
};

TEST(Storage, KnowsRotatingDisksAndTheirPartitions) {
  Machine machine;
  machine.disk("sda", "8:0", true);
  machine.partition("sda", "sda1", "8:1");
  machine.partition("sda", "sda2", "8:2");
  machine.disk("nvme0n1", "259:0", false);
  machine.mount("259:0", "/", "ext4", "/dev/nvme0n1");
  machine.mount("8:1", "/share", "ext4", "/dev/sda1");
  machine.mount("8:2", "/more", "xfs", "/dev/sda2");
  EXPECT_EQ(machine.deviceOf("/home/x").medium, Medium::kFast);
  const Device share = machine.deviceOf("/share/Music");
  EXPECT_EQ(share.medium, Medium::kRotating);
  EXPECT_EQ(share.mount, "/share");
  // Both partitions move the same heads.
  EXPECT_EQ(share.id, machine.deviceOf("/more").id);
  EXPECT_NE(share.id, machine.deviceOf("/").id);
}

TEST(Storage, LooksBelowLogicalVolumes) {
  Machine machine;
  machine.disk("sda", "8:0", true);
  machine.partition("sda", "sda1", "8:1");
  machine.volume("dm-0", "253:0", true, {"sda/sda1"});
  machine.mount("8:1", "/plain", "ext4", "/dev/sda1");
  machine.mount("253:0", "/volume", "ext4", "/dev/mapper/v");
  EXPECT_EQ(machine.deviceOf("/volume").medium, Medium::kRotating);
  EXPECT_EQ(machine.deviceOf("/volume").id, machine.deviceOf("/plain").id);
}

TEST(Storage, TakesAVolumeOnSeveralDisksForItself) {
  Machine machine;
  machine.disk("sda", "8:0", true);
  machine.disk("sdb", "8:16", true);
  machine.volume("md0", "9:0", true, {"sda", "sdb"});
  machine.mount("9:0", "/array", "ext4", "/dev/md0");
  EXPECT_EQ(machine.deviceOf("/array").medium, Medium::kRotating);
  EXPECT_EQ(machine.deviceOf("/array").id, "md0");
}

TEST(Storage, KnowsNetworkMounts) {
  for (const char* type : {"nfs", "nfs4", "cifs", "smb3", "9p", "fuse.sshfs", "fuse", "ceph"}) {
    Machine machine;
    machine.mount("0:45", "/net", type, "server:/export");
    EXPECT_EQ(machine.deviceOf("/net/x").medium, Medium::kNetwork) << type;
  }
  for (const char* type : {"tmpfs", "ext4", "btrfs", "overlay", "fuseblk"}) {
    Machine machine;
    machine.mount("0:45", "/net", type, "x");
    EXPECT_EQ(machine.deviceOf("/net/x").medium, Medium::kFast) << type;
  }
}

TEST(Storage, TellsServersApart) {
  Machine machine;
  machine.mount("0:45", "/one", "nfs4", "one:/export");
  machine.mount("0:46", "/two", "nfs4", "two:/export");
  machine.mount("0:47", "/again", "nfs4", "one:/export");
  EXPECT_NE(machine.deviceOf("/one").id, machine.deviceOf("/two").id);
  EXPECT_EQ(machine.deviceOf("/one").id, machine.deviceOf("/again").id);
}

TEST(Storage, TakesTheLongestMountAboveAPath) {
  Machine machine;
  machine.mount("0:1", "/", "tmpfs", "none");
  machine.mount("0:2", "/share", "nfs", "a:/");
  machine.mount("0:3", "/share/deep/er", "tmpfs", "none");
  EXPECT_EQ(machine.deviceOf("/share").mount, "/share");
  EXPECT_EQ(machine.deviceOf("/share/").mount, "/share");
  EXPECT_EQ(machine.deviceOf("/shared").mount, "/");
  EXPECT_EQ(machine.deviceOf("/share/deep/er/x").mount, "/share/deep/er");
  EXPECT_EQ(machine.deviceOf("/share/deep/other").mount, "/share");
}

TEST(Storage, TakesTheUppermostOfMountsInOnePlace) {
  Machine machine;
  machine.mount("0:1", "/share", "tmpfs", "none");
  machine.mount("0:2", "/share", "nfs", "a:/");
  EXPECT_EQ(machine.deviceOf("/share/x").medium, Medium::kNetwork);
}

TEST(Storage, ReadsEscapedPlaces) {
  Machine machine;
  machine.mount("0:2", R"(/my\040share\134x)", "nfs", "a:/");
  EXPECT_EQ(machine.deviceOf("/my share\\x/a").mount, "/my share\\x");
}

TEST(Storage, SurvivesTablesThatAreDamagedOrMissing) {
  const TempDir folder;
  for (const char* table : {"", "\n", "1 2 3", "36 35 8:1 / /share rw - ", "- - - - - -\n"})
    EXPECT_EQ(Storage(folder.write("table", table), folder.folder()).deviceOf("/share").medium,
              Medium::kFast)
        << table;
  EXPECT_EQ(Storage(folder.path("missing"), folder.folder()).deviceOf("/x").medium, Medium::kFast);
}

TEST(Storage, KnowsThisMachine) {
  EXPECT_FALSE(Storage().deviceOf("/proc").id.empty());
  EXPECT_EQ(Storage().deviceOf("/proc/self").mount, "/proc");
}

TEST(JobsFor, DependsOnTheMedium) {
  EXPECT_EQ(jobsFor(Medium::kFast, 16), 16U);
  EXPECT_EQ(jobsFor(Medium::kRotating, 16), 2U);
  EXPECT_EQ(jobsFor(Medium::kNetwork, 16), 2U);
  EXPECT_EQ(jobsFor(Medium::kNetwork, 1), 1U);
  EXPECT_EQ(jobsFor(Medium::kFast, 0), 1U);
}

}  // namespace
}  // namespace kolum::test
