// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <semaphore>
#include <system_error>

namespace nqp2::worker {
namespace {

using platform::IoError;
using test::Operation;

/// A recording so long that most of it is read back before it ends.
class GrowingRecordingTest : public testing::Test {
protected:
    void SetUp() override {
        m_parameters.cardRoot = m_card.Root();
        m_parameters.clipName = L"0007AB";
        m_units.assign(250, EncodePictures(kDv25Pal, 1).at(0));
    }
    std::string Made() { return Record(m_parameters, m_units); }
    std::map<std::string, std::string> OnCard() { return FilesBelow(m_card.Folder().Path()); }
    /// Writes another byte there wherever the video has got so far.
    void Spoil(std::uint64_t offset, char byte) {
        for (const auto& entry :
             std::filesystem::directory_iterator(m_card.Folder().Path("CONTENTS/VIDEO"))) {
            std::error_code gone; // the room kept for the end goes meanwhile
            if (entry.file_size(gone) > offset && !gone) {
                std::fstream file(entry.path(), std::ios::in | std::ios::out | std::ios::binary);
                file.seekp(static_cast<std::streamoff>(offset));
                file.put(byte);
            }
        }
    }

    test::CardBuilder m_card;
    test::FaultyFileSystem m_files;
    RecordingParameters m_parameters;
    std::vector<std::string> m_units;
};

TEST_F(GrowingRecordingTest, AByteThatTheMediumChangesIsFoundWhereverItLies) {
    const platform::ScopedFileSystem use(m_files);
    ASSERT_EQ(Made(), "");
    const std::string whole = OnCard().at("CONTENTS/VIDEO/0007AB.MXF");
    const std::size_t essence = whole.size() - m_units.size() * m_units[0].size();
    std::vector<std::uint64_t> offsets = {0, essence / 2, whole.size() - 1};
    for (std::uint64_t at = essence + 1; at < whole.size(); at += std::size_t{5} << 20U) {
        offsets.push_back(at);
    }
    for (const std::uint64_t offset : offsets) {
        std::filesystem::remove_all(m_card.Folder().Path("CONTENTS"));
        m_card.Folder().MakeFolder("CONTENTS/CLIP");
        m_files.SetHook([&](Operation operation, const std::string& path) {
            if (operation == Operation::Flush && path.find("VIDEO") != path.npos) {
                Spoil(offset, static_cast<char>(whole[offset] ^ 1));
            }
        });
        EXPECT_THAT(Made(), testing::HasSubstr("is not what was written")) << offset;
        EXPECT_TRUE(OnCard().empty()) << offset;
    }
}

/// One that comes while the recording grows and heals before its end is a fault all the same.
TEST_F(GrowingRecordingTest, AFaultInTheMiddleIsRememberedToTheEnd) {
    constexpr std::chrono::seconds kPatience(60);
    const platform::ScopedFileSystem use(m_files);
    for (const Operation operation : {Operation::Flush, Operation::ReadAt}) {
        std::counting_semaphore<> asked(0);
        m_files.SetHook([&](Operation each, const std::string& path) {
            if (each == operation && path.find("VIDEO") != path.npos) {
                asked.release();
            }
        });
        m_files.HealAll();
        m_files.Fail({IoError::Device, operation, "VIDEO", 0, 1});
        const auto beforeTheEnd = [&] { EXPECT_TRUE(asked.try_acquire_for(kPatience)); };
        EXPECT_THAT(Record(m_parameters, m_units, beforeTheEnd),
                    testing::HasSubstr("made to fail"));
        EXPECT_TRUE(OnCard().empty());
    }
}

} // namespace
} // namespace nqp2::worker
