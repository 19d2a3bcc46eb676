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
    std::uint64_t listings; ///< for a folder that has not changed
    bool isSetBack = false; ///< its time of modification is
};
constexpr Stamping kStampings[] = {{"from long ago", -3600, 2, 0},
                                   {"ahead of us", 3600, 2, 0},
                                   {"of this moment", 0, 0, 1},
                                   {"that were set back", 0, 0, 1, true},
                                   {"that never change", -3600, 0, 0}};

/// A folder of videos, asked for in other letters than it is written in.
struct Medium {
    explicit Medium(const Stamping& stamping) {
        for (const char* name :
             {"One/0001ab.mxf", "One/B.MXF", "Other/b.mxf", "Other/0001ab.mxf"}) {
            folder.Write(name);
        }
        fs::create_symlink("One", folder.Path("Video"));
        fs::create_symlink("Other", folder.Path("Next"));
        files.SetFacts([this, stamping](FileInfo& info) {
            const auto now = stamping.first == 0 ? system_clock::now() : start;
            info.modified = system_clock::to_time_t(now) + stamping.first + changes * stamping.step;
            info.changed = info.modified;
            info.modified -= stamping.isSetBack ? 3600 : 0;
            info.modifiedNanoseconds = info.changedNanoseconds = 0;
        });
    }
    [[nodiscard]] std::vector<std::string> Found(FolderMemory* used) const {
        const Place video(written, used);
        std::vector<std::string> found;
        for (const wchar_t* name : {L"0001AB.MXF", L"B.MXF", L"NEW.MXF", L"C.MXF"}) {
            FoundFile file;
            found.push_back(video.Find(name, file) ? NamePart(file.posixPath) : "(none)");
        }
        return found;
    }
    std::vector<std::string> Remembered() {
        memory.BeginOperation();
        return Found(&memory);
    }

    test::TempFolder folder;
    CString written = InterfaceRoot(folder.Path()) + L"\\VIDEO\\";
    system_clock::time_point start = system_clock::now();
    int changes = 0;
    FolderMemory memory;
    test::FaultyFileSystem files;
    ScopedFileSystem inPlace{files};
};

TEST(FolderMemoryTest, FindsWhatIsThereAndListsEachFolderOnceAtMost) {
    struct Change {
        const char *from, *to; ///< "": written or removed, else renamed
        bool onlyStampsTell = false;
    };
    const Change changes[] = {{"", "One/NEW.MXF"},
                              {"One/NEW.MXF", ""},
                              {"One/0001ab.mxf", "One/0001aB.mxf"},
                              {"One/0001aB.mxf", ""},
                              {"", "One/c.MXF", true},
                              {"Next", "Video"}, // another folder from now on
                              {"Video", ""}};
    for (const Stamping& stamping : kStampings) {
        Medium medium(stamping);
        for (int turn = 0; turn < 3; ++turn) {
            medium.files.ResetCalls();
            EXPECT_EQ(medium.Remembered().front(), "0001ab.mxf");
            EXPECT_EQ(NamePart(PathOnDisk(medium.written + L"b.mxf", &medium.memory)), "B.MXF");
            EXPECT_EQ(medium.files.Calls(test::Operation::List),
                      turn == 0 ? 2 : stamping.listings * 2)
                << "of the card and its folder, with stamps " << stamping.stamps;
        }
        for (const Change& change : changes) {
            const fs::path from = medium.folder.Path(change.from);
            static_cast<void>(medium.Remembered());
            if (*change.from == '\0') {
                medium.folder.Write(change.to);
            } else if (*change.to == '\0') {
                fs::remove(from);
            } else {
                fs::rename(from, medium.folder.Path(change.to));
            }
            ++medium.changes;
            if (stamping.step != 0 || stamping.listings != 0 || !change.onlyStampsTell) {
                EXPECT_EQ(medium.Remembered(), medium.Found(nullptr))
                    << change.from << change.to << " with stamps " << stamping.stamps;
            }
        }
    }
}

TEST(FolderMemoryTest, AFolderThatCannotBeListedIsAskedOnceInAnOperation) {
    for (const test::Operation failing : {test::Operation::List, test::Operation::Stat}) {
        Medium medium(kStampings[0]);
        const std::string one = medium.folder.Path("One");
        medium.files.Fail({.operation = failing, .pathPart = "One"});
        for (int turn = 0; turn < 3; ++turn) {
            medium.files.ResetCalls();
            EXPECT_FALSE(medium.memory.NamesOf(one).index->Status());
        }
        EXPECT_EQ(medium.files.Calls(), 0U);
        medium.memory.BeginOperation();
        medium.files.HealAll();
        EXPECT_TRUE(medium.memory.NamesOf(one).index->Contains("B.mxf"));
        EXPECT_FALSE(medium.memory.NamesOf(one).areKept);
    }
}

} // namespace
} // namespace nqp2::platform
