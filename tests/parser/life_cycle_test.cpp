// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/SystemFolder.h"
#include "tests/clips/card_test.h"

namespace nqp2::parser {
namespace {

using Peer = NQP2ParserPeer;

TEST(LifeCycleTest, ReadsBetweenInitAndReleaseHoweverOftenTheyAreCalled) {
    const test::CardBuilder card;
    card.AddClip("0001AA", {{"EssenceList/Video/Codec", "DV50_422"}});
    CNQP2Parser parser;
    _tag_P2Clip clip;
    clip.XmlPath = clip.ClipName = L"mine";
    CArray<_tag_P2Clip> clips;
    const CString path = card.Contents() + L"CLIP\\0001AA.XML";
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(parser.LoadClipInfo(card.Root(), L"0001AA", clip), 1);
        EXPECT_EQ(Peer::LoadClipFromXml(parser, path, clip), 0);
        EXPECT_EQ(clip.XmlPath + clip.ClipName, L"minemine");
        EXPECT_EQ(parser.LoadClipEx(card.Root(), clips, 1), 0) << "a scan finds nothing";
        EXPECT_TRUE(clips.IsEmpty());
        EXPECT_EQ(parser.Release(), 0) << "before Init";
        EXPECT_EQ(parser.Init() + parser.Init(), 0);
        _tag_P2Clip read;
        EXPECT_EQ(parser.LoadClipInfo(card.Root(), L"0001AA", read), 0);
        EXPECT_EQ(parser.Release() + parser.Release(), 0);
    }
}

TEST(LifeCycleTest, TheCardManagerLibraryIsKeptOnlyWithItsInitEntry) {
    const std::pair<std::string, bool> cases[] = {{NQP2_CARD_MANAGER_FOLDER, true},
                                                  {NQP2_CARD_MANAGER_WITHOUT_INIT_FOLDER, false},
                                                  {"/nonexistent", false}};
    for (const auto& [folder, kept] : cases) {
        SetSystemFolderLookup([root = InterfaceRoot(folder)] { return root; });
        CNQP2Parser parser;
        EXPECT_EQ(Peer::HasCardManager(parser), kept) << folder;
        parser.Init();
        parser.Release();
        EXPECT_EQ(Peer::HasCardManager(parser), kept) << "Release leaves it loaded";
    }
    SetSystemFolderLookup(nullptr);
}

} // namespace
} // namespace nqp2::parser
