// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk.h"

#include "NQP2ParserU/WholeFile.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

// What the file system under test refuses.
int refusedFolderFlushes = 0; ///< so many, the next ones
bool refusesLinks = false;    ///< second names, and moves that replace nothing

int Fail(int error) {
    errno = error;
    return -1;
}

} // namespace

// These take the place of the C library's in this program.
extern "C" int fsync(int file) {
    struct stat facts = {};
    const bool isFolder = fstat(file, &facts) == 0 && S_ISDIR(facts.st_mode);
    return isFolder && refusedFolderFlushes-- > 0 ? Fail(EIO)
                                                  : static_cast<int>(syscall(SYS_fsync, file));
}
extern "C" int linkat(int from, const char* source, int to, const char* target,
                      int flags) noexcept {
    return refusesLinks ? Fail(EPERM)
                        : static_cast<int>(syscall(SYS_linkat, from, source, to, target, flags));
}
extern "C" int renameat2(int from, const char* source, int to, const char* target,
                         unsigned flags) noexcept {
    return refusesLinks && flags != 0
               ? Fail(EINVAL)
               : static_cast<int>(syscall(SYS_renameat2, from, source, to, target, flags));
}

namespace nqp2::platform {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

/// What is below a folder: names, and contents of files.
std::vector<std::string> Tree(const std::string& folder) {
    std::vector<std::string> tree;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        std::string line = entry.path().lexically_relative(folder).string();
        if (!entry.is_symlink() && entry.is_regular_file()) {
            std::ifstream file(entry.path());
            line += "=" + std::string(std::istreambuf_iterator<char>(file), {});
        }
        tree.push_back(line);
    }
    return tree;
}

class DiskTest : public ::testing::Test {
protected:
    DiskTest() { EXPECT_TRUE(m_disk.OpenFolder(m_root.Path(), m_folder)); }
    ~DiskTest() override {
        refusedFolderFlushes = 0;
        refusesLinks = false;
    }

    void Link(const std::string& target, const std::string& name) const {
        std::filesystem::create_symlink(target, m_root.Path(name));
    }
    IoError ReadError(const std::string& path, std::uint64_t limit = kNoLimit) {
        m_content = "from before";
        return m_disk.Read(path, limit, m_content).error;
    }
    [[nodiscard]] mode_t Mode(const std::string& name) const {
        struct stat facts = {};
        return stat(m_root.Path(name).c_str(), &facts) == 0 ? facts.st_mode & 07777U : 0;
    }

    DiskFileSystem m_disk;
    test::TempFolder m_root;
    std::unique_ptr<Folder> m_folder;
    std::unique_ptr<FileReader> m_reader;
    std::string m_content;
    std::vector<FolderEntry> m_entries;
};

