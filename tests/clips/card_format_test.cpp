// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/clips/card_test.h"
#include "tests/support/faulty_file_system.h"

namespace nqp2::clips {
namespace {

class CardFormatTest : public CardTest {
protected:
    DiskFormat Format() {
        DiskFormat format;
        EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), format), 0);
        return format;
    }
};

TEST_F(CardFormatTest, TheCodecNameAloneDecidesTheCodeTypeAndClass50IsToldForOne) {
    const struct {
        const char* codec;
        const char* codecClass;
        const char* rate;
        int codeType;
        eP2_VIDEO_STANDARD standard;
        int class50;
    } rows[] = {
        {"DV50_422", "", "59.94i", 1, VS_5994I, 0},
        {"DV100_720/50p", "", "50p", 15, VS_50P, 0},
        {"AVC-I_1080/50i", "50", "59.94p", 5, VS_5994P, 1},
        {"AVC-I_1080/50i", "200", "25p", 5, VS_50I, 0},
        {"avc-i_1080/50i", "50", "50i", 5, VS_50I, 0},
        {"AVC-I_720/50p", "50", "50p", 19, VS_50P, 0},
        {"", "", "", 0, VS_50I, 0},
    };
    for (const auto& row : rows) {
        m_card.AddClip("0001AA", {{"EditUnit", "1/25"},
                                  {"EssenceList/Video/Codec", row.codec},
                                  {"EssenceList/Video/Codec@Class", row.codecClass},
                                  {"EssenceList/Video/FrameRate", row.rate}});
        eCodeType type = CT_AVCI200_720_50P;
        eP2_VIDEO_STANDARD standard = VS_2398P;
        EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), type, standard), 0);
        EXPECT_EQ(type, row.codeType) << row.codec;
        EXPECT_EQ(standard, row.standard) << row.codec;
        const DiskFormat format = Format();
        EXPECT_EQ(format.codeType, type) << row.codec;
        EXPECT_EQ(format.standard, standard) << row.codec;
        EXPECT_EQ(format.class50, row.class50) << row.codec;
        EXPECT_EQ(format.codec, CString(platform::TextFromUtf8(row.codec)));
        EXPECT_EQ(format.frameRate, CString(platform::TextFromUtf8(row.rate)));
        EXPECT_EQ(format.editUnit, L"1/25");
    }
}

TEST_F(CardFormatTest, TheFirstFileThatLoadsDecidesAndWithoutOneTheOutputsStay) {
    ExpectNoFormat(m_parser, test::CardBuilder(false).Root(), 1);
    ExpectNoFormat(m_parser, L"", 1);
    ExpectNoFormat(m_parser, m_card.Root(), 0);
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0000AA.XML");
    for (const char* const broken : {"0000AB", "0001AC", "._0001AA"}) {
        m_card.AddFile(std::string("CLIP/") + broken + ".XML", "<P2Main>");
    }
    ExpectNoFormat(m_parser, m_card.Root(), 0);
    m_card.AddFile("CLIP/0001AA.XML", "<Other/>");
    EXPECT_TRUE(Format().found) << "a file without the elements still decides";
    m_card.AddClip("0003AA", {{"EssenceList/Video/Codec", "DV50_422"}});
    EXPECT_EQ(Format().codec, ScannedNames().front() == "0001AA" ? L"" : L"DV50_422");
}

class FreeNameTest : public CardTest {
protected:
    void ExpectFree(const std::string& name, __int64 tried) {
        CString found;
        __int64 count = 0;
        EXPECT_EQ(m_parser.CheckName(found, m_card.Root(), count), 1);
        EXPECT_EQ(platform::Utf8FromText(found.View()), name);
        EXPECT_EQ(count, tried);
    }
    void ExpectNone() {
        CString untouched = L"mine";
        EXPECT_EQ(m_parser.CheckName(untouched, m_card.Root()), 0);
        EXPECT_EQ(untouched, L"mine");
    }
};

TEST_F(FreeNameTest, CandidatesFollowEachOtherWithoutCarryAndEndAfter68) {
    std::string name = "0001AA";
    m_card.AddFile("AUDIO/0001AA00.MXF"); // video files alone take a name
    ExpectFree(name, 1);
    m_card.AddFile("VIDEO/0001aa.mxf");
    __int64 tried = 1;
    for (const auto& [place, last] : {std::pair(5U, 'Z'), {4U, 'Z'}, {3U, '9'}, {2U, '9'}}) {
        while (name[place] != last) {
            ++name[place];
            ExpectFree(name, ++tried);
            m_card.AddFile("VIDEO/" + name + ".MXF");
        }
    }
    EXPECT_EQ(name, "0099ZZ");
    EXPECT_EQ(tried, 68);
    ExpectNone();
}

TEST_F(FreeNameTest, AMissingCardTakesNoNameAndAFolderThatCannotBeReadGivesNone) {
    CString name;
    EXPECT_EQ(m_parser.CheckName(name, L"/nonexistent"), 1);
    EXPECT_EQ(name, L"0001AA");
    test::FaultyFileSystem files;
    files.Fail({.error = platform::IoError::Denied, .operation = test::Operation::List});
    const platform::ScopedFileSystem inUse(files);
    ExpectNone();
}

} // namespace
} // namespace nqp2::clips
