// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder.h"

#include "platform/disk_file_system.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

/// What the file system under test refuses.
struct Refused {
    std::atomic<int> folderFlushes = 0; ///< so many, the next ones
    std::atomic<bool> links = false; ///< second names, and moves that replace nothing
};
Refused refused;

bool IsFolder(int file) {
    struct stat facts = {};
    return fstat(file, &facts) == 0 && S_ISDIR(facts.st_mode);
}

int Fail(int error) {
    errno = error;
    return -1;
}

} // namespace

// These take the place of the C library's in this program.
extern "C" int fsync(int file) {
    if (IsFolder(file) && refused.folderFlushes-- > 0) {
        return Fail(EIO);
    }
    return static_cast<int>(syscall(SYS_fsync, file));
}
extern "C" int linkat(int from, const char* source, int to, const char* target,
                      int flags) noexcept {
    return refused.links ? Fail(EPERM)
                         : static_cast<int>(syscall(SYS_linkat, from, source, to, target, flags));
}
extern "C" int renameat2(int from, const char* source, int to, const char* target,
                         unsigned flags) noexcept {
    return refused.links && flags != 0
               ? Fail(EINVAL)
               : static_cast<int>(syscall(SYS_renameat2, from, source, to, target, flags));
}

namespace nqp2::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class FolderTest : public ::testing::Test {
protected:
    FolderTest() { EXPECT_TRUE(m_disk.OpenFolder(m_root.Path(), m_folder)); }
    ~FolderTest() override {
        refused.folderFlushes = 0;
        refused.links = false;
    }

    /// What stands below a folder: names, and contents of files.
    static std::vector<std::string> Tree(const std::string& folder) {
        std::vector<std::string> tree;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            std::string line = entry.path().lexically_relative(folder).string();
            if (entry.is_regular_file() && !entry.is_symlink()) {
                std::ifstream file(entry.path());
                line += "=" + std::string(std::istreambuf_iterator<char>(file), {});
            }
            tree.push_back(line);
        }
        return tree;
    }

    DiskFileSystem m_disk;
    test::TempFolder m_root;
    std::unique_ptr<Folder> m_folder;
};

using Operation = std::function<IoStatus(Folder&, const std::string& name)>;

/// All that takes a name.
const std::vector<Operation>& Operations() {
    static const std::vector<Operation> all = {
        [](Folder& in, const std::string& name) {
            std::unique_ptr<Folder> folder;
            return in.OpenFolder(name, folder);
        },
        [](Folder& in, const std::string& name) {
            std::unique_ptr<FileReader> reader;
            return in.Open(name, reader);
        },
        [](Folder& in, const std::string& name) {
            std::string content;
            return in.Read(name, 100, content);
        },
        [](Folder& in, const std::string& name) { return in.WriteWhole(name, "new"); },
        [](Folder& in, const std::string& name) { return in.RemoveFile(name); },
        [](Folder& in, const std::string& name) { return in.MoveToFree(name, "free"); },
        [](Folder& in, const std::string& name) { return in.MakeFolder(name); },
        [](Folder& in, const std::string& name) {
            std::unique_ptr<FileWriter> writer;
            IoStatus status = in.Create(name, writer);
            return status ? writer->Commit() : status;
        },
    };
    return all;
}

TEST_F(FolderTest, NoLinkIsFollowedAndNoNameLeadsOut) {
    const test::TempFolder outside;
    outside.Write("file", "theirs");
    const auto before = Tree(outside.Path());
    std::filesystem::create_symlink(outside.Path(), m_root.Path("folder"));
    std::filesystem::create_symlink(outside.Path("file"), m_root.Path("file"));
    std::filesystem::create_symlink(outside.Path("none"), m_root.Path("none"));
    for (std::size_t i = 0; i < Operations().size(); ++i) {
        SCOPED_TRACE(i);
        for (const std::string name : {"folder", "file", "none"}) {
            const IoError error = Operations()[i](*m_folder, name).error;
            EXPECT_TRUE(error == IoError::IsLink || error == IoError::Exists) << name;
        }
        for (const std::string& name : {std::string(), std::string("."), std::string(".."),
                                        "../" + outside.Path(), std::string("a\0b", 3)}) {
            EXPECT_FALSE(Operations()[i](*m_folder, name)) << name;
        }
    }
    std::unique_ptr<Folder> below;
    EXPECT_EQ(MakeBelow(*m_folder, "folder/CONTENTS", below).error, IoError::IsLink);
    EXPECT_THAT(Tree(m_root.Path()), UnorderedElementsAre("folder", "file", "none"));
    EXPECT_EQ(Tree(outside.Path()), before);
}

TEST_F(FolderTest, AFolderStaysTheSameWhereverItsPathLeads) {
    const test::TempFolder outside;
    std::unique_ptr<Folder> video;
    ASSERT_TRUE(MakeBelow(*m_folder, "CONTENTS/VIDEO", video));
    std::filesystem::rename(m_root.Path("CONTENTS"), m_root.Path("moved"));
    std::filesystem::create_symlink(outside.Path(), m_root.Path("CONTENTS"));
    EXPECT_TRUE(video->WriteWhole("0001AB.MXF", "x"));
    EXPECT_EQ(OpenBelow(*m_folder, "contents/VIDEO", video).error, IoError::IsLink);
    EXPECT_THAT(Tree(outside.Path()), IsEmpty());
    EXPECT_THAT(Tree(m_root.Path("moved/VIDEO")), ElementsAre("0001AB.MXF=x"));
    ASSERT_TRUE(OpenBelow(*m_folder, "MOVED/video", video)) << "in any letter case";
    EXPECT_EQ(video->Path(), m_root.Path("moved/VIDEO"));
}

