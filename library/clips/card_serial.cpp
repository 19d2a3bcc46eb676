// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/CardSerial.h"

#include "NQP2ParserU/Guid.h"
#include "platform/guard.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

namespace nqp2 {
namespace {

/// How often clips and edit lists say that a clip which is here lies on the card of that number.
class SerialVotes {
public:
    SerialVotes(const CArray<_tag_P2Clip>& clips, const CArray<tag_P2EDL>& lists) {
        if (lists.IsEmpty() && std::none_of(clips.begin(), clips.end(), NamesCard)) {
            return; // clips are many, and most stand alone
        }
        for (const _tag_P2Clip& clip : clips) {
            m_here.insert(KeyOf(clip.GlobalClipGuid));
        }
        for (const _tag_P2Clip& clip : clips) {
            Count(clip.TopClipGuid, clip.TopSerialNo);
            Count(clip.PreviousClipGuid, clip.PreviousSerialNo);
            Count(clip.NextClipGuid, clip.NextSerialNo);
        }
        for (const tag_P2EDL& list : lists) {
            for (const tag_P2EDLClipTrackEvent& event : list.Events) {
                Count(event.GlobalClipGuid, event.P2SerialNo);
            }
        }
    }

    [[nodiscard]] CString Winner() const {
        const auto most =
            std::max_element(m_votes.begin(), m_votes.end(),
                             [](const auto& a, const auto& b) { return a.second < b.second; });
        return most == m_votes.end() ? CString() : most->first;
    }

private:
    static bool NamesCard(const _tag_P2Clip& clip) {
        return !clip.TopSerialNo.IsEmpty() || !clip.PreviousSerialNo.IsEmpty() ||
               !clip.NextSerialNo.IsEmpty();
    }
    static std::string KeyOf(const GUID& guid) {
        return {reinterpret_cast<const char*>(&guid), sizeof guid};
    }
    void Count(const GUID& clip, const CString& serial) {
        if (clip != GUID() && !serial.IsEmpty() && m_here.contains(KeyOf(clip))) {
            ++m_votes[serial];
        }
    }

    std::set<std::string> m_here;
    std::map<CString, int> m_votes;
};

} // namespace

CString CardSerial(const CArray<_tag_P2Clip>& clips, const CArray<tag_P2EDL>& lists) noexcept {
    return platform::Guarded(CString(), [&] { return SerialVotes(clips, lists).Winner(); });
}

} // namespace nqp2
