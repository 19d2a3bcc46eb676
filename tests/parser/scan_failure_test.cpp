// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"
#include "NQP2ParserU/TextBytes.h"
#include "tests/support/temp_folder.h"

#include <cstdint>
#include <string>

namespace nqp2::parser {
namespace {

struct Reasons {
    std::string clips, media, lists, playlists;
    bool operator==(const Reasons&) const = default;
};

/// "" for a call that succeeds, also where a report told of a failure before.
Reasons ReasonsOf(CNQP2Parser& parser, const CString& root) {
    CArray<_tag_P2Clip> clips;
    CArray<tag_P2EDL> edls;
    const auto reason = [&](auto scan) {
        ScanReport report;
        report.failure = L"old";
        const bool failed = scan(report) != 0;
        const std::string told = BytesFromText(report.failure);
        return failed ? told : told == "old" ? "" : "changed to " + told;
    };
    return {
        reason([&](ScanReport& report) { return parser.LoadClipEx(root, clips, 1, report); }),
        reason([&](ScanReport& report) { return parser.LoadAVCHDClip(root, clips, report); }),
        reason([&](ScanReport& report) { return parser.LoadCardEdls(root, edls, report); }),
        reason([&](ScanReport& report) { return parser.LoadCardPlaylists(root, edls, report); })};
}

TEST(ScanFailure, OfOneClipHasItsPlace) {
    const test::TempFolder folder;
    folder.Write("CONTENTS/CLIP/0001AB.XML", "<a>\n<b></a>");
    folder.MakeFolder("CONTENTS/CLIP/0002CD.XML");
    const struct {
        const wchar_t* name;
        std::int64_t skipped;
        std::string failure; ///< its beginning
        int line;
        SkipReason reason;
    } cases[] = {{L"0001AB", 1, "the clip's metadata do not load: ", 2, SkipReason::NotWellFormed},
                 {L"0002CD", 1, "the clip's metadata do not load: ", 0, SkipReason::IsFolder},
                 {L"0003EF", 0, "the card has no such clip", 0, {}}};
    ReadyParser parser;
    for (const auto& [name, skipped, failure, line, reason] : cases) {
        ScanReport report;
        _tag_P2Clip clip;
        EXPECT_EQ(parser->LoadClipInfo(InterfaceRoot(folder.Path()), name, clip, report), 1);
        EXPECT_TRUE(BytesFromText(report.failure).starts_with(failure)) << failure;
        ASSERT_EQ(report.skipped.GetSize(), skipped) << failure;
        if (skipped > 0) {
            EXPECT_EQ(report.skipped[0].line, line);
            EXPECT_EQ(report.skipped[0].reason, reason);
        }
    }
}

TEST(ScanFailure, IsExplained) {
    const test::TempFolder folder;
    for (const char* const below : {"p2/CONTENTS", "list/EDITLIST", "sd/AVCHD/BDMV/CLIPINF",
                                    "sd/AVCHD/BDMV/PLAYLIST", "empty"}) {
        folder.MakeFolder(below);
    }
    const std::string missing = "the card cannot be reached: No such file or directory";
    const std::string p2 = "the card has no CONTENTS folder";
    const std::string media = "the card has no folder of an AVCHD card, a disc or a camera";
    const std::string lists = "the card has no EDITLIST folder that can be read";
    const std::string playlists = "the card has no PLAYLIST folder";
    const struct {
        std::string name;
        Reasons reasons;
    } cases[] = {{"p2", {"", media, lists, playlists}},
                 {"list", {p2, media, "", playlists}},
                 {"sd", {p2, "", lists, ""}},
                 {"empty", {p2, media, lists, playlists}},
                 {"gone", {missing, missing, missing, missing}}};
    CNQP2Parser parser;
    parser.Init();
    for (const auto& [name, reasons] : cases) {
        const CString root = InterfaceRoot(folder.Path(name));
        EXPECT_TRUE(ReasonsOf(parser, root) == reasons) << name;
        DiskFormat format;
        format.failure = L"old";
        EXPECT_EQ(parser.GetDiskFormat(root, format) == 0, reasons.clips.empty());
        EXPECT_EQ(BytesFromText(format.failure), reasons.clips);
    }
    EXPECT_EQ(ReasonsOf(parser, L"").media, "no card is named");
    parser.Release();
    EXPECT_EQ(ReasonsOf(parser, InterfaceRoot(folder.Path("list"))).lists, "Init was not called");
}

} // namespace
} // namespace nqp2::parser
