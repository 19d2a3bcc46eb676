// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/card.h"
#include "media/card_status.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "parser/scan_failure.h"
#include "platform/guard.h"

namespace avchd = nqp2::avchd;

using nqp2::media::kCannotRead;
using nqp2::media::StatusOf;
using nqp2::platform::Guarded;

__int64 CNQP2Parser::LoadAVCHDClip(const CString& root, CArray<_tag_P2Clip>& clips) noexcept {
    nqp2::ScanReport report;
    // cppcheck-suppress throwInNoexceptFunction // what is thrown anew is caught by Guarded
    return LoadAVCHDClip(root, clips, report);
}

__int64 CNQP2Parser::LoadAVCHDClip(const CString& root, CArray<_tag_P2Clip>& clips,
                                   nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        const auto describe = [this](const CString& path, NQP2BaseClipInfo& info) {
            return GetP2BaseClipInfo(path, info);
        };
        return nqp2::parser::Scanned(
            root, L"the card has no folder of an AVCHD card, a disc or a camera", report.failure,
            [&] { return StatusOf(avchd::ScanClips(root, describe, clips, report)); });
    });
}

int CNQP2Parser::GetAVCHDCPIMetadata(const CString& root, const CString& clipName,
                                     _tag_P2Clip& clip) noexcept {
    return Guarded(
        0, [&] { return avchd::ReadClip(root, clipName, avchd::kAvchdCard, clip) ? 1 : 0; });
}

int CNQP2Parser::GetAVCHDClpiDataInfo(const CString& root, const CString& clipName,
                                      _tag_P2Clip& clip) noexcept {
    return Guarded(0, [&] { return avchd::ReadClip(root, clipName, avchd::kDisc, clip) ? 1 : 0; });
}

__int64 CNQP2Parser::LoadAVCHDEdl(CString card, CArray<tag_P2EDL>& edls) {
    return Guarded(kCannotRead, [&] { return StatusOf(avchd::ScanPlaylists(card, edls)); });
}

__int64 CNQP2Parser::LoadCardPlaylists(const CString& card, CArray<tag_P2EDL>& edls,
                                       nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        return nqp2::parser::Scanned(card, L"the card has no PLAYLIST folder", report.failure, [&] {
            return StatusOf(avchd::ScanAllPlaylists(card, edls, report));
        });
    });
}

int CNQP2Parser::GetAVCHDMPLMetadata(const CString& card, const CString& name, tag_P2EDL& edl) {
    return Guarded(0, [&] { return avchd::ReadPlaylist(card, name, edl) ? 1 : 0; });
}
