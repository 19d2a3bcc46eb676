// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/clips/card_test.h"

namespace nqp2::clips {
namespace {

using CardFormatTest = CardTest;

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
        {"AVC-I_1080/50i", "50", "59.94p", 5, VS_5994P, 1},
        {"AVC-I_1080/50i", "200", "25p", 5, VS_50I, 0},
        {"avc-i_1080/50i", "50", "50i", 5, VS_50I, 0},
        {"", "", "", 0, VS_50I, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.codec);
        m_card.AddClip("0001AA", {{"EditUnit", "1/25"},
                                  {"EssenceList/Video/Codec", row.codec},
                                  {"EssenceList/Video/Codec@Class", row.codecClass},
                                  {"EssenceList/Video/FrameRate", row.rate}});
        eCodeType type = CT_AVCI200_720_50P;
        eP2_VIDEO_STANDARD standard = VS_2398P;
        EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), type, standard), 0);
        EXPECT_TRUE(type == row.codeType && standard == row.standard) << type << standard;
        DiskFormat format;
        EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), format), 0);
        EXPECT_TRUE(format.found && format.codeType == type && format.standard == standard);
        EXPECT_EQ(format.class50, row.class50);
        EXPECT_EQ(format.codec + L"," + format.frameRate + L"," + format.editUnit,
                  CString(platform::TextFromUtf8(row.codec)) + L"," +
                      CString(platform::TextFromUtf8(row.rate)) + L",1/25");
    }
}

TEST_F(CardFormatTest, TheFirstFileThatLoadsDecidesAndWithoutOneTheOutputsStay) {
    ExpectNoFormat(m_parser, test::CardBuilder(false).Root(), 1);
    ExpectNoFormat(m_parser, L"", 1);
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0000AA.XML");
    for (const char* const broken : {"0000AB", "0001AC", "._0001AA"}) {
        m_card.AddFile(std::string("CLIP/") + broken + ".XML", "<P2Main>");
    }
    ExpectNoFormat(m_parser, m_card.Root(), 0);
    m_card.AddFile("CLIP/0001AA.XML", "<Other/>");
    m_card.AddClip("0003AA", {{"EssenceList/Video/Codec", "DV50_422"}});
    DiskFormat format;
    EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), format), 0);
    EXPECT_EQ(format.codec, ScannedNames().front() == "0001AA" ? L"" : L"DV50_422");
    EXPECT_TRUE(format.found) << "a file without the elements decides as well";
}

TEST_F(CardFormatTest, FreeNamesFollowEachOtherWithoutCarryAndEndAfter68) {
    const auto expectFree = [&](const std::string& name, __int64 tried) {
        CString found;
        __int64 count = 0;
        EXPECT_EQ(m_parser.CheckName(found, m_card.Root(), count), 1);
        EXPECT_EQ(std::pair(platform::Utf8FromText(found.View()), count), std::pair(name, tried));
    };
    std::string name = "0001AA";
    m_card.AddFile("AUDIO/0001AA00.MXF"); // video files alone take a name
    expectFree(name, 1);
    m_card.AddFile("VIDEO/0001aa.mxf");
    __int64 tried = 1;
    for (const auto& [place, last] : {std::pair(5U, 'Z'), {4U, 'Z'}, {3U, '9'}, {2U, '9'}}) {
        while (name[place] != last) {
            ++name[place];
            expectFree(name, ++tried);
            m_card.AddFile("VIDEO/" + name + ".MXF");
        }
    }
    EXPECT_EQ(name, "0099ZZ");
    EXPECT_EQ(tried, 68);
    CString untouched = L"mine";
    EXPECT_EQ(m_parser.CheckName(untouched, m_card.Root()), 0);
    EXPECT_EQ(untouched, L"mine");
}

} // namespace
} // namespace nqp2::clips
