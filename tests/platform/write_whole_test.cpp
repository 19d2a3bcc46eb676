// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk_file_system.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace nqp2::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

class WriteWhole : public ::testing::Test {
protected:
    IoError Write(const std::string& path, std::string_view content) {
        return m_disk.WriteWhole(path, content).error;
    }
    std::string Content(const std::string& path) {
        std::string content;
        return m_disk.Read(path, 1U << 30U, content) ? content : "(unreadable)";
    }
    std::vector<std::string> Names(const std::string& folder) {
        std::vector<FolderEntry> entries;
        EXPECT_TRUE(m_disk.List(folder, entries));
        std::vector<std::string> names;
        for (const FolderEntry& entry : entries) {
            names.push_back(entry.name);
        }
        return names;
    }
    static mode_t Mode(const std::string& path) {
        struct stat facts = {};
        return stat(path.c_str(), &facts) == 0 ? facts.st_mode & 07777U : 0;
    }

    test::TempFolder m_folder;
    DiskFileSystem m_disk;
};

TEST_F(WriteWhole, MakesAndReplacesFiles) {
    const std::string path = m_folder.Path("P001.xml");
    for (const std::string& content : {std::string("first, and longer"), std::string("second"),
                                       std::string(), std::string(3'000'000, 'x')}) {
        EXPECT_EQ(Write(path, content), IoError::None);
        EXPECT_EQ(Content(path), content);
        EXPECT_THAT(Names(m_folder.Path()), ElementsAre("P001.xml"));
    }
}

TEST_F(WriteWhole, GivesNewFilesTheUsualModeAndOldOnesTheirOwn) {
    const mode_t before = umask(027);
    const std::string fresh = m_folder.Path("fresh");
    const std::string old = m_folder.Write("old");
    EXPECT_EQ(chmod(old.c_str(), 0666), 0);
    EXPECT_EQ(Write(fresh, "x"), IoError::None);
    EXPECT_EQ(Write(old, "x"), IoError::None);
    umask(before);
    EXPECT_EQ(Mode(fresh), 0640U);
    EXPECT_EQ(Mode(old), 0666U) << "kept although the mask would take bits away";
}

TEST_F(WriteWhole, WritesThroughLinksAndKeepsThem) {
    const std::string real = m_folder.Write("real/file.xml", "old");
    const std::string link = m_folder.Path("link.xml");
    const std::string chain = m_folder.Path("chain.xml");
    const std::string dangling = m_folder.Path("dangling.xml");
    ASSERT_EQ(symlink("real/file.xml", link.c_str()), 0);
    ASSERT_EQ(symlink(link.c_str(), chain.c_str()), 0);
    ASSERT_EQ(symlink("real/made.xml", dangling.c_str()), 0);
    EXPECT_EQ(Write(chain, "new"), IoError::None);
    EXPECT_EQ(Write(dangling, "made"), IoError::None);
    EXPECT_EQ(Content(real), "new");
    EXPECT_EQ(Content(m_folder.Path("real/made.xml")), "made");
    struct stat facts = {};
    for (const std::string& path : {link, chain, dangling}) {
        EXPECT_EQ(lstat(path.c_str(), &facts), 0);
        EXPECT_TRUE(S_ISLNK(facts.st_mode)) << path;
    }
}

TEST_F(WriteWhole, ReplacesAFileOfAnotherLetterCase) {
    const std::string real = m_folder.Write("Contents/EditList/p001ab.XML", "old");
    EXPECT_EQ(Write(m_folder.Path("CONTENTS/EDITLIST/P001AB.xml"), "new"), IoError::None);
    EXPECT_EQ(Content(real), "new");
    EXPECT_EQ(Write(m_folder.Path("CONTENTS//EDITLIST/P002.xml"), "second"), IoError::None);
    EXPECT_THAT(Names(m_folder.Path()), ElementsAre("Contents"));
    EXPECT_THAT(Names(m_folder.Path("Contents/EditList")),
                UnorderedElementsAre("p001ab.XML", "P002.xml"));
}

TEST_F(WriteWhole, RefusesWhatIsNoFileAndLeavesNothing) {
    m_folder.MakeFolder("folder");
    const std::string pipe = m_folder.Path("pipe");
    const std::string loop = m_folder.Path("loop");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_EQ(symlink("loop", loop.c_str()), 0);
    EXPECT_EQ(Write(m_folder.Path("folder"), "x"), IoError::IsFolder);
    EXPECT_EQ(Write(m_folder.Path("folder/"), "x"), IoError::IsFolder);
    EXPECT_EQ(Write(pipe, "x"), IoError::NotAFile);
    EXPECT_EQ(Write(loop, "x"), IoError::NotFound);
    EXPECT_EQ(Write(m_folder.Path("missing/file"), "x"), IoError::NotFound);
    EXPECT_EQ(Write(m_folder.Path("new/"), "x"), IoError::NotFound);
    EXPECT_EQ(Write(m_folder.Path(std::string(300, 'n')), "x"), IoError::NotFound);
    EXPECT_THAT(Names(m_folder.Path()), UnorderedElementsAre("folder", "pipe", "loop"));
    EXPECT_THAT(Names(m_folder.Path("folder")), ElementsAre());
}

