// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/SystemFolder.h"
#include "tests/clips/card_test.h"

namespace nqp2::parser {
namespace {

using Peer = NQP2ParserPeer;
using clips::ExpectNoFormat;

class LifeCycleTest : public testing::Test {
protected:
    ~LifeCycleTest() override { SetSystemFolderLookup(nullptr); }
    static void OfferLibrariesOf(const std::string& folder) {
        SetSystemFolderLookup([root = InterfaceRoot(folder)] { return root; });
    }
    test::CardBuilder m_card;
};

TEST_F(LifeCycleTest, ReadsBetweenInitAndReleaseHoweverOftenTheyAreCalled) {
    m_card.AddClip("0001AA", {{"EssenceList/Video/Codec", "DV50_422"}});
    CNQP2Parser parser;
    _tag_P2Clip clip;
    clip.XmlPath = clip.ClipName = L"mine";
    CArray<_tag_P2Clip> clips;
    const CString path = m_card.Contents() + L"CLIP\\0001AA.XML";
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(parser.LoadClipInfo(m_card.Root(), L"0001AA", clip), 1);
        EXPECT_EQ(Peer::LoadClipFromXml(parser, path, clip), 0);
        EXPECT_EQ(clip.XmlPath + clip.ClipName, L"minemine");
        EXPECT_EQ(parser.LoadClipEx(m_card.Root(), clips, 1), 0) << "a scan finds nothing";
        EXPECT_EQ(parser.LoadClipEx(test::CardBuilder(false).Root(), clips, 1), 1);
        EXPECT_TRUE(clips.IsEmpty());
        ExpectNoFormat(parser, m_card.Root(), 1);
        EXPECT_EQ(parser.Release(), 0) << "before Init";
        EXPECT_EQ(parser.Init() + parser.Init(), 0);
        _tag_P2Clip read;
        EXPECT_EQ(parser.LoadClipInfo(m_card.Root(), L"0001AA", read), 0);
        EXPECT_EQ(parser.Release() + parser.Release(), 0);
    }
}

TEST_F(LifeCycleTest, TheCardManagerLibraryIsKeptOnlyWithItsInitEntry) {
    std::string endless = NQP2_CARD_MANAGER_FOLDER;
    while (endless.size() < 255) { // longer than the buffer for the system folder
        endless += "/.";
    }
    const std::pair<std::string, bool> cases[] = {{NQP2_CARD_MANAGER_FOLDER, true},
                                                  {NQP2_CARD_MANAGER_WITHOUT_INIT_FOLDER, false},
                                                  {"/nonexistent", false},
                                                  {endless, false}};
    for (const auto& [folder, kept] : cases) {
        OfferLibrariesOf(folder);
        CNQP2Parser parser;
        EXPECT_EQ(Peer::HasCardManager(parser), kept) << folder;
        EXPECT_EQ(Peer::HasEntryPoints(parser), kept) << folder;
        parser.Init();
        parser.Release();
        EXPECT_EQ(Peer::HasCardManager(parser), kept) << "Release leaves it loaded";
    }
}

TEST_F(LifeCycleTest, AnAssignedParserSharesTheWorkingObjects) {
    m_card.AddClip("0001AA");
    CNQP2Parser second;
    OfferLibrariesOf(NQP2_CARD_MANAGER_FOLDER);
    CNQP2Parser first;
    first.Init();
    second = first;
    EXPECT_TRUE(Peer::HasEntryPoints(second)) << "a library that one loaded is freed once by two";
    _tag_P2Clip clip;
    EXPECT_EQ(second.LoadClipInfo(m_card.Root(), L"0001AA", clip), 0);
    EXPECT_EQ(clip.ClipName, L"0001AA");
    first.Release(); // for both: the second one must not release the XML objects that it shares
    EXPECT_TRUE(Peer::HasEntryPoints(second));
}

} // namespace
} // namespace nqp2::parser
