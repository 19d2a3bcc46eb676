// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/P2EDL.h"
#include "platform/CArray.h"
#include "platform/CString.h"

namespace nqp2::avchd {

/// Reads one playlist of a card as an edit list: every play item an event, all at the start of the
/// timeline, out points exclusive (those of P2 edit lists are inclusive; hosts rely on both). An item
/// whose clip cannot be read is left out. False, the record untouched, when there is no such
/// playlist or none with items.
bool ReadPlaylist(const CString& card, const CString& name, tag_P2EDL& edl);

/// Appends the card's playlists in the order of their folder. False when there is no such folder.
bool ScanPlaylists(const CString& card, CArray<tag_P2EDL>& edls);

} // namespace nqp2::avchd
