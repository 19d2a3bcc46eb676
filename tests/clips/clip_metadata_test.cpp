// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/element_paths.h"
#include "media/metadata_paths.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "tests/clips/card_test.h"

namespace nqp2::clips {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

std::string Utf8(const CString& text) {
    return platform::Utf8FromText(text.View());
}

class ClipMetadataTest : public CardTest {
protected:
    /// Of a document; once more through a tree, which an instruction asks for: both are the same.
    Texts Read(const std::string& document, MetadataStatus expected = MetadataStatus::Read) {
        Texts before;
        for (const char* const behind : {"", "<?tree?>"}) {
            _tag_P2Clip clip;
            m_card.AddFile("CLIP/0001AA.XML", document + behind);
            clip.XmlPath = m_card.Contents() + L"CLIP\\0001AA.XML";
            EXPECT_EQ(m_reader.Read(clip, m_metadata, m_problem), expected) << document;
            EXPECT_EQ(m_problem.IsEmpty(), expected == MetadataStatus::Read);
            const Texts texts = Others();
            EXPECT_TRUE(*behind == 0 || texts == before) << document.substr(0, 200);
            before = texts;
        }
        return before;
    }
    Texts ReadContent(const test::ClipValues& values) { return Read(test::ClipXml(values)); }

    Texts Others() const {
        Texts texts;
        for (const MetadataText& each : m_metadata.others) {
            texts.push_back(Utf8(each.path) + "=" + Utf8(each.text));
        }
        return texts;
    }

