// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap/plan.h"
#include "nqp2/rewrap/plan_parts.h"
#include "nqp2/scan_report_output.h"
#include "nqp2/timeline/reel_names.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <utility>

namespace nqp2::rewrap {
namespace {

using tool::Failure;

std::string NameOf(const Recording& recording) {
    return BytesFromText(recording.clips.front()->ClipName);
}

void RequireComplete(const Recording& recording, const std::string& name) {
    if (recording.missing.IsEmpty()) {
        return;
    }
    std::vector<std::string> missing;
    for (const MissingSegment& segment : recording.missing) {
        missing.push_back(tool::MissingText(segment));
    }
    throw Failure(name, fmt::format("lacks {}", fmt::join(missing, ", ")),
                  "give that card too, or take the clip alone with --no-take");
}

} // namespace

Plan PlanRecording(EssenceReader& reader, const Recording& recording, const PlanOptions& options) {
    Plan plan;
    plan.name = NameOf(recording);
    RequireComplete(recording, plan.name);
    PlanParts parts(plan, options);
    Essence first;
    for (const _tag_P2Clip* const clip : recording.clips) {
        Essence essence = reader.Of(*clip);
        plan.bytes += essence.bytes;
        parts.Add({&essence, essence.sounds, 0, essence.frames, true},
                  BytesFromText(clip->ClipName));
        if (clip == recording.clips.front()) {
            first = std::move(essence);
        }
    }
    plan.title = first.title.empty() ? plan.name : first.title;
    plan.reel = timeline::ReelNames().Fresh(plan.name);
    plan.request.date = TextFromBytes(first.date);
    parts.Finish(first.start, first.dropFrame);
    return plan;
}

std::vector<Plan> PlanRecordings(EssenceReader& reader, const std::vector<Recording>& recordings,
                                 const PlanOptions& options) {
    std::vector<Plan> plans;
    for (const Recording& recording : recordings) {
        try {
            plans.push_back(PlanRecording(reader, recording, options));
        } catch (const Failure& failure) {
            Plan& plan = plans.emplace_back();
            plan.name = NameOf(recording);
            plan.failure = failure.what();
        }
    }
    return plans;
}

} // namespace nqp2::rewrap
