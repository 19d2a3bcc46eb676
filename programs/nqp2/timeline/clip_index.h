// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"

#include <map>

namespace nqp2::timeline {

/// Clips by identifier and name. They belong to the caller.
class ClipIndex {
public:
    void Add(const CArray<_tag_P2Clip>& clips);

    /// The source of an event. Null when there is none of that identifier; without identifiers the
    /// name decides.
    [[nodiscard]] const _tag_P2Clip* Find(const tag_P2EDLClipTrackEvent& event) const;

private:
    std::map<CString, const _tag_P2Clip*> m_byName;
    std::multimap<CString, const _tag_P2Clip*> m_byIdentifier;
};

} // namespace nqp2::timeline
