// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/PathText.h"
#include "platform/folder_memory.h"
#include "platform/place.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

namespace nqp2::platform {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;
using std::chrono::system_clock;

TEST(StampTells, OnlyOfChangesThatCannotHaveTheSameStamp) {
    struct Row {
        int listed, now,
            steady; ///< seconds since the stamp, and between the two by the other clock
        bool tells;
    };
    const Row rows[] = {
        {4, 4, 0, true},        {4, 5000, 4996, true}, // long ago
        {1, 1, 0, false},       {2, 60, 58, false},    // in the step in which it was listed
        {-9, -9, 0, true},      {-9, -5, 4, true},     // a camera's clock is ahead,
        {-9, -3, 6, false},     {-9, 60, 69, false},   // until ours gets there,
        {-3, -3, 0, false},     {60, 50, 5, false},    // and ours was set back,
        {60, 70, 100, false},   {60, 9000, 1, true},   // also if it is ahead again, or forward
        {5000, 5009, 10, true},                        // or adjusted
    };
    const Moment stamp = Moment::Now();
    for (const Row& row : rows) {
        const Moment listed = {stamp.wall + seconds(row.listed), stamp.steady};
        const Moment now = {stamp.wall + seconds(row.now), stamp.steady + seconds(row.steady)};
        EXPECT_EQ(StampTells(system_clock::to_time_t(stamp.wall), listed, now), row.tells)
            << row.listed << ' ' << row.now << ' ' << row.steady;
    }
}

/// How a medium stamps its folders.
struct Stamping {
    const char* stamps;
    int first;              ///< seconds from now
    int step;               ///< between two changes
    std::uint64_t listings; ///< of a folder that has not changed
};
void PrintTo(const Stamping& stamping, std::ostream* out) {
    *out << stamping.stamps;
}
constexpr Stamping kStampings[] = {
    {"from long ago", -3600, 2, 0},
    {"ahead of us", 3600, 2, 0},
    {"of this moment", 0, 0, 1},
    {"that never change", -3600, 0, 0},
};

class FolderMemoryTest : public ::testing::TestWithParam<Stamping> {
protected:
    FolderMemoryTest() {
        for (const char* name :
             {"Video/0001ab.mxf", "Video/B.MXF", "Other/b.mxf", "Other/0001ab.mxf"}) {
            m_folder.Write(name);
        }
        m_files.SetFacts([this](FileInfo& info) {
            const auto start = GetParam().first == 0 ? system_clock::now() : m_start;
            info.modified =
                system_clock::to_time_t(start) + GetParam().first + m_changes * GetParam().step;
            info.modifiedNanoseconds = info.changedNanoseconds = 0;
            info.changed = info.modified;
        });
    }
    /// What a clip's reader would find there.
    std::vector<std::string> Found(FolderMemory* memory) const {
        const Place video(InterfaceRoot(m_folder.Path()) + L"\\VIDEO\\", memory);
        std::vector<std::string> found;
        for (const wchar_t* name : {L"0001AB.MXF", L"B.MXF", L"NEW.MXF", L"C.MXF", L"LOST.MXF"}) {
            FoundFile file;
            const IoStatus status = video.Find(name, file);
            EXPECT_EQ(video.Has(CString(name)), static_cast<bool>(status));
            found.push_back(status ? NamePart(file.posixPath) : "(none)");
        }
        return found;
    }
    std::vector<std::string> FoundNow() {
        m_memory.BeginOperation();
        return Found(&m_memory);
    }

    test::TempFolder m_folder;
    fs::path m_video = m_folder.Path("Video");
    const system_clock::time_point m_start = system_clock::now();
    int m_changes = 0;
    FolderMemory m_memory;
    test::FaultyFileSystem m_files;
    ScopedFileSystem m_inPlace{m_files};
};

TEST_P(FolderMemoryTest, FindsWhatIsThereWhateverHappenedMeanwhile) {
    struct Change {
        const char* what;
        std::function<void()> make;
        bool onlyStampTells = false;
    };
    const Change changes[] = {
        {"nothing", [] {}},
        {"added", [&] { m_folder.Write("Video/NEW.MXF"); }},
        {"removed", [&] { fs::remove(m_video / "NEW.MXF"); }},
        {"written otherwise", [&] { fs::rename(m_video / "0001ab.mxf", m_video / "0001aB.mxf"); }},
        {"removed in other letters", [&] { fs::remove(m_video / "0001aB.mxf"); }},
        {"added in other letters", [&] { m_folder.Write("Video/c.MXF"); }, true},
        {"a link to nowhere", [&] { fs::create_symlink("none", m_video / "lost.mxf"); }, true},
        {"swapped",
         [&] {
             fs::rename(m_video, m_folder.Path("Old"));
             fs::rename(m_folder.Path("Other"), m_video);
         }},
        {"a link to another",
         [&] {
             fs::remove_all(m_video);
             fs::create_symlink("Old", m_video);
         }},
        {"gone", [&] { fs::remove(m_video); }},
    };
    for (const Change& change : changes) {
        static_cast<void>(FoundNow()); // what was there before is known
        change.make();
        ++m_changes;
        if (GetParam().step != 0 || GetParam().first == 0 || !change.onlyStampTells) {
            EXPECT_EQ(FoundNow(), Found(nullptr)) << change.what;
        }
    }
}

TEST_P(FolderMemoryTest, ListsEachFolderOnceAtMost) {
    for (int i = 0; i < 3; ++i) {
        m_files.ResetCalls();
        EXPECT_EQ(FoundNow().front(), "0001ab.mxf");
        const CString written = InterfaceRoot(m_folder.Path()) + L"\\VIDEO\\b.mxf";
        EXPECT_EQ(PathOnDisk(written, &m_memory), m_folder.Path("Video/B.MXF"));
        EXPECT_EQ(m_files.Calls(test::Operation::List), i == 0 ? 2 : GetParam().listings * 2)
            << "of the card and its folder";
    }
}

INSTANTIATE_TEST_SUITE_P(Stamps, FolderMemoryTest, ::testing::ValuesIn(kStampings));

} // namespace
} // namespace nqp2::platform
