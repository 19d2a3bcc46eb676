// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_system.h"
#include "tests/clips/card_test.h"
#include "tests/support/faulty_file_system.h"

#include <filesystem>
#include <new>
#include <sys/resource.h>

namespace nqp2::clips {
namespace {

using test::FaultyFileSystem;
using test::Operation;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class HostileCardTest : public CardTest {
protected:
    /// The one row that the scan's report has.
    SkippedFile OnlyRow() {
        EXPECT_EQ(m_report.skipped.GetSize(), 1);
        return m_report.skipped.IsEmpty() ? SkippedFile() : m_report.skipped[0];
    }
    void ExpectGoodClipOnly() { EXPECT_THAT(ScannedNames(), ElementsAre("0001AA")); }
};

TEST_F(HostileCardTest, BrokenFilesAreSkippedAndReportedWithTheirPlace) {
    using enum SkipReason;
    const std::string good = test::ClipXml({{"ClipName", "0001AB"}, {"Duration", "5"}});
    const std::tuple<const char*, std::string, SkipReason, int> cases[] = {
        {"empty", "", NotWellFormed, 1},
        {"cut off", good.substr(0, good.size() - 12), NotWellFormed, 2},
        {"zero byte", std::string("<P2Main>\0</P2Main>", 18), NotWellFormed, 1},
        {"two roots", good + "<P2Main/>", NotWellFormed, 3},
        {"DTD", "<!DOCTYPE P2Main [<!ENTITY a \"b\">]>\n<P2Main>&a;</P2Main>", DocumentType, 1},
    };
    m_card.AddClip("0001AA");
    for (const auto& [why, bytes, reason, line] : cases) {
        SCOPED_TRACE(why);
        m_card.AddFile("CLIP/0001AB.XML", bytes);
        ExpectGoodClipOnly();
        const SkippedFile row = OnlyRow();
        EXPECT_EQ(Below(row.path), "CLIP\\0001AB.XML");
        EXPECT_EQ(row.reason, reason) << row.text;
        EXPECT_FALSE(row.text.IsEmpty());
        EXPECT_EQ(row.line, line) << row.text;
        EXPECT_GT(row.column, 0);
    }
}

TEST_F(HostileCardTest, ADeviceIsNotEvenOpened) {
    m_card.AddClip("0001AA");
    std::filesystem::create_symlink("/dev/zero",
                                    m_card.Folder().Path() + "/CONTENTS/CLIP/0001AB.XML");
    FaultyFileSystem files;
    const platform::ScopedFileSystem inUse(files);
    ExpectGoodClipOnly();
    EXPECT_EQ(files.Calls(Operation::Read), 1U);
    EXPECT_EQ(OnlyRow().reason, SkipReason::Unreadable);
}

TEST_F(HostileCardTest, FoldersAndCompanionsAreNoClips) {
    m_card.AddClip("0001AA");
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0001AB.XML");
    m_card.AddFile("CLIP/._0001AA.XML", std::string("\x00\x05\x16\x07", 4));
    for (const char* const name : {".DS_Store", "Thumbs.db", "0001AA.XMP", "0001AA.XML.bak"}) {
        m_card.AddFile(std::string("CLIP/") + name, "x");
    }
    ExpectGoodClipOnly();
    EXPECT_THAT(Remarks(),
                UnorderedElementsAre(Remark("CLIP\\0001AB.XML", SkipReason::IsFolder),
                                     Remark("CLIP\\._0001AA.XML", SkipReason::Companion)));
}

TEST_F(HostileCardTest, ABackslashInAFileNameLeadsNowhereElse) {
    // Both ways in which a scan reads a file: small ones ahead, large ones piece by piece.
    constexpr std::size_t kReadPieceByPiece = 300'000;
    m_card.Folder().Write("elsewhere.XML", test::ClipXml({{"EssenceList/Video/Codec", "x"}}));
    const std::string trap = m_card.AddFile("CLIP/..\\..\\elsewhere.XML");
    for (const std::size_t size : {std::size_t{0}, kReadPieceByPiece}) {
        std::filesystem::resize_file(trap, size);
        EXPECT_THAT(ScannedNames(), IsEmpty());
        EXPECT_THAT(Remarks(), ElementsAre(Remark("CLIP\\", SkipReason::Unreadable)));
        DiskFormat format;
        EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), format), 0);
        EXPECT_FALSE(format.found) << "read: " << format.codec;
    }
}

TEST_F(HostileCardTest, WellFormedFilesWithoutClipContentAreListedWithARemark) {
    constexpr std::pair<const char*, bool> kRows[] = {
        {"<A><P2Main><ClipContent/></P2Main></A>", true},
        {"<P2Main><A><ClipContent/></A></P2Main>", false},
        {"<p:P2Main xmlns:p='urn:p'><p:ClipContent/></p:P2Main>", false},
        {"<ClipMain><ClipContent/></ClipMain>", false},
    };
    for (const auto& [xml, hasContent] : kRows) {
        m_card.AddFile("CLIP/0001AA.XML", xml);
        ExpectGoodClipOnly();
        EXPECT_EQ(m_report.skipped.IsEmpty(), hasContent) << xml;
        EXPECT_TRUE(hasContent || OnlyRow().reason == SkipReason::NoClipContent) << xml;
    }
}

