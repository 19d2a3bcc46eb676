// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/clip_index.h"

#include <algorithm>

namespace nqp2::timeline {
namespace {

/// Those that tell materials from each other.
CString Digits(const CString& identifier) {
    return CString(identifier.Right(32)).MakeUpper();
}

} // namespace

void ClipIndex::Add(const CArray<_tag_P2Clip>& clips) {
    for (const _tag_P2Clip& clip : clips) {
        m_byName.emplace(CString(clip.ClipName).MakeUpper(), &clip);
        m_byIdentifier.emplace(Digits(clip.GlobalClipID), &clip);
    }
}

const _tag_P2Clip* ClipIndex::Find(const tag_P2EDLClipTrackEvent& event) const {
    const CString identifier = Digits(event.GlobalClipID);
    const auto [first, last] = m_byIdentifier.equal_range(identifier);
    const auto same = std::find_if(first, last, [&](const auto& entry) {
        return entry.second->ClipName.CompareNoCase(event.ClipName) == 0;
    });
    if (!identifier.IsEmpty() && first != last) {
        return same != last ? same->second : first->second;
    }
    const auto named = m_byName.find(CString(event.ClipName).MakeUpper());
    const bool isOther = named == m_byName.end() ||
                         (!identifier.IsEmpty() && !named->second->GlobalClipID.IsEmpty());
    return isOther ? nullptr : named->second;
}

} // namespace nqp2::timeline