    ClipMetadataReader m_reader;
    ClipMetadata m_metadata;
    CString m_problem;
};

TEST_F(ClipMetadataTest, EachTextIsInItsMemberOrInTheListOfOthers) {
    for (const media::MetadataPath& each : media::MetadataPaths()) {
        const std::string below(each.below);
        EXPECT_THAT(ReadContent({{below, "dog & ä"}}), IsEmpty()) << below;
        EXPECT_EQ(Utf8(each.member(m_metadata)), "dog & ä") << below;
        ReadContent({{below, ""}});
        EXPECT_EQ(Utf8(each.member(m_metadata)), "") << below;
        const std::size_t slash = below.rfind('/');
        const std::string second = below.substr(0, slash + 1) + "+" + below.substr(slash + 1);
        EXPECT_THAT(ReadContent({{below, "1"}, {below + "@a", "2"}, {second, "3"}}),
                    ElementsAre("P2Main/ClipContent/" + below + "/@a=2",
                                "P2Main/ClipContent/" + below + "[2]=3"));
    }
}

TEST_F(ClipMetadataTest, NothingInADocumentIsLost) {
    const struct {
        const char* document;
        Texts others;
    } kRows[] = {
        {"<a/>", {"a="}},
        {"<a b='1'/>", {"a/@b=1"}},
        {"<a b=''> </a>", {"a/@b=", "a= "}},
        {"<a>x<b>y</b>z<b/>\n</a>", {"a=x", "a/b=y", "a=z", "a/b[2]="}},
        {"<a><b>1</b><c>2</c><b>3</b><c>4</c></a>", {"a/b=1", "a/c=2", "a/b[2]=3", "a/c[2]=4"}},
        {"<a><b><c>1</c></b><b><c>2</c><c>3</c></b></a>",
         {"a/b/c=1", "a/b[2]/c=2", "a/b[2]/c[2]=3"}},
        {"<a>1<!--no-->2<![CDATA[<3>]]>&amp;4</a>", {"a=12<3>&4"}},
        {"<p:a xmlns:p='u' xmlns='v' p:c='1' c='2'><p:b>3</p:b><b>4</b></p:a>",
         {"a/@c=1", "a/@c[2]=2", "a/b=3", "a/b[2]=4"}},
        {"<ClipMain><ClipContent><ClipMetadata><Rating>0</Rating><Device><ModelName>M</ModelName>"
         "</Device></ClipMetadata></ClipContent><UserArea><a>1</a></UserArea></ClipMain>",
         {"ClipMain/ClipContent/ClipMetadata/Rating=0", "ClipMain/UserArea/a=1"}},
        {"<P2Main><ClipContent><ClipMetadata><Access><Creator>A<b/>C</Creator></Access>"
         "</ClipMetadata></ClipContent></P2Main>",
         {"P2Main/ClipContent/ClipMetadata/Access/Creator=A",
          "P2Main/ClipContent/ClipMetadata/Access/Creator/b=",
          "P2Main/ClipContent/ClipMetadata/Access/Creator=C"}},
    };
    for (const auto& row : kRows) {
        EXPECT_THAT(Read(row.document), ElementsAreArray(row.others)) << row.document;
        EXPECT_FALSE(m_metadata.isCut);
    }
}

TEST_F(ClipMetadataTest, WhatWasReadBeforeChangesNothing) {
    const std::string person = "ClipMetadata/Access/Creator";
    std::vector<ClipMetadata> kept;
    std::vector<Texts> told;
    for (const char* const text : {"Ann", "Bob", "Bob", "Bob", "Ä", "", " ", "Bob", "Ann & Bob"}) {
        for (const std::string& second : {std::string(), std::string(200, 'x'), std::string("y")}) {
            const test::ClipValues values = {
                {person, text}, {"A/B", text}, {"A/+B", second}, {"A/D@c", second}, {"A/D/E", "5"}};
            const Texts others = ReadContent(values);
            EXPECT_THAT(others, ElementsAre("P2Main/ClipContent/A/B=" + std::string(text),
                                            "P2Main/ClipContent/A/B[2]=" + second,
                                            "P2Main/ClipContent/A/D/@c=" + second,
                                            "P2Main/ClipContent/A/D/E=5"));
            EXPECT_EQ(Utf8(m_metadata.access.creator), text);
            kept.push_back(m_metadata);
            told.push_back(others);
        }
    }
    for (std::size_t i = 0; i < kept.size(); ++i) {
        m_metadata = kept[i];
        EXPECT_EQ(Others(), told[i]) << "a copy keeps its texts";
    }
}

TEST_F(ClipMetadataTest, MemosTellTheirTextsAndTheFilesThatTheCardHas) {
    const std::string memo = "ClipMetadata/MemoList/Memo/";
    const std::string next = "ClipMetadata/MemoList/+Memo/";
    const std::string voice = "VoiceFormat";
    m_card.AddFile("voice/0001aa01.wav", "x");
    m_card.AddFile("ICON/still.BMP", "x");
    const Texts others = ReadContent({{memo + "Offset", "25"},
                                      {memo + "Person", "Ann"},
                                      {memo + "Text", "one"},
                                      {memo + voice, "WAV"},
                                      {next + "Offset", "025 frames"},
                                      {memo + voice, "WAV"},
                                      {next + "Text", "three"},
                                      {memo + "Picture", "still.BMP"},
                                      {memo + "Else", "../still.BMP"}});
    EXPECT_EQ(others.size(), 5U);
    EXPECT_EQ(others[1],
              "P2Main/ClipContent/" + memo.substr(0, memo.size() - 1) + "[2]/Offset=025 frames");
    ASSERT_EQ(m_metadata.memos.GetSize(), 3);
    EXPECT_EQ(Utf8(m_metadata.memos[0].person) + Utf8(m_metadata.memos[2].text), "Annthree");
    EXPECT_EQ(m_metadata.memos[1].offset, 25);
    const auto pathsOf = [&](int i) {
        return Below(m_metadata.memos[i].voicePath) + "|" + Below(m_metadata.memos[i].picturePath);
    };
    EXPECT_THAT(Texts({pathsOf(0), pathsOf(1), pathsOf(2)}),
                ElementsAre("|", "VOICE\\0001aa01.wav|", "|ICON\\still.BMP"));
}

TEST_F(ClipMetadataTest, WhatIsTooMuchIsCutAndWhatCannotBeReadIsTold) {
    std::string deep = "x";
    for (int i = 0; i < 190; ++i) {
        const std::string name = "n" + std::string(static_cast<std::size_t>(i) * 5, 'a');
        deep = "<" + name + ">" + deep + "</" + name + ">";
    }
    const std::string longText(3'000'000, 'x');
    EXPECT_THAT(Read("<a>" + longText + "</a>"), ElementsAre("a=" + longText));
    EXPECT_EQ(Read(deep).size(), 1U);
    std::string few;
    std::string many = "<a>";
    for (int i = 0; i < 60'000; ++i) {
        few = i == 1000 ? many + "</a>" : few;
        many += "<b c='" + std::to_string(i) + "'/>";
    }
    Read(many + "</a>");
    EXPECT_TRUE(m_metadata.isCut);
    EXPECT_EQ(Others()[20'000], "a/b[20001]/@c=20000");
    const std::size_t kept = Others().size();
    Read(few);
    EXPECT_EQ(Read(many + "</a>").size(), kept);
    EXPECT_THAT(Read("<a>behind it</a>"), ElementsAre("a=behind it"));
    for (const char* const bad : {"", "<a>", "<a b='1'>x", "<!DOCTYPE a><a/>", "no XML"}) {
        EXPECT_THAT(Read(bad, MetadataStatus::Unreadable), IsEmpty());
    }
    _tag_P2Clip clip;
    EXPECT_EQ(m_reader.Read(clip, m_metadata, m_problem), MetadataStatus::NoFile);
    clip.XmlPath = m_card.Contents() + L"CLIP\\0009ZZ.XML";
    EXPECT_EQ(m_reader.Read(clip, m_metadata, m_problem), MetadataStatus::Unreadable);
    EXPECT_FALSE(m_problem.IsEmpty());
}

} // namespace
} // namespace nqp2::clips
