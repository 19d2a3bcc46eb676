// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Bytes as an edit list through its reader.

#include "edl/edl_layout.h"
#include "edl/edl_reader.h"
#include "fuzz/fuzz_target.h"
#include "NQP2ParserU/MarkupMSXML.h"

#include <algorithm>

namespace nqp2::fuzz {
namespace {

constexpr int kIgnoreMissing = 1;

/// The single walk over an event must give what asking path by path gives.
void CheckEvents(CMarkupMSXML& reader, const wchar_t* path, const tag_P2EDL& edl) {
    CMSXmlParserNode nodes = reader.GetNodeList(path);
    std::int64_t count = 0;
    while (nodes.GetNextNode() != 0) {
        Require(count < edl.Events.GetSize(), "every event is read");
        const tag_P2EDLClipTrackEvent& event = edl.Events[count++];
        Require(event.ClipName == nodes.GetNodeText(L"Source/ClipName", kIgnoreMissing) &&
                    event.GlobalClipID ==
                        nodes.GetNodeText(L"Source/GlobalClipID", kIgnoreMissing) &&
                    event.Note == nodes.GetNodeText(L"Note", kIgnoreMissing),
                "an event's text is that of the first node which its path selects");
    }
    Require(edl.Events.GetSize() == std::max<std::int64_t>(count, 1), "no event is made up");
}

} // namespace

void TestInput(Input input) {
    // The same object for all inputs, as in a scan: no file may spoil the next.
    static CMarkupMSXML reader;
    if (reader.LoadBytes(AsText(input)) == 0) {
        return;
    }
    tag_P2EDL edl;
    CArray<EventDoubt> doubts;
    if (!edl::ReadEditList(reader, edl, &doubts)) {
        return;
    }
    const CString schema = reader.GetNodeAttribute(L"P2Main", L"");
    const bool isThird = schema.Right(4).CompareNoCase(L"v3.0") == 0;
    CheckEvents(reader,
                isThird ? L"//P2Main/EditContent/TrackList/VideoTrack/EventList/Event"
                        : L"//P2Main/EditContent/TrackList/ClipTrack/EventList/Event",
                edl);
}

} // namespace nqp2::fuzz
