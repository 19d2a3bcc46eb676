// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/parser/card_test.h"

namespace nqp2::parser {
namespace {

class CardFormatTest : public CardTest {
protected:
    void AddFormat(const std::string& codec, const std::string& rate, const std::string& cls) {
        m_card.AddClip("0001AA", {{"EditUnit", "1/25"},
                                  {"EssenceList/Video/Codec", codec},
                                  {"EssenceList/Video/Codec@Class", cls},
                                  {"EssenceList/Video/FrameRate", rate}});
    }
    DiskFormat Format() {
        DiskFormat format;
        EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), format), 0);
        return format;
    }
};

TEST_F(CardFormatTest, TheCodecNameAloneDecidesTheCodeType) {
    struct Case {
        const char* codec;
        int type;
    };
    constexpr Case kCases[] = {
        {"DV25_411", 0},
        {"DV25_420", 0},
        {"DV50_422", 1},
        {"DV100_1080/50i", 2},
        {"DV100_720/50p", 15},
        {"DV100_1080/59.94i", 30},
        {"DV100_720/59.94p", 33},
        {"AVC-I_1080/50i", 5},
        {"AVC-I_1080/25p", 17},
        {"AVC-I_720/50p", 19},
        {"AVC-I_1080/59.94i", 35},
        {"AVC-I_1080/29.97p", 36},
        {"AVC-I_720/59.94p", 38},
        {"AVCHD_1920_1080_50i", 200},
        {"AVCHD_1440_1080_50i", 201},
        {"AVCHD_1920_1080_25p", 202},
        {"AVCHD_1440_1080_25p", 203},
        {"AVCHD_1280_720_50p", 204},
        {"AVCHD_1280_720_25p", 205},
        {"AVC-LongG422", 0},
        {"", 0},
    };
    for (const Case& each : kCases) {
        // Rates and classes that would change the exact decision.
        for (const auto& [rate, cls] : {std::pair("59.94p", "200"), std::pair("25p", "50")}) {
            AddFormat(each.codec, rate, cls);
            eCodeType type = CT_AVCI200_720_50P;
            eP2_VIDEO_STANDARD standard = VS_2398P;
            EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), type, standard), 0);
            EXPECT_EQ(type, each.type) << each.codec;
            EXPECT_EQ(standard, rate[0] == '5' ? VS_5994P : VS_50I) << each.codec;
            EXPECT_EQ(Format().codeType, type) << each.codec;
            EXPECT_EQ(Format().standard, standard) << each.codec;
        }
    }
}

TEST_F(CardFormatTest, Class50IsToldForOneCodecOnly) {
    struct Case {
        const char* codec;
        const char* cls;
        int class50;
    };
    constexpr Case kCases[] = {
        {"AVC-I_1080/50i", "50", 1}, {"AVC-I_1080/50i", "100", 0}, {"avc-i_1080/50i", "50", 0},
        {"AVC-I_720/50p", "50", 0},  {"AVC-I_1080/25p", "50", 0},
    };
    for (const Case& each : kCases) {
        AddFormat(each.codec, "50i", each.cls);
        const DiskFormat format = Format();
        EXPECT_TRUE(format.found);
        EXPECT_EQ(format.class50, each.class50) << each.codec << " class " << each.cls;
        EXPECT_EQ(format.codec, CString(platform::TextFromUtf8(each.codec)));
        EXPECT_EQ(format.frameRate, L"50i");
        EXPECT_EQ(format.editUnit, L"1/25");
    }
}

TEST_F(CardFormatTest, TheFirstFileThatLoadsDecides) {
    AddFormat("DV50_422", "50i", "");
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0000AA.XML");
    for (const char* const broken : {"0000AB", "0001AC", "0002AA", "._0001AA"}) {
        m_card.AddFile(std::string("CLIP/") + broken + ".XML", "<P2Main>");
    }
    EXPECT_EQ(Format().codec, L"DV50_422");
    m_card.AddClip("0003AA", {{"EssenceList/Video/Codec", "DV25_420"}});
    EXPECT_EQ(platform::Utf8FromText(Format().codec.View()),
              ScannedNames().front() == "0001AA" ? "DV50_422" : "DV25_420");
}

TEST_F(CardFormatTest, WithoutALoadableClipTheOutputsStay) {
    const auto expectUntouched = [&](const CString& root, __int64 result) {
        eCodeType type = CT_AVCI200_720_50P;
        eP2_VIDEO_STANDARD standard = VS_2398P;
        DiskFormat format;
        format.codec = L"mine";
        EXPECT_EQ(m_parser.GetDiskFormat(root, type, standard), result);
        EXPECT_EQ(m_parser.GetDiskFormat(root, format), result);
        EXPECT_EQ(type, CT_AVCI200_720_50P);
        EXPECT_EQ(standard, VS_2398P);
        EXPECT_EQ(format.codec, L"mine");
        EXPECT_FALSE(format.found);
    };
    expectUntouched(m_card.Root(), 0);
    m_card.AddFile("CLIP/0001AA.XML", "no clip");
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0001AB.XML");
    expectUntouched(m_card.Root(), 0);
    expectUntouched(test::CardBuilder(false).Root(), 1);
    expectUntouched(L"", 1);
}

TEST_F(CardFormatTest, AFileWithoutTheElementsStillDecides) {
    m_card.AddFile("CLIP/0001AA.XML", "<Other/>");
    const DiskFormat format = Format();
    EXPECT_TRUE(format.found);
    EXPECT_TRUE(format.codec.IsEmpty());
    EXPECT_EQ(format.codeType, CT_DV25_50I);
    EXPECT_EQ(format.standard, VS_50I);
}

} // namespace
} // namespace nqp2::parser
