// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/shown_clip.h"

#include "console/json_form.h"
#include "nqp2/clip_fields.h"
#include "nqp2/clip_file_fields.h"
#include "nqp2/clip_metadata_fields.h"
#include "nqp2/clip_table.h"
#include "nqp2/field.h"
#include "nqp2/later_date.h"
#include "NQP2ParserU/ClipTimes.h"

#include <algorithm>

namespace nqp2::tool {
namespace {

/// A member that is left out where nothing is told.
void PutTold(ValueSink& sink, std::string_view name, const CString& text) {
    if (!text.IsEmpty()) {
        sink.Name(name);
        sink.Put(text);
    }
}

void PutNumber(ValueSink& sink, std::string_view name, std::int64_t number) {
    sink.Name(name);
    sink.Put(number);
}

void PutRate(ValueSink& sink, const CString& text, const FrameRate* rate) {
    sink.Name("rate");
    sink.BeginRecord();
    if (rate != nullptr) {
        PutNumber(sink, "num", rate->frames);
        PutNumber(sink, "den", rate->seconds);
    }
    sink.Name("text");
    sink.Put(text);
    sink.EndRecord();
}

void PutLength(ValueSink& sink, std::int32_t frames, const FrameRate* rate) {
    sink.Name("length");
    sink.BeginRecord();
    PutNumber(sink, "frames", frames);
    if (rate != nullptr) {
        sink.Name("seconds");
        // One division of whole numbers: as near as a number comes, and as short as it is told.
        sink.Put(static_cast<double>(std::int64_t{frames} * rate->seconds) / rate->frames);
    }
    sink.EndRecord();
}

constexpr Field<MissingSegment> kMissingFields[] = {
    {"clipName", Plain<&MissingSegment::clipName>},
    {"globalClipID", Plain<&MissingSegment::globalClipID>},
    {"serialNo", Plain<&MissingSegment::serialNo>},
};

/// The name of the first segment, wherever it is.
const CString& TopOf(const JoinedTake& take) {
    const auto top = std::find_if(take.missing.begin(), take.missing.end(),
                                  [](const MissingSegment& each) { return each.before == 0; });
    return top == take.missing.end() ? take.segments[0].clipName : top->clipName;
}

/// Counted from 1, segments that are missing included.
std::int64_t PlaceOf(const ShownTake& shown) {
    const std::int64_t place = shown.segment->place;
    const CArray<MissingSegment>& missing = shown.take->missing;
    return place + 1 +
           std::count_if(missing.begin(), missing.end(),
                         [place](const MissingSegment& each) { return each.before <= place; });
}

void PutTake(ValueSink& sink, const ShownTake& shown) {
    const JoinedTake& take = *shown.take;
    const std::int64_t present = take.segments[take.segments.GetSize() - 1].place + 1;
    sink.Name("take");
    sink.BeginRecord();
    sink.Name("top");
    sink.Put(TopOf(take));
    PutNumber(sink, "place", PlaceOf(shown));
    PutNumber(sink, "of", present + take.missing.GetSize());
    sink.Name("complete");
    sink.Put(take.complete);
    sink.Name("missing");
    sink.BeginList(ListOf::Records);
    for (const MissingSegment& missing : take.missing) {
        PutFields(sink, kMissingFields, missing);
    }
    sink.EndList();
    sink.EndRecord();
}

void PutRemarks(ValueSink& sink, const std::vector<std::string>& remarks) {
    sink.Name("remarks");
    sink.BeginList(ListOf::Values);
    for (const std::string& remark : remarks) {
        sink.Put(std::string_view(remark));
    }
    sink.EndList();
}

void PutBeside(ValueSink& sink, const ShownClip& shown) {
    const _tag_P2Clip& clip = shown.clip;
    const FrameRate* const rate = FindFrameRate(clip.FrameRate);
    sink.Name("card");
    sink.Put(shown.card);
    PutTold(sink, "start", StartOf(shown));
    PutTold(sink, "end", EndOf(shown));
    PutTold(sink, "timecode", TimecodeOf(shown));
    PutRate(sink, clip.FrameRate, rate);
    PutLength(sink, clip.Duration, rate);
    if (shown.files != nullptr) {
        sink.Name("files");
        PutFiles(sink, *shown.files);
    }
    if (shown.take != nullptr) {
        PutTake(sink, *shown.take);
    }
    if (shown.metadata != nullptr) {
        sink.Name("metadata");
        PutMetadata(sink, *shown.metadata);
    }
    if (shown.remarks != nullptr && !shown.remarks->empty()) {
        PutRemarks(sink, *shown.remarks);
    }
}

/// The record's date, where it is one that a file tells.
const CString& RecordedStart(const ShownClip& shown) {
    static const CString none;
    return shown.told.startDate ? shown.clip.StartDate : none;
}

/// What the record's date has lost is in the metadata, where these were read.
CString DateOf(const CString& recorded, std::int16_t zone, const CString* told) {
    const CString date = told == nullptr ? CString() : IsoDate(*told);
    return date.IsEmpty() ? IsoDate(recorded, zone) : date;
}

} // namespace

CString StartOf(const ShownClip& shown) {
    const ClipMetadata* const metadata = shown.metadata;
    // A camera file has no date but what its container tells.
    const bool isContainer =
        metadata != nullptr && shown.clip.SourceKind != 0 && metadata->shoot.startDate.IsEmpty();
    const CString* const told = metadata == nullptr ? nullptr
                                : isContainer       ? &metadata->access.creationDate
                                                    : &metadata->shoot.startDate;
    return DateOf(RecordedStart(shown), shown.told.startZone, told);
}

CString EndOf(const ShownClip& shown) {
    CString end = DateOf(shown.clip.EndDate, shown.told.endZone,
                         shown.metadata == nullptr ? nullptr : &shown.metadata->shoot.endDate);
    if (end.IsEmpty() && FindFrameRate(shown.clip.FrameRate) != nullptr) {
        const CString start = StartOf(shown);
        end = start.IsEmpty()
                  ? end
                  : LaterDate(start, static_cast<std::int64_t>(RunningSeconds(shown.clip)));
    }
    return end;
}

CString TimecodeOf(const ShownClip& shown, std::int64_t offset) {
    return shown.told.startTimecode ? ClipTimecode(shown.clip, offset) : CString();
}

void PutShownClip(ValueSink& sink, const ShownClip& shown) {
    sink.BeginRecord();
    PutClipMembers(sink, shown.clip);
    PutBeside(sink, shown);
    sink.EndRecord();
}

void PutClipLine(ValueSink& sink, const ShownClip& shown) {
    sink.BeginRecord();
    PutForm(sink, "nqp2-clip");
    PutClipMembers(sink, shown.clip);
    PutBeside(sink, shown);
    sink.EndRecord();
}

} // namespace nqp2::tool