TEST_F(WriteWhole, KeepsTheOldFileWhenTheContentDoesNotFit) {
    const std::string path = m_folder.Write("P001.xml", "old");
    const int error = test::RunInChild([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {10'000, 10'000}; // a part is written, then the write stops short
        return setrlimit(RLIMIT_FSIZE, &limit) == 0
                   ? static_cast<int>(Write(path, std::string(1'000'000, 'x')))
                   : 255;
    });
    EXPECT_EQ(error, static_cast<int>(IoError::TooLarge));
    EXPECT_EQ(Content(path), "old");
    EXPECT_THAT(Names(m_folder.Path()), ElementsAre("P001.xml"));
}

/// Enters a space of mounts of our own; an ordinary user becomes the superuser of that space.
bool EnterOwnSpace() {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    if (user == "0") {
        return unshare(CLONE_NEWNS) == 0;
    }
    if (unshare(CLONE_NEWNS | CLONE_NEWUSER) != 0) {
        return false;
    }
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    return geteuid() == 0 && getegid() == 0;
}

/// Runs `body` in a child process with a medium of 64 KiB of its own mounted on `folder`.
constexpr int kCannotMount = 254;
int RunOnSmallMedium(const std::string& folder, const std::function<int()>& body) {
    return test::RunInChild([&] {
        const bool mounted = EnterOwnSpace() &&
                             mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             mount("none", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
        return mounted ? body() : kCannotMount;
    });
}

TEST_F(WriteWhole, KeepsTheOldFileOnAFullMedium) {
    const std::string folder = m_folder.MakeFolder("medium");
    const std::string path = folder + "/P001.xml";
    const int result = RunOnSmallMedium(folder, [&] {
        const std::string old(30'000, 'o');
        const IoError first = Write(path, old);
        const IoError second = Write(path, std::string(50'000, 'n'));
        const bool kept = Content(path) == old && Names(folder).size() == 1;
        return first == IoError::None && kept ? static_cast<int>(second) : 255;
    });
    if (result == kCannotMount) {
        GTEST_SKIP() << "no right to mount a small medium";
    }
    EXPECT_EQ(result, static_cast<int>(IoError::NoSpace));
}

TEST_F(WriteWhole, TellsAReadOnlyMedium) {
    const std::string folder = m_folder.MakeFolder("medium");
    const int result = RunOnSmallMedium(folder, [&] {
        const IoError made = Write(folder + "/P001.xml", "old");
        const int flags = MS_REMOUNT | MS_RDONLY;
        if (made != IoError::None || mount("none", folder.c_str(), "tmpfs", flags, "") != 0) {
            return 255;
        }
        const IoError replaced = Write(folder + "/P001.xml", "new");
        const IoError fresh = Write(folder + "/P002.xml", "new");
        return replaced == fresh ? static_cast<int>(fresh) : 255;
    });
    if (result == kCannotMount) {
        GTEST_SKIP() << "no right to mount a small medium";
    }
    EXPECT_EQ(result, static_cast<int>(IoError::ReadOnly));
}

TEST_F(WriteWhole, RespectsAWriteProtectedFile) {
    const std::string path = m_folder.Write("P001.xml", "old");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(chmod(m_folder.Path().c_str(), 0777), 0);
    const int error = test::RunInChild(
        [&] { return test::BecomeOrdinaryUser() ? static_cast<int>(Write(path, "new")) : 255; });
    EXPECT_EQ(error, static_cast<int>(IoError::Denied));
    EXPECT_EQ(Content(path), "old");
}

TEST_F(WriteWhole, WritesIntoAFolderThatMayNotBeRead) {
    const std::string folder = m_folder.MakeFolder("drop");
    ASSERT_EQ(chmod(m_folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0333), 0);
    const int error = test::RunInChild([&] {
        return test::BecomeOrdinaryUser() ? static_cast<int>(Write(folder + "/x", "new")) : 255;
    });
    EXPECT_EQ(error, static_cast<int>(IoError::None));
    EXPECT_EQ(Content(folder + "/x"), "new");
    EXPECT_EQ(chmod(folder.c_str(), 0700), 0);
}

} // namespace
} // namespace nqp2::platform
