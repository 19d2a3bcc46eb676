// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk_file_system.h"

#include "platform/folder_lock.h"
#include "platform/system_status.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <sys/resource.h>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/time.h>

#include <thread>
#include <vector>

namespace nqp2::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

class DiskTest : public ::testing::Test {
protected:
    /// A link at a name of the folder.
    void Link(const std::string& target, const std::string& name) const {
        EXPECT_EQ(symlink(target.c_str(), m_folder.Path(name).c_str()), 0);
    }

    test::TempFolder m_folder;
    DiskFileSystem m_disk;
};

class DiskFiles : public DiskTest {
protected:
    IoError ReadError(const std::string& path, std::uint64_t limit = kNoLimit) {
        m_content = "from before";
        return m_disk.Read(path, limit, m_content).error;
    }
    IoError OpenError(const std::string& path) {
        std::unique_ptr<FileReader> reader;
        return m_disk.Open(path, reader).error;
    }
    IoError ListError(const std::string& path) { return m_disk.List(path, m_entries).error; }

    std::string m_content;
    std::vector<FolderEntry> m_entries;
};

TEST_F(DiskFiles, ReadsFilesOfEverySize) {
    for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 1'000'000U}) {
        const std::string bytes(size, 'x');
        const std::string path = m_folder.Write("file", bytes);
        EXPECT_EQ(ReadError(path, size), IoError::None) << size;
        EXPECT_EQ(m_content, bytes);
        if (size != 0) {
            EXPECT_EQ(ReadError(path, size - 1), IoError::TooLarge) << size;
            EXPECT_EQ(m_content, "");
        }
    }
}

TEST_F(DiskFiles, FindsNothingUnderEmptyOrCutPaths) {
    const std::string real = m_folder.Write("file", "content");
    for (const std::string& path : {std::string(), real + '\0' + "x", m_folder.Path("none"),
                                    real + "/below", std::string(5000, 'x')}) {
        FileInfo info;
        std::uint64_t bytes = 0;
        EXPECT_EQ(ReadError(path), IoError::NotFound);
        EXPECT_EQ(OpenError(path), IoError::NotFound);
        EXPECT_EQ(ListError(path), IoError::NotFound);
        EXPECT_EQ(m_disk.Stat(path, info).error, IoError::NotFound);
        EXPECT_EQ(m_disk.FreeSpace(path, bytes).error, IoError::NotFound);
        EXPECT_EQ(m_disk.RemoveFile(path).error, IoError::NotFound);
        EXPECT_EQ(m_disk.WriteWhole(path.empty() ? path : path + "/x", "").error,
                  IoError::NotFound);
    }
    EXPECT_EQ(m_disk.MakeFolder("").error, IoError::NotFound);
    EXPECT_EQ(ReadError(real), IoError::None) << "the real file stands untouched";
}

