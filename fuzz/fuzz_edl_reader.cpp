// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Bytes as an edit list through its reader.

#include "edl/edl_layout.h"
#include "edl/edl_reader.h"
#include "fuzz/fuzz_target.h"
#include "media/families.h"
#include "media/identifier.h"
#include "NQP2ParserU/MarkupMSXML.h"

#include <algorithm>
#include <limits>

namespace nqp2::fuzz {
namespace {

constexpr int kIgnoreMissing = 1;

void CheckHead(const tag_P2EDL& edl) {
    Require(edl.EditUnit.Numerator >= 1 && edl.EditUnit.Denominator >= 1, "a unit that can be one");
    Require(edl.StartTimecode >= 0, "a timecode is no negative count");
    Require(edl.Class50 == 0 ||
                (edl.Class50 == 1 &&
                 nqp2::media::LooksAtClass(nqp2::media::ClassReader::EditList, edl.Codec.View())),
            "class 50 is a flag of four codecs");
    Require(edl.Name.IsEmpty() && edl.Date.IsEmpty() && edl.Identity == GUID() &&
                edl.IconPath.IsEmpty(),
            "name, date, identity and picture are the caller's");
    Require(edl.ExtTrack.Events.IsEmpty(), "nothing reads the extended track");
}

void CheckEvent(const tag_P2EDLClipTrackEvent& event) {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::int64_t last = std::int64_t{event.SourceOffset} + event.Duration - 1;
    Require(event.SourceIn == event.SourceOffset, "the source starts at its offset");
    Require(event.SourceOut == std::clamp<std::int64_t>(last, Limits::min(), Limits::max()),
            "the source ends after its duration");
    Require(event.GlobalClipGuid == media::GuidFromIdentifier(event.GlobalClipID),
            "the GUID stands in the identifier");
}

/// The single walk over an event must give what asking path by path gives.
void CheckEvents(CMarkupMSXML& reader, const wchar_t* path, const tag_P2EDL& edl) {
    CMSXmlParserNode nodes = reader.GetNodeList(path);
    std::int64_t count = 0;
    while (nodes.GetNextNode() != 0) {
        Require(count < edl.Events.GetSize(), "every event is read");
        const tag_P2EDLClipTrackEvent& event = edl.Events[count++];
        CheckEvent(event);
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
    if (!edl::ReadEditList(reader, edl)) {
        return;
    }
    CheckHead(edl);
    const CString schema = reader.GetNodeAttribute(L"P2Main", L"");
    Require(schema.Find(L"EditMetadata") >= 0, "the schema is that of edit lists");
    const bool isThird = schema.Right(4).CompareNoCase(L"v3.0") == 0;
    CheckEvents(reader,
                isThird ? L"//P2Main/EditContent/TrackList/VideoTrack/EventList/Event"
                        : L"//P2Main/EditContent/TrackList/ClipTrack/EventList/Event",
                edl);
}

} // namespace nqp2::fuzz
