// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/unit_writer.h"

#include "copy/failure.h"
#include "worker/base/media_loader.h"
#include "worker/rewrap/field_atom.h"

#include <algorithm>

namespace nqp2::worker::rewrap {

UnitWriter::UnitWriter(const Request& request, const PlannedFile& plan, const RecordingInput& input,
                       OutputFile& output)
    : m_request(request), m_plan(plan), m_input(input), m_output(output),
      m_waiting(plan.essence.size()), m_isInFrames(request.container == RewrapContainer::Mxf) {
    for (std::size_t i = 0; i < plan.essence.size(); ++i) {
        m_tallies.push_back(std::make_unique<Tally>(plan.essence[i], input.Tracks()[i]));
    }
    output.Require(LoadMediaModule().OpenWriter(plan.file, output, m_writer));
    if (m_isInFrames && !request.chapters.empty()) {
        m_remarks.emplace_back("An MXF file holds no chapters: they are left out.");
    }
}

std::size_t UnitWriter::SampleBytes(std::size_t track) const {
    const MediaStream& sound = m_input.Tracks()[track];
    return static_cast<std::size_t>(sound.channels * sound.bits / 8);
}

void UnitWriter::Put(const MediaUnit& unit) {
    if (unit.stream == 0) {
        PutPicture(unit);
    } else if (m_isInFrames && m_plan.essence[unit.stream] == Essence::Pcm) {
        PutInFrames(unit);
    } else {
        PutWhole(unit);
    }
}

void UnitWriter::PutPicture(const MediaUnit& unit) {
    ++m_frames;
    if (m_plan.setsToInsert.empty()) {
        PutWhole(unit);
        return;
    }
    m_tallies.front()->Add(unit, m_request.parts.front().name);
    const std::string whole = WithParameterSets(unit.bytes, m_plan.setsToInsert);
    MediaUnit with = unit;
    with.bytes = whole;
    m_output.Require(m_writer->Put(with));
}

void UnitWriter::PutWhole(const MediaUnit& unit) {
    m_tallies[unit.stream]->Add(unit, m_request.parts.front().name);
    m_output.Require(m_writer->Put(unit));
}

void UnitWriter::PutInFrames(const MediaUnit& unit) {
    m_waiting[unit.stream].bytes.append(unit.bytes);
    PutDue(unit.stream);
}

void UnitWriter::PutDue(std::size_t track) {
    Waiting& waiting = m_waiting[track];
    const auto there = static_cast<std::int64_t>(waiting.bytes.size() / SampleBytes(track));
    const std::int64_t due = SamplesUpTo(m_frames, m_input.Tracks().front().rate) - waiting.samples;
    const std::int64_t samples = std::min(there, due);
    if (samples <= 0) {
        return;
    }
    const std::size_t size = static_cast<std::size_t>(samples) * SampleBytes(track);
    MediaUnit unit;
    unit.stream = track;
    unit.bytes = std::string_view(waiting.bytes).substr(0, size);
    unit.shown = unit.coded = waiting.samples;
    unit.duration = samples;
    unit.isKey = true;
    PutWhole(unit);
    waiting.samples += samples;
    waiting.bytes.erase(0, size);
}

/// What is beyond the last picture is cut off, and what lacks of its frame is silence.
void UnitWriter::FillLastFrame(std::size_t track) {
    Waiting& waiting = m_waiting[track];
    PutDue(track);
    const std::string sound = "sound track " + std::to_string(track);
    const std::size_t surplus = waiting.bytes.size() / SampleBytes(track);
    const std::int64_t lack =
        SamplesUpTo(m_frames, m_input.Tracks().front().rate) - waiting.samples;
    if (surplus > 0) {
        m_remarks.push_back("MXF holds whole frames of sound: " + std::to_string(surplus) +
                            " samples at the end of " + sound + " are left out.");
    } else if (lack > 0) {
        m_remarks.push_back("MXF holds whole frames of sound: " + std::to_string(lack) +
                            " samples of silence are added to " + sound + ".");
        waiting.bytes.assign(static_cast<std::size_t>(lack) * SampleBytes(track), '\0');
        PutDue(track);
    }
}

void UnitWriter::Finish() {
    for (std::size_t track = 1; m_isInFrames && track < m_plan.essence.size(); ++track) {
        FillLastFrame(track);
    }
    m_output.Require(m_writer->Finish());
    const bool isH264 =
        m_plan.essence.front() == Essence::AvcIntra || m_plan.essence.front() == Essence::H264;
    const FieldOrder order = m_plan.file.tracks.front().marks.order;
    if (m_request.container == RewrapContainer::Mov && isH264 && order != FieldOrder::Unknown) {
        TellFieldOrder(m_output, order);
    }
}

} // namespace nqp2::worker::rewrap
