// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/support/print_text.h"
#include "tests/worker/media_bytes.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/base/media_file.h"
#include "worker/card_requests.h"

#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::worker {
namespace {

using testing::HasSubstr;

std::string Chunk(const std::string& name, const std::string& data) {
    return name + LittleEndian(data.size()) + data + std::string(data.size() % 2, '\0');
}

/// A camera file of 16 x 16 pixels without pictures, and these tags.
std::string Avi(const std::string& tags) {
    const std::string none(8, '\0');
    const std::string main = LittleEndian(40000) + none + LittleEndian(0x10) + none +
                             LittleEndian(1) + LittleEndian(0) + LittleEndian(16) +
                             LittleEndian(16) + none + none;
    const std::string stream = "vidsMJPG" + none + none.substr(4) + LittleEndian(1) +
                               LittleEndian(25) + none + none + none + LittleEndian(0) +
                               LittleEndian(16, 2) + LittleEndian(16, 2);
    const std::string picture = LittleEndian(40) + LittleEndian(16) + LittleEndian(16) +
                                LittleEndian(1, 2) + LittleEndian(24, 2) + "MJPG" + none + none +
                                none.substr(4);
    return Chunk("RIFF", "AVI " +
                             Chunk("LIST", "hdrl" + Chunk("avih", main) +
                                               Chunk("LIST", "strl" + Chunk("strh", stream) +
                                                                 Chunk("strf", picture))) +
                             Chunk("LIST", "INFO" + tags) + Chunk("LIST", "movi"));
}

/// Names of four letters, each another one.
std::string ManyTags(unsigned count) {
    std::string tags;
    for (unsigned i = 0; i < count; ++i) {
        std::string name = "AAAA";
        for (unsigned at = 0, left = i; at < 4; ++at, left /= 32) {
            name[at] = static_cast<char>('A' + left % 32);
        }
        tags += Chunk(name, "x");
    }
    return tags;
}

class MediaDescriptionTest : public testing::Test {
protected:
    bridge::MediaMessage Described(const std::string& bytes) {
        bridge::MediaMessage message;
        const CString path = InterfaceRoot(m_folder.Write("a.avi", bytes));
        m_error = ErrorOf([&] { message = DescribeMediaFile(path, kGoesOn); });
        return message;
    }
    CString TextAt(const bridge::MediaMessage& message, const CString& path) const {
        for (const MetadataText& each : message.texts) {
            if (each.path == path) {
                return each.text;
            }
        }
        return L"none";
    }

    test::TempFolder m_folder;
    std::string m_error;
};

TEST_F(MediaDescriptionTest, TellsTracksAndTagsOfAnyBytes) {
    const struct {
        std::string tags;
        std::int64_t texts; ///< 0 for as many as there are
        bool isCut;
        CString title;
    } kRows[] = {
        {Chunk("INAM", "K\xC3\xB6ln"), 0, false, L"K\u00F6ln"},
        {Chunk("INAM", "a\xFF z"), 0, false, L"a\uFFFD z"},
        {Chunk("INAM", std::string(65535, 'a') + "\xC3\xB6"), 0, true, CString(L'a', 65535)},
        {Chunk("INAM", std::string(10'000'000, 'a')), 0, true, CString(L'a', 65536)},
        {ManyTags(5000), 4096, true, L"none"},
    };
    for (const auto& row : kRows) {
        const bridge::MediaMessage told = Described(Avi(row.tags));
        ASSERT_EQ(m_error, "");
        EXPECT_EQ(told.isCut != 0, row.isCut);
        EXPECT_TRUE(TextAt(told, L"Tags/title") == row.title) << row.tags.substr(0, 20);
        EXPECT_TRUE(row.texts == 0 || told.texts.GetSize() == row.texts);
        ASSERT_EQ(told.tracks.GetSize(), 1);
        EXPECT_EQ(told.tracks[0].codec, L"Motion JPEG");
        EXPECT_EQ(told.tracks[0].format, L"16x16 25p");
    }
}

TEST_F(MediaDescriptionTest, CutFilesAreDescribedOrRefusedWithAReason) {
    const std::string whole = Avi(Chunk("INAM", "title"));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const bridge::MediaMessage told = Described(whole.substr(0, size));
        EXPECT_TRUE(m_error.empty() ? !told.texts.IsEmpty() : told.texts.IsEmpty()) << size;
        EXPECT_TRUE(size > 12 || !m_error.empty()) << size;
    }
    static_cast<void>(Described(""));
    EXPECT_THAT(m_error, HasSubstr("a.avi"));
}

/// libavformat looks through all tags for each tag.
TEST_F(MediaDescriptionTest, AMillionTagsHoldNobodyUp) {
    const std::string path = m_folder.Write("a.avi", Avi(ManyTags(1'000'000)));
    const std::clock_t from = std::clock();
    const std::string error = ErrorOf([&] {
        static_cast<void>(
            ReadMediaDescription(path, kGoesOn, {.processorTime = std::chrono::seconds(1)}));
    });
    EXPECT_THAT(error, HasSubstr("within"));
    EXPECT_LT(std::clock() - from, 10 * CLOCKS_PER_SEC);
}

} // namespace
} // namespace nqp2::worker
