// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Folders and files of a whole card, of any kind, through everything that reads cards.

#include "fuzz/fuzz_target.h"
#include "fuzz/memory_files.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/NQP2Parser.h"

#include <algorithm>

namespace nqp2::fuzz {
namespace {

constexpr const wchar_t* kRoot = L"/nqp2-fuzz";

void CheckPath(const CString& path) {
    Require(path.IsEmpty() || path.Find(kRoot) == 0, "a clip's files lie on its card");
    Require(path.Find(L"\\..\\") < 0, "no path leads back");
}

void CheckLeftOut(const ScanReport& report) {
    for (const SkippedFile& file : report.skipped) {
        CheckPath(file.path);
    }
}

void CheckClips(const CArray<_tag_P2Clip>& clips, const ScanReport& report,
                const MemoryFiles& card) {
    Require(clips.GetSize() <= static_cast<std::int64_t>(card.files.size()),
            "each clip has a file");
    for (const _tag_P2Clip& clip : clips) {
        CheckPath(clip.VideoPath);
        std::for_each(std::begin(clip.AudioPath), std::end(clip.AudioPath), CheckPath);
    }
    for (const Take& take : report.takes) {
        Require(take.segments.GetSize() <= clips.GetSize(), "a take has no clip twice");
    }
    CheckLeftOut(report);
}

void ScanP2(CNQP2Parser& parser, const MemoryFiles& card) {
    CArray<_tag_P2Clip> clips;
    ScanReport report;
    parser.LoadClipEx(kRoot, clips, 1, report);
    CheckClips(clips, report, card);
    eCodeType codeType = {};
    eP2_VIDEO_STANDARD standard = {};
    parser.GetDiskFormat(kRoot, codeType, standard);
}

void ScanAvchd(CNQP2Parser& parser, const MemoryFiles& card) {
    CArray<_tag_P2Clip> clips;
    ScanReport report;
    parser.LoadAVCHDClip(kRoot, clips, report);
    CheckClips(clips, report, card);
}

void CheckPlaylists(CNQP2Parser& parser) {
    CArray<tag_P2EDL> fixed;
    CArray<tag_P2EDL> all;
    ScanReport report;
    const auto found = parser.LoadAVCHDEdl(kRoot, fixed);
    Require(parser.LoadCardPlaylists(kRoot, all, report) == found, "both find the folder");
    CheckLeftOut(report);
    for (const tag_P2EDL& edl : all) {
        for (const tag_P2EDLClipTrackEvent& event : edl.Events) {
            CheckPath(event.Clip.VideoPath);
        }
    }
}

} // namespace

void TestInput(Input data) {
    ByteSource input(data);
    MemoryFiles card;
    card.AddFrom(input, "/nqp2-fuzz");
    const platform::ScopedFileSystem inPlace(card);
    CNQP2Parser parser;
    parser.Init();
    ScanP2(parser, card);
    ScanAvchd(parser, card);
    CheckPlaylists(parser);
    CArray<tag_P2EDL> edls;
    ScanReport report;
    parser.LoadCardEdls(kRoot, edls, report);
    CheckLeftOut(report);
    IngestList list;
    IngestResult result;
    LoadIngestList(kRoot, list, result);
    parser.Release();
}

} // namespace nqp2::fuzz
