// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/edl_fields.h"

#include "nqp2/clip_fields.h"
#include "nqp2/event_times.h"
#include "nqp2/field.h"
#include "nqp2/json_input.h"
#include "NQP2ParserU/NQP2Parser.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

namespace nqp2::tool {
namespace {

/// A field that is shown and taken.
template <class Source>
struct TwoWayField : Field<Source> {
    void (*set)(Source&, const InputValue&);
};

template <auto Member, class Source>
void Store(Source& target, const InputValue& input) {
    input.Read(target.*Member);
}

template <class Source, std::size_t Count>
void TakeMember(const TwoWayField<Source> (&fields)[Count], const std::string& name,
                const InputValue& value, Source& target) {
    const auto* field =
        std::find_if(std::begin(fields), std::end(fields),
                     [&](const TwoWayField<Source>& candidate) { return candidate.name == name; });
    if (field == std::end(fields)) {
        value.Refuse("is no field", "names are those of `nqp2 edl list --json`");
    }
    field->set(target, value);
}

using Event = tag_P2EDLClipTrackEvent;
#define NQP2_FIELD(record, member)                                                                 \
    { {#member, Plain<&record::member>}, Store<&record::member> }
constexpr TwoWayField<Event> kEventFields[] = {
    NQP2_FIELD(Event, Offset),         NQP2_FIELD(Event, Duration),
    NQP2_FIELD(Event, P2SerialNo),     NQP2_FIELD(Event, ClipName),
    NQP2_FIELD(Event, GlobalClipID),   NQP2_FIELD(Event, GlobalClipGuid),
    NQP2_FIELD(Event, SourceOffset),   NQP2_FIELD(Event, SourceIn),
    NQP2_FIELD(Event, SourceOut),      NQP2_FIELD(Event, AudioInOffset),
    NQP2_FIELD(Event, AudioOutOffset), NQP2_FIELD(Event, Channels),
    NQP2_FIELD(Event, AudioLevels),    NQP2_FIELD(Event, Note),
};

Event EventFromInput(const InputValue& input) {
    Event event;
    input.ForEachMember([&](const std::string& name, const InputValue& value) {
        // Lists of other kinds of cards carry the source's clip record.
        if (name != "Clip") {
            TakeMember(kEventFields, name, value, event);
        }
    });
    if (!input.Has("GlobalClipGuid")) {
        event.GlobalClipGuid = CNQP2Parser::GuidFromUMID(event.GlobalClipID);
    }
    CompleteTimes(input, event);
    return event;
}

using Edl = tag_P2EDL;

void PutEditUnit(ValueSink& sink, const Edl& edl) {
    const std::int32_t unit[2] = {edl.EditUnit.Numerator, edl.EditUnit.Denominator};
    PutField(sink, unit);
}
void TakeEditUnit(Edl& edl, const InputValue& input) {
    std::int32_t unit[2] = {};
    input.Read(unit);
    edl.EditUnit = {unit[0], unit[1]};
}

void PutEvent(ValueSink& sink, const Event& event) {
    sink.BeginRecord();
    PutMembers(sink, kEventFields, event);
    if (!event.Clip.ClipName.IsEmpty()) { // readers of P2 edit lists leave it fresh
        sink.Name("Clip");
        PutClip(sink, event.Clip);
    }
    sink.EndRecord();
}
void PutEvents(ValueSink& sink, const Edl& edl) {
    sink.BeginList(ListOf::Records);
    for (const Event& event : edl.Events) {
        PutEvent(sink, event);
    }
    sink.EndList();
}
void TakeEvents(Edl& edl, const InputValue& input) {
    input.ForEachElement([&](std::size_t, const InputValue& value) {
        Event event = EventFromInput(value);
        PlaceBehind(edl, value, event);
        edl.Events.Add(event);
    });
}

constexpr TwoWayField<Edl> kEdlFields[] = {
    NQP2_FIELD(Edl, LeadingText),
    NQP2_FIELD(Edl, Name),
    NQP2_FIELD(Edl, Duration),
    {{"EditUnit", PutEditUnit}, TakeEditUnit},
    NQP2_FIELD(Edl, StartTimecode),
    NQP2_FIELD(Edl, FrameRate),
    NQP2_FIELD(Edl, Codec),
    NQP2_FIELD(Edl, Class50),
    NQP2_FIELD(Edl, ThumbnailFrame),
    {{"IconPath", Path<&Edl::IconPath>}, Store<&Edl::IconPath>},
    NQP2_FIELD(Edl, Date),
    NQP2_FIELD(Edl, Identity),
    {{"Events", PutEvents}, TakeEvents},
};
#undef NQP2_FIELD

} // namespace

void PutEdl(ValueSink& sink, const tag_P2EDL& edl) {
    PutFields(sink, kEdlFields, edl);
}

tag_P2EDL EdlFromInput(const InputValue& input) {
    Edl edl;
    input.ForEachMember([&](const std::string& name, const InputValue& value) {
        TakeMember(kEdlFields, name, value, edl);
    });
    CompleteLength(input, edl);
    return edl;
}

} // namespace nqp2::tool