TEST_F(HostileCardTest, AnExceptionOrFaultInReadingEndsNothing) {
    m_card.AddClip("0001AA");
    m_card.AddClip("0001AB");
    FaultyFileSystem faulty;
    const platform::ScopedFileSystem scope(faulty);
    const auto expectTheOtherIsRead = [&] {
        ExpectGoodClipOnly();
        EXPECT_THAT(Remarks(), ElementsAre(Remark("CLIP\\0001AB.XML", SkipReason::Unreadable)));
        _tag_P2Clip clip;
        EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), L"0001AB", clip), 1);
    };
    faulty.SetHook([](Operation, const std::string& path) {
        if (path.find("0001AB") != std::string::npos) {
            throw std::bad_alloc();
        }
    });
    expectTheOtherIsRead();
    faulty.SetHook({});
    faulty.Fail({.error = platform::IoError::Denied, .pathPart = "0001AB"});
    expectTheOtherIsRead();
    EXPECT_EQ(OnlyRow().text, L"made to fail");
    EXPECT_EQ(OnlyRow().line, 0);
}

TEST_F(HostileCardTest, AClipFolderThatCannotBeReadToItsEndGivesItsFirstEntries) {
    const std::string remark = Remark("CLIP\\", SkipReason::FolderUnreadable);
    for (const char* const name : {"0001AA", "0001AB", "0001AC", "0001AD"}) {
        m_card.AddClip(name);
    }
    FaultyFileSystem faulty;
    faulty.Fail({.operation = Operation::List, .pathPart = "/CLIP", .times = 1, .keptEntries = 3});
    {
        const platform::ScopedFileSystem scope(faulty);
        EXPECT_EQ(ScannedNames().size(), 3U);
        EXPECT_THAT(Remarks(), ElementsAre(remark));
    }
    std::filesystem::remove_all(m_card.Folder().Path() + "/CONTENTS/CLIP");
    m_card.AddFile("CLIP", "no folder");
    EXPECT_THAT(ScannedNames(), IsEmpty());
    EXPECT_THAT(Remarks(), ElementsAre(remark));
}

TEST_F(HostileCardTest, ACardRemovedInMidScanEndsItWithRemarks) {
    constexpr int kClips = 20;
    constexpr int kBefore = 6;
    for (int i = 0; i < kClips; ++i) {
        m_card.AddClip("c" + std::to_string(i));
    }
    FaultyFileSystem faulty;
    int reads = 0;
    faulty.SetHook([&](Operation operation, const std::string&) {
        if (operation == Operation::Read && ++reads == kBefore + 1) {
            std::filesystem::remove_all(m_card.Folder().Path());
        }
    });
    const platform::ScopedFileSystem scope(faulty);
    EXPECT_EQ(ScannedNames().size(), static_cast<std::size_t>(kBefore));
    EXPECT_EQ(m_report.skipped.GetSize(), kClips - kBefore);
    for (const SkippedFile& row : m_report.skipped) {
        EXPECT_EQ(row.reason, SkipReason::Unreadable) << row.text;
    }
    CArray<_tag_P2Clip> clips;
    EXPECT_EQ(m_parser.LoadClipEx(m_card.Root(), clips, 0), 1) << "no card any more";
}

TEST_F(HostileCardTest, NamesInsideAFileLeadNowhereElse) {
    const std::string endless(300, 'x'); // longer than any file name
    const char* const names[] = {endless.c_str(), "..\\..\\..\\x", "../../../x",
                                 "/etc/passwd",   "C:x",           ".."};
    FaultyFileSystem recorded;
    std::vector<std::string> asked;
    recorded.SetHook([&](Operation, const std::string& path) { asked.push_back(path); });
    const platform::ScopedFileSystem scope(recorded);
    for (const char* const name : names) {
        SCOPED_TRACE(name);
        m_card.AddClip(
            "0001AA", {{"ClipName", name}, {"EssenceList/+Audio", ""}, {"EssenceList/+Audio", ""}});
        const CArray<_tag_P2Clip> clips = Scan();
        ASSERT_EQ(clips.GetSize(), 1);
        EXPECT_EQ(clips[0].ClipName, L"0001AA") << "a scanned clip is named after its file";
        _tag_P2Clip clip;
        EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), L"0001AA", clip), 0);
        EXPECT_EQ(clip.ClipName, CString(platform::TextFromUtf8(name))) << "the text is told";
        EXPECT_EQ(clip.EssenceMask, 0U);
    }
    const std::string colon = m_card.AddFile("CLIP/C:x.XML", test::ClipXml({}));
    EXPECT_EQ(ScannedNames().size(), 2U);
    EXPECT_EQ(OnlyRow().reason, SkipReason::UnsafeName) << "what no path can tell of";
    ASSERT_FALSE(asked.empty());
    for (const std::string& path : asked) {
        const std::string resolved = std::filesystem::path(path).lexically_normal();
        EXPECT_TRUE(resolved.starts_with(m_card.Folder().Path() + "/CONTENTS")) << path;
    }
}

} // namespace
} // namespace nqp2::clips
