// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/card_folders.h"
#include "avchd/clip_scan.h"
#include "avchd/clip_source.h"
#include "avchd/playlist_reader.h"
#include "media/card_layout.h"
#include "media/card_status.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/TextBytes.h"
#include "platform/guard.h"

#include <vector>

using nqp2::avchd::Omission;
using nqp2::media::kCannotRead;
using nqp2::media::StatusOf;
using nqp2::platform::Guarded;

namespace {

int ReadClip(const CString& root, const CString& name, const nqp2::avchd::ClipFiles& files,
             _tag_P2Clip& clip) {
    return Guarded(0, [&] {
        nqp2::avchd::ClipSource source(nqp2::avchd::ClipsFolder(nqp2::media::WithDrive(root)));
        return !root.IsEmpty() && !name.IsEmpty() && source.Read(files, name, clip) ? 1 : 0;
    });
}

nqp2::SkipReason ReasonOf(Omission omission) {
    switch (omission) {
    case Omission::TooLarge:
        return nqp2::SkipReason::TooLarge;
    case Omission::Companion:
        return nqp2::SkipReason::Companion;
    case Omission::FolderUnreadable:
        return nqp2::SkipReason::FolderUnreadable;
    case Omission::Undecodable:
        return nqp2::SkipReason::Undecodable;
    case Omission::NotDescribed:
        return nqp2::SkipReason::NotDescribed;
    default:
        return nqp2::SkipReason::Unreadable;
    }
}

void Remark(nqp2::ScanReport& report, const CString& path, Omission omission,
            const std::string& why) {
    nqp2::SkippedFile file;
    file.path = path;
    file.reason = ReasonOf(omission);
    file.text = nqp2::TextFromBytes(why);
    report.skipped.Add(file);
}

/// Remarks into a report.
nqp2::avchd::OnOmitted RemarksIn(nqp2::ScanReport& report) {
    return [&report](const CString& path, Omission omission, const std::string& why) {
        Remark(report, path, omission, why);
    };
}

/// A split recording as take; cards of this kind tell no serial numbers.
nqp2::Take TakeOf(const nqp2::avchd::SplitRecording& split, const CArray<_tag_P2Clip>& clips) {
    nqp2::Take take;
    for (const nqp2::avchd::SplitRecording::Segment& segment : split.segments) {
        if (segment.clip != nqp2::avchd::SplitRecording::kMissing) {
            take.segments.Add(segment.clipName);
        } else {
            take.missing.Add({segment.clipName, L"", L""});
        }
    }
    if (const std::int64_t top = split.segments.front().clip; top >= 0) {
        take.topGlobalClipID = clips[top].GlobalClipID;
    }
    take.complete = take.missing.IsEmpty();
    return take;
}

} // namespace

__int64 CNQP2Parser::LoadAVCHDClip(const CString& root, CArray<_tag_P2Clip>& clips) noexcept {
    nqp2::ScanReport report;
    return LoadAVCHDClip(root, clips, report);
}

__int64 CNQP2Parser::LoadAVCHDClip(const CString& root, CArray<_tag_P2Clip>& clips,
                                   nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        std::vector<nqp2::avchd::SplitRecording> splits;
        const bool found =
            nqp2::avchd::ScanClips(root,
                                   [this](const CString& path, NQP2BaseClipInfo& info) {
                                       return GetP2BaseClipInfo(path, info);
                                   },
                                   RemarksIn(report), {clips, splits});
        for (const nqp2::avchd::SplitRecording& split : splits) {
            report.takes.Add(TakeOf(split, clips));
        }
        return StatusOf(found);
    });
}

int CNQP2Parser::GetAVCHDCPIMetadata(const CString& root, const CString& clipName,
                                     _tag_P2Clip& clip) noexcept {
    return ReadClip(root, clipName, nqp2::avchd::kAvchdFiles, clip);
}

int CNQP2Parser::GetAVCHDClpiDataInfo(const CString& root, const CString& clipName,
                                      _tag_P2Clip& clip) noexcept {
    return ReadClip(root, clipName, nqp2::avchd::kBdmvFiles, clip);
}

__int64 CNQP2Parser::LoadAVCHDEdl(CString card, CArray<tag_P2EDL>& edls) {
    return Guarded(kCannotRead, [&] { return StatusOf(nqp2::avchd::ScanPlaylists(card, edls)); });
}

__int64 CNQP2Parser::LoadCardPlaylists(const CString& card, CArray<tag_P2EDL>& edls,
                                       nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        return StatusOf(nqp2::avchd::ScanAllPlaylists(card, RemarksIn(report), edls));
    });
}

int CNQP2Parser::GetAVCHDMPLMetadata(const CString& card, const CString& name, tag_P2EDL& edl) {
    return Guarded(0, [&] { return nqp2::avchd::ReadPlaylist(card, name, edl) ? 1 : 0; });
}