TEST_F(DiskFiles, RefusesWhatIsNoRegularFileWithoutWaiting) {
    const std::string pipe = m_folder.Path("pipe");
    const std::string socket = m_folder.Path("socket");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_EQ(mknod(socket.c_str(), S_IFSOCK | 0600, 0), 0);
    for (const std::string& path : {pipe, socket, std::string("/dev/zero")}) {
        EXPECT_EQ(ReadError(path), IoError::NotAFile) << path;
        EXPECT_EQ(OpenError(path), IoError::NotAFile) << path;
    }
    EXPECT_EQ(ReadError(m_folder.Path()), IoError::IsFolder);
    EXPECT_EQ(OpenError(m_folder.Path()), IoError::IsFolder);
    EXPECT_EQ(m_disk.RemoveFile(m_folder.Path()).error, IoError::IsFolder);
    EXPECT_EQ(m_disk.MakeFolder(m_folder.Path()).error, IoError::Exists);
    const std::string sparse = m_folder.Write("sparse");
    ASSERT_EQ(truncate(sparse.c_str(), 100'000'000'000), 0);
    EXPECT_EQ(ReadError(sparse, 32U << 20U), IoError::TooLarge);
}

TEST_F(DiskFiles, ReadsFilesThatTellNoSize) {
    EXPECT_EQ(ReadError("/proc/self/status"), IoError::None);
    EXPECT_THAT(m_content, ::testing::HasSubstr("\nPid:"));
    EXPECT_EQ(ReadError("/proc/self/status", 10), IoError::TooLarge);
}

TEST_F(DiskFiles, TellsSizesAndTimesAndReadsInPieces) {
    const std::string path = m_folder.Write("file", "abcdefgh");
    const timeval past[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(utimes(path.c_str(), past), 0);
    FileInfo info;
    ASSERT_TRUE(m_disk.Stat(path, info));
    EXPECT_EQ(info.size, 8U);
    EXPECT_EQ(info.modified, 1'000'000'000);
    struct statx facts = {};
    ASSERT_EQ(statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &facts), 0);
    const bool bornKnown = (facts.stx_mask & STATX_BTIME) != 0;
    EXPECT_EQ(info.created, bornKnown ? facts.stx_btime.tv_sec : 1'000'000'000);
    std::unique_ptr<FileReader> reader;
    ASSERT_TRUE(m_disk.Open(path, reader));
    EXPECT_EQ(reader->Size(), 8U);
    char piece[3];
    std::size_t count = 0;
    for (const std::string_view expected : {"abc", "def", "gh", ""}) {
        ASSERT_TRUE(reader->Read(piece, sizeof piece, count));
        EXPECT_EQ(std::string_view(piece, count), expected);
    }
}

TEST_F(DiskFiles, ListsKindsThroughLinks) {
    m_folder.Write(".hidden");
    m_folder.MakeFolder("folder");
    Link("folder", "to folder");
    Link(".hidden", "to file");
    Link("nowhere", "to nothing");
    ASSERT_EQ(ListError(m_folder.Path()), IoError::None);
    std::map<std::string, EntryKind> kinds;
    for (const FolderEntry& entry : m_entries) {
        kinds[entry.name] = entry.kind;
    }
    const std::map<std::string, EntryKind> expected = {{".hidden", EntryKind::File},
                                                       {"folder", EntryKind::Folder},
                                                       {"to folder", EntryKind::Folder},
                                                       {"to file", EntryKind::File},
                                                       {"to nothing", EntryKind::Other}};
    EXPECT_EQ(kinds, expected);
}

TEST_F(DiskFiles, StopsListingAnEndlessFolderAndKeepsWhatCame) {
    for (const char* name : {"a", "b", "c", "d"}) {
        m_folder.Write(name);
    }
    EXPECT_TRUE(DiskFileSystem(4).List(m_folder.Path(), m_entries));
    EXPECT_EQ(DiskFileSystem(3).List(m_folder.Path(), m_entries).error, IoError::TooLarge);
    EXPECT_EQ(m_entries.size(), 3U);
}

TEST_F(DiskFiles, TellsWhatIsDenied) {
    const std::string locked = m_folder.MakeFolder("locked");
    const std::string secret = m_folder.Write("secret", "content");
    ASSERT_EQ(chmod(locked.c_str(), 0), 0);
    ASSERT_EQ(chmod(secret.c_str(), 0), 0);
    ASSERT_EQ(chmod(m_folder.Path().c_str(), 0755), 0);
    const int denied = static_cast<int>(IoError::Denied);
    const auto asOrdinaryUser = [&](const std::function<IoError()>& operation) {
        return test::RunInChild(
            [&] { return test::BecomeOrdinaryUser() ? static_cast<int>(operation()) : 255; });
    };
    FileInfo info;
    EXPECT_EQ(asOrdinaryUser([&] { return ListError(locked); }), denied);
    EXPECT_EQ(asOrdinaryUser([&] { return ReadError(secret); }), denied);
    EXPECT_EQ(asOrdinaryUser([&] { return m_disk.Stat(locked + "/x", info).error; }), denied);
    EXPECT_EQ(asOrdinaryUser([&] { return m_disk.WriteWhole(secret, "new").error; }), denied);
    EXPECT_EQ(asOrdinaryUser([&] { return m_disk.WriteWhole(locked + "/x", "").error; }), denied);
}

TEST_F(DiskFiles, CountsTheMediumsFreeSpaceWithoutOverflow) {
    EXPECT_EQ(BytesOfBlocks(3'000'000'000, 4096), 12'288'000'000'000U);
    EXPECT_EQ(BytesOfBlocks(1ULL << 52U, 4096), kNoLimit);
    EXPECT_EQ(BytesOfBlocks((1ULL << 52U) - 1, 4096), kNoLimit - 4095);
    EXPECT_EQ(BytesOfBlocks(kNoLimit, 0), 0U);
    struct statvfs before = {};
    struct statvfs after = {};
    std::uint64_t bytes = 0;
    for (int tried = 0; tried == 0 || (tried < 100 && before.f_bfree != after.f_bfree); ++tried) {
        ASSERT_EQ(statvfs(m_folder.Path().c_str(), &before), 0);
        ASSERT_TRUE(m_disk.FreeSpace(m_folder.Path(), bytes));
        ASSERT_EQ(statvfs(m_folder.Path().c_str(), &after), 0); // others may write meanwhile
    }
    EXPECT_EQ(bytes, std::uint64_t{before.f_bfree} * before.f_frsize) << "not the user's share";
}

TEST_F(DiskFiles, MovesAFileToAFreeNameOnly) {
    const std::string from = m_folder.Write("from", "new");
    const std::string taken = m_folder.Write("taken", "old");
    const std::string to = m_folder.Path("to");
    Link("nowhere", "loose");
    for (const std::string& name : {taken, from, m_folder.Path("loose")}) {
        EXPECT_EQ(m_disk.MoveToFree(from, name).error, IoError::Exists) << name;
    }
    EXPECT_EQ(m_disk.MoveToFree(m_folder.Path("none"), to).error, IoError::NotFound);
    EXPECT_EQ(m_disk.MoveToFree(from, m_folder.Path("none/to")).error, IoError::NotFound);
    EXPECT_EQ(m_disk.MoveToFree("", to).error, IoError::NotFound);
    EXPECT_EQ(m_disk.MoveToFree(from, std::string("a\0b", 3)).error, IoError::NotFound);
    EXPECT_EQ(m_disk.MoveToFree(from, to).error, IoError::None);
    EXPECT_EQ(ReadError(from), IoError::NotFound);
    EXPECT_EQ(ReadError(to), IoError::None);
    EXPECT_EQ(m_content, "new");
    EXPECT_EQ(ReadError(taken), IoError::None);
    EXPECT_EQ(m_content, "old");
}

TEST(SystemStatusTest, SortsTheSystemsErrors) {
    const std::pair<int, IoError> rows[] = {
        {0, IoError::None},          {EIO, IoError::Device},     {ESTALE, IoError::Device},
        {ENOTCONN, IoError::Device}, {ELOOP, IoError::NotFound}, {EPERM, IoError::Denied},
        {EDQUOT, IoError::NoSpace},  {ENOSPC, IoError::NoSpace}, {EROFS, IoError::ReadOnly},
        {EFBIG, IoError::TooLarge},  {EMFILE, IoError::Other},
    };
    for (const auto& [number, error] : rows) {
        EXPECT_EQ(SystemStatus(number).error, error) << number;
        EXPECT_EQ(SystemStatus(number).reason.empty(), number == 0);
    }
}

class WriteWhole : public DiskTest {
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
    ASSERT_EQ(mkfifo(m_folder.Path("pipe").c_str(), 0600), 0);
    Link("loop", "loop");
    const std::pair<std::string, IoError> rows[] = {
        {"folder", IoError::IsFolder},
        {"folder/", IoError::IsFolder},
        {"pipe", IoError::NotAFile},
        {"loop", IoError::IsLink},
        {"new/", IoError::NotFound},
        {"missing/file", IoError::NotFound},
        {std::string(300, 'n'), IoError::NotFound},
    };
    for (const auto& [name, error] : rows) {
        EXPECT_EQ(Write(m_folder.Path(name), "x"), error) << name;
    }
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

using namespace std::chrono_literals;

TEST(FolderLock, AHeldFolderIsRefusedAtTheDeadlineAndFreeAgainLater) {
    const test::TempFolder folder;
    std::optional<FolderLock> first(folder.Path());
    ASSERT_TRUE(*first);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(FolderLock(folder.Path(), 30ms));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
    std::atomic<bool> released = false;
    std::jthread waiting([&] {
        EXPECT_TRUE(FolderLock(folder.Path(), 60s));
        EXPECT_TRUE(released) << "one at a time is inside";
    });
    std::this_thread::sleep_for(20ms);
    released = true;
    first.reset();
    waiting.join();
    EXPECT_TRUE(FolderLock(folder.Path(), 0ms));
}

TEST(FolderLock, WhatCannotBeLockedIsUsedWithout) {
    const test::TempFolder folder;
    folder.Write("file", "");
    const std::string none[] = {"", folder.Path("none"), folder.Path("file"), "/proc/self"};
    for (const std::string& path : none) {
        EXPECT_TRUE(FolderLock(path, 0ms)) << path;
    }
}

} // namespace
} // namespace nqp2::platform