TEST_F(DiskTest, ReadsFilesOfEverySizeWithinTheLimit) {
    for (const std::size_t size : {1U, 4095U, 4096U, 4097U, 1'000'000U}) {
        const std::string path = m_root.Write("file", std::string(size, 'x'));
        EXPECT_EQ(ReadError(path, size), IoError::None) << size;
        EXPECT_EQ(m_content, std::string(size, 'x'));
        EXPECT_EQ(ReadError(path, size - 1), IoError::TooLarge) << size;
        EXPECT_EQ(m_content, "");
    }
    EXPECT_EQ(ReadError("/proc/self/status"), IoError::None) << "which tells no size";
    EXPECT_THAT(m_content, ::testing::HasSubstr("\nPid:"));
    EXPECT_EQ(ReadError("/proc/self/status", 10), IoError::TooLarge);
    const std::string sparse = m_root.Write("sparse", "abcde");
    ASSERT_EQ(truncate(sparse.c_str(), 100'000'000'000), 0);
    EXPECT_EQ(ReadError(sparse, 32U << 20U), IoError::TooLarge);
    EXPECT_TRUE(ReadHead(m_disk, sparse, 5, m_content) && m_content == "abcde");
}

TEST_F(DiskTest, FindsNothingUnderEmptyOrCutPaths) {
    const std::string real = m_root.Write("file", "content");
    for (const std::string& path : {std::string(), real + '\0' + "x", m_root.Path("none"),
                                    real + "/below", std::string(5000, 'x')}) {
        FileInfo info;
        std::uint64_t bytes = 0;
        for (const IoStatus& status :
             {m_disk.Read(path, kNoLimit, m_content), m_disk.Open(path, m_reader),
              m_disk.List(path, m_entries), m_disk.Stat(path, info), m_disk.FreeSpace(path, bytes),
              m_disk.OpenFolder(path, m_folder),
              m_disk.WriteWhole(path.empty() ? path : path + "/x", "")}) {
            EXPECT_EQ(status.error, IoError::NotFound) << path;
        }
    }
    EXPECT_EQ(ReadError(real), IoError::None) << "the real file is untouched";
}

TEST_F(DiskTest, RefusesWhatIsNoRegularFileWithoutWaiting) {
    const std::string pipe = m_root.Path("pipe");
    const std::string socket = m_root.Path("socket");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_EQ(mknod(socket.c_str(), S_IFSOCK | 0600, 0), 0);
    for (const std::string& path : {pipe, socket, std::string("/dev/zero"), m_root.Path()}) {
        const IoError error = path == m_root.Path() ? IoError::IsFolder : IoError::NotAFile;
        EXPECT_EQ(ReadError(path), error) << path;
        EXPECT_EQ(m_disk.Open(path, m_reader).error, error) << path;
    }
    Link("loop", "loop");
    const auto before = Tree(m_root.Path());
    EXPECT_EQ(m_disk.WriteWhole(m_root.Path("loop"), "x").error, IoError::IsLink);
    for (const std::string& name : {"pipe"s, "new/"s, "."s, std::string(300, 'n')}) {
        EXPECT_FALSE(m_disk.WriteWhole(m_root.Path(name), "x")) << name;
    }
    EXPECT_EQ(Tree(m_root.Path()), before);
}

TEST_F(DiskTest, ListsKindsThroughLinksAndStopsInAnEndlessFolder) {
    m_root.Write(".hidden");
    m_root.MakeFolder("folder");
    Link("folder", "to folder");
    Link(".hidden", "to file");
    Link("nowhere", "to nothing");
    ASSERT_TRUE(m_disk.List(m_root.Path(), m_entries));
    std::map<std::string, EntryKind> kinds;
    for (const FolderEntry& entry : m_entries) {
        kinds[entry.name] = entry.kind;
    }
    using enum EntryKind;
    EXPECT_THAT(kinds, ElementsAre(std::pair(".hidden", File), std::pair("folder", Folder),
                                   std::pair("to file", File), std::pair("to folder", Folder),
                                   std::pair("to nothing", Other)));
    EXPECT_TRUE(DiskFileSystem(5).List(m_root.Path(), m_entries));
    EXPECT_EQ(DiskFileSystem(3).List(m_root.Path(), m_entries).error, IoError::TooLarge);
    EXPECT_EQ(m_entries.size(), 3U) << "what came is kept";
}

TEST_F(DiskTest, TellsWhatIsDeniedAndWritesWhereItMay) {
    const std::string locked = m_root.MakeFolder("locked");
    const std::string drop = m_root.MakeFolder("drop");
    ASSERT_EQ(chmod(m_root.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(m_root.Write("secret", "content").c_str(), 0), 0);
    ASSERT_EQ(chmod(locked.c_str(), 0), 0);
    ASSERT_EQ(chmod(drop.c_str(), 0333), 0);
    const std::function<IoStatus()> operations[] = {
        [&] { return m_disk.List(locked, m_entries); },
        [&] { return m_disk.Read(m_root.Path("secret"), kNoLimit, m_content); },
        [&] { return m_disk.WriteWhole(m_root.Path("secret"), "new"); },
        [&] { return m_disk.WriteWhole(drop + "/x", "new"); }};
    for (const auto& operation : operations) {
        EXPECT_EQ(test::RunInChild([&] {
                      return test::BecomeOrdinaryUser() ? static_cast<int>(operation().error) : 255;
                  }),
                  static_cast<int>(&operation - operations < 3 ? IoError::Denied : IoError::None));
    }
    EXPECT_EQ(chmod(drop.c_str(), 0700), 0);
    EXPECT_THAT(Tree(drop), ElementsAre("x=new"));
}

TEST(SystemStatusTest, SortsTheSystemsErrorsAndCountsBytesWithoutOverflow) {
    const std::pair<int, IoError> rows[] = {
        {0, IoError::None},          {EIO, IoError::Device},     {ESTALE, IoError::Device},
        {ENOTCONN, IoError::Device}, {ELOOP, IoError::NotFound}, {EPERM, IoError::Denied},
        {EDQUOT, IoError::NoSpace},  {EROFS, IoError::ReadOnly}, {EMFILE, IoError::Other}};
    for (const auto& [number, error] : rows) {
        EXPECT_EQ(SystemStatus(number).error, error) << number;
        EXPECT_EQ(SystemStatus(number).reason.empty(), number == 0);
    }
    EXPECT_EQ(BytesOfBlocks(1ULL << 52U, 4096), kNoLimit);
    EXPECT_EQ(BytesOfBlocks((1ULL << 52U) - 1, 4096), kNoLimit - 4095);
    EXPECT_EQ(BytesOfBlocks(kNoLimit, 0), 0U);
}

TEST_F(DiskTest, WritesWholeFilesInAnyLetterCaseWithTheirModes) {
    m_root.Write("Contents/EditList/p001ab.XML", "old");
    ASSERT_EQ(chmod(m_root.Path("Contents/EditList/p001ab.XML").c_str(), 0666), 0);
    const mode_t before = umask(027);
    for (const std::string& content : {std::string(3'000'000, 'x'), std::string(), "new"s}) {
        EXPECT_TRUE(m_disk.WriteWhole(m_root.Path("CONTENTS/EDITLIST/P001AB.xml"), content));
        EXPECT_THAT(Tree(m_root.Path("Contents/EditList")), ElementsAre("p001ab.XML=" + content));
    }
    EXPECT_TRUE(m_disk.WriteWhole(m_root.Path("CONTENTS//EDITLIST/P002.xml"), "second"));
    umask(before);
    EXPECT_THAT(Tree(m_root.Path()), UnorderedElementsAre("Contents", "Contents/EditList",
                                                          "Contents/EditList/p001ab.XML=new",
                                                          "Contents/EditList/P002.xml=second"));
    EXPECT_EQ(Mode("Contents/EditList/P002.xml"), 0640U);
    EXPECT_EQ(Mode("Contents/EditList/p001ab.XML"), 0666U) << "the mask takes no bits away";
}

TEST_F(DiskTest, AFileThatIsWrittenAsItComesIsThereWhenItIsFinished) {
    m_root.Write("Old.XML", "old");
    const auto write = [&](const std::string& name) {
        const auto writer = std::make_unique<WholeFileWriter>(m_root.Path(name));
        EXPECT_TRUE(writer->Write("one ") && writer->Write("two"));
        return writer->Finish();
    };
    {
        WholeFileWriter dropped(m_root.Path("old.xml"));
        EXPECT_TRUE(dropped.Write("new"));
        EXPECT_EQ(Tree(m_root.Path()).size(), 2U) << "under a name of its own";
    }
    EXPECT_THAT(Tree(m_root.Path()), ElementsAre("Old.XML=old"));
    EXPECT_EQ(write("old.xml"), "");
    EXPECT_EQ(write("fresh"), "");
    EXPECT_THAT(Tree(m_root.Path()), UnorderedElementsAre("Old.XML=one two", "fresh=one two"));
    Link(m_root.Path("fresh"), "link");
    std::filesystem::create_directory(m_root.Path("folder"));
    for (const std::string name : {"link", "folder", "no/such", ""}) {
        WholeFileWriter writer(m_root.Path(name));
        EXPECT_NE(writer.Finish(), "") << name;
    }
    EXPECT_EQ(Tree(m_root.Path()).size(), 4U);
}

TEST_F(DiskTest, NoLinkIsFollowedAndNoNameLeadsOut) {
    const test::TempFolder outside;
    outside.Write("file", "theirs");
    const auto before = Tree(outside.Path());
    Link(outside.Path(), "folder");
    Link(outside.Path("file"), "file");
    Link(outside.Path("none"), "none");
    std::unique_ptr<Folder> below;
    const std::function<IoStatus(const std::string&)> operations[] = {
        [&](auto& name) { return m_folder->OpenFolder(name, below); },
        [&](auto& name) { return m_folder->Open(name, m_reader); },
        [&](auto& name) { return m_folder->Read(name, 100, m_content); },
        [&](auto& name) { return m_folder->WriteWhole(name, "new"); },
        [&](auto& name) { return m_folder->RemoveFile(name); },
        [&](auto& name) { return m_folder->MoveToFree(name, "free"); },
        [&](auto& name) { return m_folder->MakeFolder(name); },
        [&](auto& name) {
            std::unique_ptr<FileWriter> writer;
            IoStatus status = m_folder->Create(name, writer);
            return status ? writer->Commit() : status;
        }};
    for (const auto& operation : operations) {
        SCOPED_TRACE(&operation - operations);
        for (const std::string name : {"folder", "file", "none"}) {
            const IoError error = operation(name).error;
            EXPECT_TRUE(error == IoError::IsLink || error == IoError::Exists) << name;
        }
        for (const std::string& name :
             {""s, "."s, ".."s, "../" + outside.Path(), std::string("a\0b", 3)}) {
            EXPECT_FALSE(operation(name)) << name;
        }
    }
    EXPECT_EQ(MakeBelow(*m_folder, "folder/CONTENTS", below).error, IoError::IsLink);
    EXPECT_THAT(Tree(m_root.Path()), UnorderedElementsAre("folder", "file", "none"));
    EXPECT_EQ(Tree(outside.Path()), before);
}

TEST_F(DiskTest, WhatCannotBeFlushedIsUndone) {
    m_root.Write("old", "old");
    ASSERT_EQ(chmod(m_root.Path("old").c_str(), 0640), 0);
    const auto before = Tree(m_root.Path());
    for (const bool noLinks : {false, true}) {
        refusesLinks = noLinks;
        for (const int flushes : {1, 1000}) {
            const std::function<IoStatus()> operations[] = {
                [&] { return m_folder->WriteWhole("old", "new"); },
                [&] { return m_folder->WriteWhole("fresh", "new"); },
                [&] { return m_folder->MoveToFree("old", "fresh"); },
                [&] { return m_folder->MakeFolder("fresh"); }};
            for (const auto& operation : operations) {
                refusedFolderFlushes = flushes;
                EXPECT_EQ(operation().error, IoError::Device);
            }
            EXPECT_EQ(Tree(m_root.Path()), before) << noLinks << flushes;
        }
    }
    EXPECT_EQ(Mode("old"), 0640U);
}

/// A writer with content, which is closed or not.
std::unique_ptr<FileWriter> Writer(Folder& folder, const std::string& name, bool closed = false) {
    std::unique_ptr<FileWriter> writer;
    EXPECT_TRUE(folder.Create(name, writer));
    EXPECT_TRUE(writer->WriteAt(0, name));
    EXPECT_TRUE(writer->Flush());
    EXPECT_TRUE(!closed || writer->Close());
    return writer;
}

TEST_F(DiskTest, ANameIsGivenOnceAlsoWithoutTheSystemsHelp) {
    m_root.MakeFolder("folder");
    Link("nowhere", "loose");
    for (const bool noLinks : {false, true}) {
        refusesLinks = noLinks;
        const auto first = Writer(*m_folder, "P001.XML");
        const auto second = Writer(*m_folder, "P001.XML", true);
        EXPECT_TRUE(first->Commit());
        EXPECT_EQ(second->Commit().error, IoError::Exists);
        EXPECT_EQ(second->CommitAs("../P002.XML").error, IoError::NotFound);
        EXPECT_TRUE(second->CommitAs("P002.XML"));
        for (const char* name : {"P001.XML", "P002.XML", "folder", "loose"}) {
            EXPECT_EQ(m_folder->MoveToFree("P001.XML", name).error, IoError::Exists) << name;
        }
        EXPECT_EQ(m_folder->MoveToFree("folder", "to").error, IoError::IsFolder);
        EXPECT_EQ(m_folder->RemoveFile("folder").error, IoError::IsFolder);
        EXPECT_TRUE(m_folder->MoveToFree("P001.XML", "to"));
        EXPECT_THAT(Tree(m_root.Path()),
                    UnorderedElementsAre("to=P001.XML", "P002.XML=P001.XML", "folder", "loose"));
        EXPECT_TRUE(m_folder->RemoveFile("to") && m_folder->RemoveFile("P002.XML"));
    }
}

TEST_F(DiskTest, SweepsWhatKilledWritersLeftAndNothingElse) {
    const auto sweptElsewhere = [&] {
        std::unique_ptr<Folder> other;
        EXPECT_TRUE(m_disk.OpenFolder(m_root.Path(), other) && other->RemoveAbandoned());
        return Tree(m_root.Path()).size();
    };
    EXPECT_EQ(test::RunInChild([&] {
                  std::unique_ptr<NameLock> lock;
                  Writer(*m_folder, "killed", true).release();
                  Writer(*m_folder, "killed").release();
                  return m_folder->LockName("0001AB", lock) && lock.release() != nullptr ? 0 : 1;
              }),
              0);
    // Its lock on the folder is shared with this process, which has it open from before.
    ASSERT_TRUE(m_disk.OpenFolder(m_root.Path(), m_folder));
    m_root.Write(".nqp2-old.tmp");
    EXPECT_EQ(Tree(m_root.Path()).size(), 4U);
    const auto open = Writer(*m_folder, "open");
    EXPECT_EQ(sweptElsewhere(), 1U);
    const auto closed = Writer(*m_folder, "closed", true);
    m_folder.reset();
    EXPECT_EQ(sweptElsewhere(), 2U);
    EXPECT_TRUE(open->Commit() && closed->Commit());
    EXPECT_THAT(Tree(m_root.Path()), UnorderedElementsAre("open=open", "closed=closed"));
}

TEST_F(DiskTest, ALimitOfFileSizesIsAFailureAndNoSignal) {
    m_root.Write("old", "old");
    EXPECT_EQ(test::RunInChild([&] {
                  const rlimit limit = {100, 100};
                  std::unique_ptr<FileWriter> writer;
                  int tooLarge = 0;
                  if (setrlimit(RLIMIT_FSIZE, &limit) == 0 && m_folder->Create("x", writer) &&
                      writer->WriteAt(0, std::string(100, 'x'))) {
                      for (const IoStatus& status :
                           {writer->WriteAt(100, "x"), writer->Resize(101),
                            m_folder->WriteWhole("old", std::string(101, 'x'))}) {
                          tooLarge += status.error == IoError::TooLarge ? 1 : 0;
                      }
                  }
                  return tooLarge;
              }),
              3);
    ASSERT_TRUE(m_disk.OpenFolder(m_root.Path(), m_folder) && m_folder->RemoveAbandoned());
    EXPECT_THAT(Tree(m_root.Path()), ElementsAre("old=old"));
}

} // namespace
} // namespace nqp2::platform
