// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/clip_scan.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2EDL.h"

namespace nqp2::avchd {

/// Reads one playlist of a card as an edit list: every play item an event, all at the start of the
/// timeline, out points exclusive (those of P2 edit lists are inclusive; hosts rely on both). An item
/// whose clip cannot be read is left out. False, the record untouched, when there is no such
/// playlist or none with items.
bool ReadPlaylist(const CString& card, const CString& name, tag_P2EDL& edl);

/// Appends the card's playlists (.MPL) in the order of their folder. False when there is no such
/// folder.
bool ScanPlaylists(const CString& card, CArray<tag_P2EDL>& edls);

/// The same for the playlists of AVCHD and behind them those of discs (.mpls). Tells of those that
/// are left out, but for empty ones. False for an empty card too.
bool ScanAllPlaylists(const CString& card, const OnOmitted& omitted, CArray<tag_P2EDL>& edls);

} // namespace nqp2::avchd
