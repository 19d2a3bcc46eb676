// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/block_device.h"
#include "platform/disk.h"
#include "platform/mount_table.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <sys/mount.h>
#include <sys/uio.h>
#include <unistd.h>

namespace nqp2::platform {
namespace {

std::unique_ptr<Folder> Open(const std::string& path) {
    std::unique_ptr<Folder> folder;
    EXPECT_TRUE(Files().OpenFolder(path, folder)) << path;
    return folder;
}

MediumFacts FactsOf(const std::string& path) {
    MediumFacts facts;
    EXPECT_TRUE(Open(path)->Medium(facts)) << path;
    return facts;
}

TEST(Medium, MountsAndSharesAreReadFromTheSystemsTable) {
    const std::string table =
        "22 27 0:21 / /proc rw - proc proc rw\n"
        "27 1 8:1 / / rw,relatime master:1 - ext4 /dev/sda1 rw\n"
        "31 27 0:51 / /n rw shared:9 - nfs4 NAS:/vol/a\\040b rw\n"
        "32 27 0:52 / /c rw - cifs //Nas/Share/below rw\n"
        "33 27 0:53 / /s rw - fuse.sshfs me@host:/ rw\n"
        "35 27 0:55 / /t rw - nfs4 nas:/vol rw,addr=10.0.0.7,local_lock=none\n"
        "36 27 0:56 / /u rw - cifs //other/S/x rw,addr=10.0.0.7\n"
        "34 27 0:54 /";
    struct Case {
        std::optional<std::uint64_t> number;
        const char* device;
        const char* source; ///< null: no mount
        const char* server; ///< null: no share
        const char* share;
    };
    const Case cases[] = {{27, "", "/dev/sda1", nullptr, nullptr},
                          {{}, "8:1", "/dev/sda1", nullptr, nullptr},
                          {31, "8:1", "NAS:/vol/a b", "nas", "nas:/vol/a b"},
                          {{}, "0:52", "//Nas/Share/below", "nas", "//nas/share"},
                          {33, "", "me@host:/", "host", "host:/"},
                          {35, "", "nas:/vol", "10.0.0.7", "10.0.0.7:/vol"},
                          {36, "", "//other/S/x", "10.0.0.7", "//10.0.0.7/s"},
                          {34, "", nullptr, nullptr, nullptr},
                          {{}, "8:", nullptr, nullptr, nullptr}};
    for (const Case& each : cases) {
        const std::optional<Mount> mount = FindMount(table, each.number, each.device);
        ASSERT_EQ(mount.has_value(), each.source != nullptr) << each.device;
        if (mount) {
            EXPECT_EQ(mount->source, each.source);
            const std::optional<NetworkShare> share = ShareOf(*mount);
            ASSERT_EQ(share.has_value(), each.share != nullptr) << each.source;
            EXPECT_EQ(share ? share->server : "", each.server != nullptr ? each.server : "");
            EXPECT_EQ(share ? share->share : "", each.share != nullptr ? each.share : "");
        }
    }
}

TEST(Medium, AServerMayBeThisMachine) {
    for (const char* const own : {"localhost", "127.0.1.1", "::1", "cart", "cart.local"}) {
        EXPECT_TRUE(IsOwnServer(own, "Cart.studio")) << own;
        EXPECT_FALSE(IsOwnServer("nas", own));
    }
    EXPECT_FALSE(IsOwnServer("nas", ""));
    EXPECT_FALSE(IsOwnServer("", ""));
}

TEST(Medium, OnlyKnownAndDifferentDisksAreApart) {
    using Disks = std::vector<std::string>;
    struct Case {
        Disks one;
        Disks other;
        bool areApart;
    };
    const Case cases[] = {{{"8:0"}, {"8:16"}, true},
                          {{"8:0"}, {"8:0"}, false},
                          {{"8:0", "8:16"}, {"8:32", "8:16"}, false},
                          {{}, {"8:0"}, false},
                          {{}, {}, false},
                          {{"nas:/vol"}, {"nas:/vol/below"}, false},
                          {{"nas:/"}, {"nas:/vol"}, false},
                          {{"nas:/vol"}, {"nas:/volume"}, true},
                          {{"nas:/vol"}, {"8:0"}, true}};
    for (const Case& each : cases) {
        MediumFacts one;
        MediumFacts other;
        one.disks = each.one;
        other.disks = each.other;
        EXPECT_EQ(AreApart(one, other), each.areApart);
        EXPECT_EQ(AreApart(other, one), each.areApart);
    }
}

TEST(Medium, MemoryAndWhatLiesElsewhereIsNoDisk) {
    for (const char* disk : {"sda", "sdab", "nvme0n1", "mmcblk0", "vda", "sr0", "drbd1"}) {
        EXPECT_TRUE(IsDisk(disk)) << disk;
    }
    for (const char* other : {"", "ram0", "zram1", "nbd12", "loop7"}) {
        EXPECT_FALSE(IsDisk(other)) << other;
    }
}

/// The disk behind a file system in a file is that of the file, through both of its mounts.
TEST(Medium, TheDiskBehindAFileSystemInAFileIsThatOfTheFile) {
    const test::TempFolder folder;
    const std::string image = folder.Write("image");
    const std::string place = folder.MakeFolder("place");
    std::filesystem::resize_file(image, 8U << 20U);
    const std::string make = "PATH=$PATH:/sbin:/usr/sbin; mkfs.ext4 -q -F " + image +
                             " && mount -o loop,ro " + image + " " + place + " 2>/dev/null";
    if (std::system(make.c_str()) != 0) {
        GTEST_SKIP() << "a file system cannot be made or mounted here";
    }
    const MediumFacts below = FactsOf(place);
    // The path leads to another file by now.
    ASSERT_EQ(mount(folder.Write("other").c_str(), image.c_str(), nullptr, MS_BIND, nullptr), 0);
    const MediumFacts misled = FactsOf(place);
    umount(image.c_str());
    umount(place.c_str());
    EXPECT_EQ(below.fileSystem, "ext4");
    EXPECT_TRUE(below.isReadOnly);
    EXPECT_EQ(below.disks, FactsOf(folder.Path()).disks);
    EXPECT_EQ(misled.disks, std::vector<std::string>());
    EXPECT_EQ(FactsOf("/proc").disks, std::vector<std::string>());
}

TEST(Medium, FoldersKeepTimesAndTellWhetherTheyAreCaseBlind) {
    const test::TempFolder folder;
    folder.Write("below/file", "bytes");
    const std::unique_ptr<Folder> open = Open(folder.Path());
    FileInfo old;
    old.modified = 1'000'000'000;
    old.modifiedNanoseconds = 123'456'700;
    EXPECT_TRUE(open->KeepTime("below", old));
    EXPECT_TRUE(open->KeepTime("", old));
    EXPECT_FALSE(open->KeepTime("..", old));
    FileInfo info;
    EXPECT_TRUE(open->Stat("below", info));
    EXPECT_EQ(info.modifiedNanoseconds, old.modifiedNanoseconds);
    EXPECT_TRUE(DiskFiles().Stat(folder.Path(), info));
    EXPECT_EQ(info.modified, old.modified);
    bool isBlind = true;
    EXPECT_TRUE(open->IsCaseBlind(isBlind));
    EXPECT_FALSE(isBlind);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

/// The bytes are the same, and none of them stays in the system's cache.
TEST(Medium, ReadingAroundTheCacheGivesAllBytesAndKeepsNone) {
    const test::TempFolder folder;
    std::string bytes(20'000'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    }
    const std::string path = folder.Write("file", bytes);
    std::unique_ptr<FileReader> reader;
    ASSERT_TRUE(Open(folder.Path())->Open("file", reader));
    reader->ReadAround();
    std::string found(bytes.size() + 1, '\0');
    std::size_t total = 0;
    for (std::size_t count = 1; count != 0; total += count) {
        ASSERT_TRUE(reader->Read(found.data() + total, 1'000'003, count));
        found.resize(std::max(found.size(), total + count + 1'000'003));
    }
    EXPECT_EQ(total, bytes.size());
    EXPECT_TRUE(found.compare(0, total, bytes) == 0);
    FileInfo open;
    FileInfo named;
    EXPECT_TRUE(reader->Stat(open) && DiskFiles().Stat(path, named));
    EXPECT_EQ(open.inode, named.inode);
    EXPECT_EQ(open.size, bytes.size());
    reader.reset();
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    char first = 0;
    const iovec part = {&first, 1};
    const bool isKept = preadv2(file, &part, 1, 10'000'000, RWF_NOWAIT) == 1;
    close(file);
    if (isKept && FactsOf(folder.Path()).disks.empty()) {
        GTEST_SKIP() << "these files lie in memory";
    }
    EXPECT_FALSE(isKept);
}

} // namespace
} // namespace nqp2::platform
