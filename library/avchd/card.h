// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_layout.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ScanReport.h"

#include <functional>

/// What a host asks of an AVCHD card, a disc or a folder of cameras, by its root as the host wrote
/// it. An empty root holds nothing.
namespace nqp2::avchd {

/// A kind of card: how it names files, and what the debugger output calls the decoding of a clip
/// (null: it is not told).
struct CardKind {
    media::AvchdExtensions files;
    const wchar_t* timedAs;
};
inline constexpr CardKind kAvchdCard = {media::kAvchdExtensions, L"NQGetAVCHDCPIMetaData"};
inline constexpr CardKind kDisc = {media::kDiscExtensions, nullptr};

/// Asks for the description of a camera file by its interface path; the record comes with the name
/// and date text. Positive when the record was filled.
using BaseClipRequest = std::function<int(const CString& path, NQP2BaseClipInfo& info)>;

/// Appends the clips: clip information of AVCHD, camera files of two makers, clip information of
/// discs, each in the order of its folder. A file that cannot be read is left out. The recordings
/// that the camera split into several clips are the report's takes. False, with nothing appended,
/// when there is none of the folders.
bool ScanClips(const CString& root, const BaseClipRequest& request, CArray<_tag_P2Clip>& clips,
               ScanReport& report);

/// Reads one clip of a kind by its name. False, the record untouched, when there is no such clip.
bool ReadClip(const CString& root, const CString& name, const CardKind& kind, _tag_P2Clip& clip);

/// Reads one playlist as an edit list: every play item an event, all at the start of the timeline,
/// out points exclusive (those of P2 edit lists are inclusive; hosts rely on both). An item whose
/// clip cannot be read is left out. False, the record untouched, when there is no such playlist or
/// none with items.
bool ReadPlaylist(const CString& root, const CString& name, tag_P2EDL& edl);

/// Appends the playlists of AVCHD in the order of their folder. False when there is no such folder.
bool ScanPlaylists(const CString& root, CArray<tag_P2EDL>& edls);

/// The same with those of discs behind them. An item whose clip cannot be read is an event with its
/// name, length and rate, the clip's record fresh. The report tells which lists have such items,
/// and which lists are left out, but for empty ones.
bool ScanAllPlaylists(const CString& root, CArray<tag_P2EDL>& edls, ScanReport& report);

} // namespace nqp2::avchd
