// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_system.h"
#include "tests/clips/card_test.h"
#include "tests/support/faulty_file_system.h"

#include <filesystem>
#include <new>
#include <optional>

namespace nqp2::clips {
namespace {

using test::FaultyFileSystem;
using test::Operation;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using HostileCardTest = CardTest;

TEST_F(HostileCardTest, BrokenFilesAreSkippedAndReportedWithTheirPlace) {
    using enum SkipReason;
    const std::string good = test::ClipXml({{"ClipName", "0001AB"}});
    struct Broken {
        std::string bytes;
        bool isRead;
        std::optional<SkipReason> reason;
        int line;
    };
    const Broken rows[] = {
        {"", false, NotWellFormed, 1},
        {good.substr(0, good.size() - 12), false, NotWellFormed, 2},
        {std::string("<P2Main>\0</P2Main>", 18), false, NotWellFormed, 1},
        {good + "<P2Main/>", false, NotWellFormed, 3},
        {"<!DOCTYPE P2Main [<!ENTITY a \"b\">]>\n<P2Main>&a;</P2Main>", false, DocumentType, 1},
        {"<A><P2Main><ClipContent/></P2Main></A>", true, {}, 0},
        {"<P2Main><A><ClipContent/></A></P2Main>", true, NoClipContent, 0},
        {"<ClipMain><ClipContent/></ClipMain>", true, NoClipContent, 0},
    };
    for (const auto& [bytes, isRead, reason, line] : rows) {
        SCOPED_TRACE(bytes);
        m_card.AddFile("CLIP/0001AB.XML", bytes);
        EXPECT_EQ(ScannedNames().size(), isRead ? 1U : 0U);
        ASSERT_EQ(m_report.skipped.GetSize(), reason ? 1 : 0);
        if (reason) {
            EXPECT_THAT(Remarks(), ElementsAre(Remark("CLIP\\0001AB.XML", *reason)));
            EXPECT_EQ(m_report.skipped[0].line, line) << m_report.skipped[0].text;
            EXPECT_FALSE(m_report.skipped[0].text.IsEmpty());
        }
    }
}

TEST_F(HostileCardTest, ADeviceIsNotEvenOpenedAndFoldersAndCompanionsAreNoClips) {
    m_card.AddClip("0001AA");
    std::filesystem::create_symlink("/dev/zero", m_card.Folder().Path("CONTENTS/CLIP/0001AC.XML"));
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0001AB.XML");
    for (const char* const name : {"._0001AA.XML", ".DS_Store", "0001AA.XMP", "0001AA.XML.bak"}) {
        m_card.AddFile(std::string("CLIP/") + name, "x");
    }
    FaultyFileSystem files;
    files.SetHook([](Operation operation, const std::string& path) {
        EXPECT_FALSE(operation == Operation::Read && path.find("0001AC") != std::string::npos);
    });
    const platform::ScopedFileSystem inUse(files);
    EXPECT_THAT(ScannedNames(), ElementsAre("0001AA"));
    EXPECT_THAT(Remarks(),
                UnorderedElementsAre(Remark("CLIP\\0001AC.XML", SkipReason::Unreadable),
                                     Remark("CLIP\\0001AB.XML", SkipReason::IsFolder),
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

TEST_F(HostileCardTest, AnExceptionOrFaultInReadingEndsNothing) {
    m_card.AddClip("0001AA");
    m_card.AddClip("0001AB");
    FaultyFileSystem faulty;
    const platform::ScopedFileSystem scope(faulty);
    faulty.SetHook([](Operation, const std::string& path) {
        if (path.find("0001AB") != std::string::npos) {
            throw std::bad_alloc();
        }
    });
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(ScannedNames(), ElementsAre("0001AA"));
        EXPECT_THAT(Remarks(), ElementsAre(Remark("CLIP\\0001AB.XML", SkipReason::Unreadable)));
        _tag_P2Clip clip;
        EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), L"0001AB", clip), 1);
        faulty.SetHook({});
        faulty.Fail({.error = platform::IoError::Denied, .pathPart = "0001AB"});
    }
    EXPECT_EQ(m_report.skipped[0].text, L"made to fail");
}

TEST_F(HostileCardTest, AFolderThatCannotBeReadToItsEndOrACardRemovedGivesItsFirstClips) {
    constexpr int kClips = 20;
    constexpr int kBefore = 6;
    for (int i = 0; i < kClips; ++i) {
        m_card.AddClip("c" + std::to_string(i));
    }
    FaultyFileSystem faulty;
    const platform::ScopedFileSystem scope(faulty);
    faulty.Fail({.operation = Operation::List, .pathPart = "/CLIP", .times = 1, .keptEntries = 3});
    EXPECT_EQ(ScannedNames().size(), 3U);
    EXPECT_THAT(Remarks(), ElementsAre(Remark("CLIP\\", SkipReason::FolderUnreadable)));
    int reads = 0;
    faulty.SetHook([&](Operation operation, const std::string&) {
        if (operation == Operation::Read && ++reads == kBefore + 1) {
            std::filesystem::remove_all(m_card.Folder().Path());
        }
    });
    EXPECT_EQ(ScannedNames().size(), static_cast<std::size_t>(kBefore));
    ASSERT_EQ(m_report.skipped.GetSize(), kClips - kBefore);
    EXPECT_EQ(m_report.skipped[0].reason, SkipReason::Unreadable);
}

TEST_F(HostileCardTest, NamesInsideAFileLeadNowhereElse) {
    FaultyFileSystem recorded;
    recorded.SetHook([&](Operation, const std::string& path) {
        const std::string resolved = std::filesystem::path(path).lexically_normal();
        EXPECT_TRUE(resolved.starts_with(m_card.Folder().Path("CONTENTS"))) << path;
    });
    const platform::ScopedFileSystem scope(recorded);
    const std::string names[] = {std::string(300, 'x'), "..\\..\\..\\x", "../../../x",
                                 "/etc/passwd",         "C:x",           ".."};
    for (const std::string& name : names) {
        m_card.AddClip(
            "0001AA", {{"ClipName", name}, {"EssenceList/+Audio", ""}, {"EssenceList/+Audio", ""}});
        EXPECT_THAT(ScannedNames(), ElementsAre("0001AA")) << "named after its file";
        _tag_P2Clip clip;
        EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), L"0001AA", clip), 0);
        EXPECT_EQ(clip.ClipName, CString(platform::TextFromUtf8(name))) << "the text is told";
        EXPECT_EQ(clip.EssenceMask, 0U);
    }
    EXPECT_GT(recorded.Calls(), 0U);
    m_card.AddFile("CLIP/C:x.XML", test::ClipXml({}));
    EXPECT_EQ(ScannedNames().size(), 2U);
    ASSERT_EQ(m_report.skipped.GetSize(), 1);
    EXPECT_EQ(m_report.skipped[0].reason, SkipReason::UnsafeName) << "what no path can tell of";
}

} // namespace
} // namespace nqp2::clips