TEST_F(FolderTest, WhatCannotBeFlushedIsUndone) {
    m_root.Write("old", "old");
    ASSERT_EQ(chmod(m_root.Path("old").c_str(), 0640), 0);
    const auto before = Tree(m_root.Path());
    for (const bool noLinks : {false, true}) {
        refused.links = noLinks;
        for (const int flushes : {1, 1000}) {
            refused.folderFlushes = flushes;
            EXPECT_EQ(m_folder->WriteWhole("old", "new").error, IoError::Device);
            refused.folderFlushes = flushes;
            EXPECT_EQ(m_folder->WriteWhole("fresh", "new").error, IoError::Device);
            refused.folderFlushes = flushes;
            EXPECT_EQ(m_folder->MoveToFree("old", "fresh").error, IoError::Device);
            refused.folderFlushes = flushes;
            EXPECT_EQ(m_folder->MakeFolder("fresh").error, IoError::Device);
            EXPECT_EQ(Tree(m_root.Path()), before) << noLinks << flushes;
        }
    }
    struct stat facts = {};
    EXPECT_EQ(stat(m_root.Path("old").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777U, 0640U);
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

TEST_F(FolderTest, ANameIsGivenOnceAlsoWithoutTheSystemsHelp) {
    refused.links = true;
    auto first = Writer(*m_folder, "P001.XML");
    auto second = Writer(*m_folder, "P001.XML", true);
    EXPECT_TRUE(first->Commit());
    EXPECT_EQ(second->Commit().error, IoError::Exists);
    EXPECT_EQ(second->CommitAs("../P002.XML").error, IoError::NotFound);
    EXPECT_TRUE(second->CommitAs("P002.XML"));
    EXPECT_THAT(Tree(m_root.Path()),
                UnorderedElementsAre("P001.XML=P001.XML", "P002.XML=P001.XML"));
}

TEST_F(FolderTest, SweepsWhatKilledWritersLeftAndNothingElse) {
    const auto sweepElsewhere = [&] {
        std::unique_ptr<Folder> other;
        return m_disk.OpenFolder(m_root.Path(), other) && other->RemoveAbandoned();
    };
    EXPECT_EQ(test::RunInChild([&] {
                  std::unique_ptr<NameLock> lock;
                  Writer(*m_folder, "killed", true).release();
                  Writer(*m_folder, "killed").release();
                  const bool locked = static_cast<bool>(m_folder->LockName("0001AB", lock));
                  lock.release();
                  return locked ? 0 : 1;
              }),
              0);
    // Its lock on the folder is shared with this process, which has it open from before.
    ASSERT_TRUE(m_disk.OpenFolder(m_root.Path(), m_folder));
    m_root.Write(".nqp2-old.tmp");
    EXPECT_EQ(Tree(m_root.Path()).size(), 4U);
    auto open = Writer(*m_folder, "open");
    EXPECT_TRUE(sweepElsewhere());
    EXPECT_EQ(Tree(m_root.Path()).size(), 1U);
    auto closed = Writer(*m_folder, "closed", true);
    m_folder.reset();
    EXPECT_TRUE(sweepElsewhere());
    EXPECT_TRUE(open->Commit());
    EXPECT_TRUE(closed->Commit());
    EXPECT_THAT(Tree(m_root.Path()), UnorderedElementsAre("open=open", "closed=closed"));
}

TEST_F(FolderTest, OneOfTwoHasAFolderOrAName) {
    using std::chrono::milliseconds;
    std::unique_ptr<Folder> other;
    ASSERT_TRUE(m_disk.OpenFolder(m_root.Path(), other));
    std::unique_ptr<NameLock> first;
    std::unique_ptr<NameLock> second;
    EXPECT_TRUE(m_folder->Lock(milliseconds(0)));
    EXPECT_TRUE(m_folder->WriteWhole("file", "x")) << "it is ours";
    EXPECT_EQ(other->Lock(milliseconds(10)).error, IoError::Busy);
    EXPECT_TRUE(m_folder->LockName("0001ab", first));
    EXPECT_EQ(other->LockName("0001AB", second).error, IoError::Busy);
    EXPECT_TRUE(other->LockName("0002AB", second)) << "side by side";
    first.reset();
    EXPECT_TRUE(other->LockName("0001AB", first));
    m_folder.reset();
    EXPECT_TRUE(other->Lock(milliseconds(0)));
    first.reset();
    second.reset();
    EXPECT_THAT(Tree(m_root.Path()), ElementsAre("file=x"));
}

TEST_F(FolderTest, ALimitOfFileSizesIsAFailureAndNoSignal) {
    m_root.Write("old", "old");
    EXPECT_EQ(test::RunInChild([&] {
                  const rlimit limit = {100, 100};
                  std::unique_ptr<FileWriter> writer;
                  const auto tooLarge = [](const IoStatus& status) {
                      return status.error == IoError::TooLarge;
                  };
                  return setrlimit(RLIMIT_FSIZE, &limit) == 0 && m_folder->Create("x", writer) &&
                                 writer->WriteAt(0, std::string(100, 'x')) &&
                                 tooLarge(writer->WriteAt(100, "x")) &&
                                 tooLarge(writer->Resize(101)) &&
                                 tooLarge(m_folder->WriteWhole("old", std::string(101, 'x')))
                             ? 0
                             : 1;
              }),
              0);
    std::unique_ptr<Folder> other;
    ASSERT_TRUE(m_disk.OpenFolder(m_root.Path(), other));
    EXPECT_TRUE(other->RemoveAbandoned());
    EXPECT_THAT(Tree(m_root.Path()), ElementsAre("old=old"));
}

} // namespace
} // namespace nqp2::platform
