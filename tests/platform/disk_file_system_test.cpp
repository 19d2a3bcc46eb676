// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk_file_system.h"

#include "platform/system_status.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/un.h>
#include <thread>

namespace nqp2::platform {
namespace {

using ::testing::UnorderedElementsAre;

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

class DiskFiles : public ::testing::Test {
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

    test::TempFolder m_folder;
    DiskFileSystem m_disk;
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
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string socketPath = m_folder.Path("socket");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(socketPath.size(), sizeof address.sun_path);
    std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
    const int number = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(number, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(number);

    for (const std::string& path : {pipe, socketPath, std::string("/dev/zero")}) {
        EXPECT_EQ(ReadError(path), IoError::NotAFile) << path;
        EXPECT_EQ(OpenError(path), IoError::NotAFile) << path;
    }
    EXPECT_EQ(ReadError(m_folder.Path()), IoError::IsFolder);
    EXPECT_EQ(OpenError(m_folder.Path()), IoError::IsFolder);
}

TEST_F(DiskFiles, RefusesAHugeFileBeforeReadingIt) {
    const std::string path = m_folder.Write("sparse");
    ASSERT_EQ(truncate(path.c_str(), 100'000'000'000), 0);
    EXPECT_EQ(ReadError(path, 32U << 20U), IoError::TooLarge);
    FileInfo info;
    ASSERT_TRUE(m_disk.Stat(path, info));
    EXPECT_EQ(info.size, 100'000'000'000U);
}

TEST_F(DiskFiles, ReadsFilesThatTellNoSize) {
    EXPECT_EQ(ReadError("/proc/self/status"), IoError::None);
    EXPECT_THAT(m_content, ::testing::HasSubstr("\nPid:"));
    EXPECT_EQ(ReadError("/proc/self/status", 10), IoError::TooLarge);
}

TEST_F(DiskFiles, StopsAtTheLimitWhileAFileGrows) {
    const std::string path = m_folder.Write("growing", "x");
    std::atomic<bool> stop = false;
    std::thread writer([&] {
        std::ofstream file(path, std::ios::app);
        while (!stop) {
            file << std::string(1000, 'x') << std::flush;
        }
    });
    constexpr std::uint64_t kLimit = 200'000;
    bool refused = false;
    for (int tries = 0; tries < 100'000 && !refused; ++tries) {
        const IoError error = ReadError(path, kLimit);
        ASSERT_TRUE(error == IoError::None || error == IoError::TooLarge);
        ASSERT_LE(m_content.size(), kLimit);
        refused = error == IoError::TooLarge;
    }
    stop = true;
    writer.join();
    EXPECT_TRUE(refused);
}

TEST_F(DiskFiles, ReadsOpenFilesInPieces) {
    const std::string path = m_folder.Write("file", "abcdefgh");
    std::unique_ptr<FileReader> reader;
    ASSERT_TRUE(m_disk.Open(path, reader));
    EXPECT_EQ(reader->Size(), 8U);
    std::string all;
    char piece[3];
    std::size_t count = 0;
    do {
        ASSERT_TRUE(reader->Read(piece, sizeof piece, count));
        all.append(piece, count);
    } while (count != 0);
    EXPECT_EQ(all, "abcdefgh");
}

TEST_F(DiskFiles, ListsKindsThroughLinks) {
    m_folder.Write(".hidden");
    m_folder.MakeFolder("folder");
    ASSERT_EQ(symlink("folder", m_folder.Path("to folder").c_str()), 0);
    ASSERT_EQ(symlink(".hidden", m_folder.Path("to file").c_str()), 0);
    ASSERT_EQ(symlink("nowhere", m_folder.Path("to nothing").c_str()), 0);
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

TEST_F(DiskFiles, KnowsWhenAFileWasMadeAndChanged) {
    const std::string path = m_folder.Write("file", "content");
    const timeval past[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(utimes(path.c_str(), past), 0);
    FileInfo info;
    ASSERT_TRUE(m_disk.Stat(path, info));
    EXPECT_EQ(info.kind, EntryKind::File);
    EXPECT_EQ(info.size, 7U);
    EXPECT_EQ(info.modified, 1'000'000'000);
    struct statx facts = {};
    ASSERT_EQ(statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &facts), 0);
    const bool bornKnown = (facts.stx_mask & STATX_BTIME) != 0;
    EXPECT_EQ(info.created, bornKnown ? facts.stx_btime.tv_sec : 1'000'000'000);
}

TEST_F(DiskFiles, MakesFoldersAndRemovesFiles) {
    const std::string folder = m_folder.Path("folder");
    EXPECT_TRUE(m_disk.MakeFolder(folder));
    EXPECT_EQ(m_disk.MakeFolder(folder).error, IoError::Exists);
    EXPECT_EQ(m_disk.RemoveFile(folder).error, IoError::IsFolder);
    EXPECT_TRUE(m_disk.RemoveFile(m_folder.Write("folder/file")));
    EXPECT_EQ(ListError(folder), IoError::None);
    EXPECT_TRUE(m_entries.empty());
}

TEST_F(DiskFiles, CountsFreeSpaceWithoutOverflow) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(BytesOfBlocks(3'000'000'000, 4096), 12'288'000'000'000U);
    EXPECT_EQ(BytesOfBlocks(1ULL << 52U, 4096), kMost);
    EXPECT_EQ(BytesOfBlocks((1ULL << 52U) - 1, 4096), kMost - 4095);
    EXPECT_EQ(BytesOfBlocks(kMost, 0), 0U);
    std::uint64_t bytes = 0;
    EXPECT_TRUE(m_disk.FreeSpace(m_folder.Path(), bytes));
    EXPECT_GT(bytes, 0U);
}

TEST_F(DiskFiles, FreeSpaceIsTheMediumsNotTheUsers) {
    struct statvfs before = {};
    struct statvfs after = {};
    std::uint64_t bytes = 0;
    for (int tried = 0; tried < 100; ++tried) { // others may write meanwhile
        ASSERT_EQ(statvfs(m_folder.Path().c_str(), &before), 0);
        ASSERT_TRUE(m_disk.FreeSpace(m_folder.Path(), bytes));
        ASSERT_EQ(statvfs(m_folder.Path().c_str(), &after), 0);
        if (before.f_bfree == after.f_bfree) {
            break;
        }
    }
    EXPECT_EQ(bytes, std::uint64_t{before.f_bfree} * before.f_frsize);
}

TEST_F(DiskFiles, MovesAFileToAFreeNameOnly) {
    const std::string from = m_folder.Write("from", "new");
    const std::string taken = m_folder.Write("taken", "old");
    const std::string loose = m_folder.Path("loose");
    ASSERT_EQ(symlink("nowhere", loose.c_str()), 0);
    EXPECT_EQ(m_disk.MoveToFree(from, taken).error, IoError::Exists);
    EXPECT_EQ(m_disk.MoveToFree(from, from).error, IoError::Exists);
    EXPECT_EQ(m_disk.MoveToFree(from, loose).error, IoError::Exists) << "a link takes its name";
    EXPECT_EQ(m_disk.MoveToFree(m_folder.Path("none"), m_folder.Path("to")).error,
              IoError::NotFound);
    EXPECT_EQ(m_disk.MoveToFree(from, m_folder.Path("none/to")).error, IoError::NotFound);
    EXPECT_EQ(m_disk.MoveToFree("", m_folder.Path("to")).error, IoError::NotFound);
    EXPECT_EQ(m_disk.MoveToFree(from, std::string("a\0b", 3)).error, IoError::NotFound);
    EXPECT_EQ(ReadError(from), IoError::None);
    EXPECT_EQ(m_content, "new");
    EXPECT_EQ(m_disk.MoveToFree(from, m_folder.Path("to")).error, IoError::None);
    EXPECT_EQ(ReadError(from), IoError::NotFound);
    EXPECT_EQ(ReadError(m_folder.Path("to")), IoError::None);
    EXPECT_EQ(m_content, "new");
    EXPECT_EQ(ReadError(taken), IoError::None);
    EXPECT_EQ(m_content, "old");
}

TEST(SystemStatusTest, SortsTheSystemsErrors) {
    const std::pair<int, IoError> rows[] = {
        {0, IoError::None},          {EIO, IoError::Device},     {ESTALE, IoError::Device},
        {ENOTCONN, IoError::Device}, {ELOOP, IoError::NotFound}, {EPERM, IoError::Denied},
        {EDQUOT, IoError::NoSpace},  {EROFS, IoError::ReadOnly}, {EFBIG, IoError::TooLarge},
        {EMFILE, IoError::Other},
    };
    for (const auto& [number, error] : rows) {
        EXPECT_EQ(SystemStatus(number).error, error) << number;
        EXPECT_EQ(SystemStatus(number).reason.empty(), number == 0);
    }
}

/// The file calls that a child process makes between two markers (getppid), from the first open
/// on: what a sanitizer does before is not ours.
class CallTrace {
public:
    static std::vector<std::uint64_t> FileCallsOf(const std::function<void()>& body) {
        const pid_t child = fork();
        if (child == 0) {
            if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
                _exit(1);
            }
            raise(SIGSTOP);
            syscall(SYS_getppid);
            body();
            syscall(SYS_getppid);
            _exit(0);
        }
        return Follow(child);
    }

private:
    static std::vector<std::uint64_t> Follow(pid_t child) {
        std::vector<std::uint64_t> calls;
        int markers = 0;
        int status = 0;
        while (waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
            ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
            __ptrace_syscall_info info = {};
            if (ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) > 0 &&
                info.op == PTRACE_SYSCALL_INFO_ENTRY) {
                markers += info.entry.nr == SYS_getppid ? 1 : 0;
                const bool opened = !calls.empty() || info.entry.nr == SYS_openat;
                if (markers == 1 && opened && IsFileCall(info.entry.nr)) {
                    calls.push_back(info.entry.nr);
                }
            }
            ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        }
        EXPECT_EQ(markers, 2) << "the child did not come to its end";
        return calls;
    }

    /// Everything but the memory management that allocation (and a sanitizer's) brings.
    static bool IsFileCall(std::uint64_t number) {
        constexpr std::uint64_t kOthers[] = {SYS_getppid, SYS_brk,      SYS_mmap,   SYS_munmap,
                                             SYS_mremap,  SYS_mprotect, SYS_madvise};
        return std::find(std::begin(kOthers), std::end(kOthers), number) == std::end(kOthers);
    }
};

TEST_F(DiskFiles, ReadsAnOrdinaryFileInFourSystemCalls) {
    if (test::RunInChild([] { return ptrace(PTRACE_TRACEME, 0, 0, 0) == 0 ? 0 : 1; }) != 0) {
        GTEST_SKIP() << "this system does not let a process be traced";
    }
    const std::string path = m_folder.Write("file", std::string(50'000, 'x'));
    const auto calls = CallTrace::FileCallsOf([&] { ReadError(path); });
    EXPECT_EQ(calls.size(), 4U) << ::testing::PrintToString(calls);
}

} // namespace
} // namespace nqp2::platform
