// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/plain_text.h"
#include "nqp2/timeline/writers.h"

#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <set>

// An Avid Log Exchange file: a heading, the names of the columns, a row for each stretch of a clip,
// with tabs between the values. All at one rate; the end is exclusive.
namespace nqp2::timeline {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

/// A row is made of this.
struct Row {
    const Timeline& timeline;
    const Document& document;
    const Event& event;
    const Media& media;

    [[nodiscard]] std::string Timecode(std::int64_t frame) const {
        return BytesFromText(FrameTimecode(frame, timeline.rate, media.dropFrame));
    }
};

/// "VA1A2"
std::string Tracks(const Row& row) {
    std::set<std::int32_t> heard;
    for (const SoundUse& use : row.event.sound) {
        if (use.IsHeard()) {
            heard.insert(use.channel + 1);
        }
    }
    return fmt::format("V{}{}", heard.empty() ? "" : "A", fmt::join(heard, "A"));
}

std::string SourceFile(const Row& row) {
    return row.document.PathOf(row.timeline.sources->files[row.timeline.PictureOf(row.media)]);
}

std::string Comments(const Row& row) {
    std::string comments = row.event.note;
    for (const PlacedMemo& memo : MemosOf(row.timeline, row.event)) {
        comments +=
            fmt::format("{}{} {}", comments.empty() ? "" : "; ",
                        row.Timecode(row.media.start + memo.inSource), MemoText(*memo.memo));
    }
    return comments;
}

struct Column {
    std::string_view name;
    std::string (*value)(const Row& row);
};
constexpr Column kColumns[] = {
    {"Name", [](const Row& row) { return row.media.name; }},
    {"Tracks", Tracks},
    {"Start", [](const Row& row) { return row.Timecode(row.media.start + row.event.in); }},
    {"End",
     [](const Row& row) {
         return row.Timecode(row.media.start + row.event.in + row.event.length);
     }},
    {"Duration", [](const Row& row) { return row.Timecode(row.event.length); }},
    {"Tape", [](const Row& row) { return row.media.reel; }},
    {"Source File", SourceFile},
    {"Title", [](const Row& row) { return row.media.logging.title; }},
    {"Shoot Date", [](const Row& row) { return row.media.logging.date; }},
    {"Scene", [](const Row& row) { return row.media.logging.scene; }},
    {"Take", [](const Row& row) { return row.media.logging.take; }},
    {"Camera", [](const Row& row) { return row.media.logging.camera; }},
    {"Shooter", [](const Row& row) { return row.media.logging.shooter; }},
    {"UMID", [](const Row& row) { return row.media.identifier; }},
    {"Camera Timecode", [](const Row& row) { return row.media.timecode; }},
    {"Part", [](const Row& row) { return PartText(row.media); }},
    {"Comments", Comments},
};

std::string_view VideoFormat(const Raster& raster) {
    switch (raster.lines) {
    case 1080:
        return "1080";
    case 720:
        return "720";
    case 576:
        return "PAL";
    case 480:
        return "NTSC";
    default:
        return "CUSTOM";
    }
}

/// "25", "29.97"
std::string RateText(const FrameRate& rate) {
    return rate.seconds == 1 ? fmt::format("{}", rate.frames)
                             : fmt::format("{:.2f}", rate.PerSecond());
}

class AleWriter {
public:
    AleWriter(const Timeline& timeline, Document& document)
        : m_timeline(timeline), m_document(document), m_out(document.Out()) {}

    void Write() {
        PutHeading();
        m_out.Put("Column", kLineEnd);
        for (const Column& column : kColumns) {
            m_out.Put(&column == kColumns ? "" : "\t", column.name);
        }
        m_out.Put(kLineEnd, kLineEnd, "Data", kLineEnd);
        for (const Event& event : m_timeline.events) {
            PutRow({m_timeline, m_document, event, m_timeline.MediaOf(event)});
            m_document.Step();
        }
        m_document.Finish();
    }

private:
    void PutHeading() {
        m_out.Put("Heading", kLineEnd, "FIELD_DELIM\tTABS", kLineEnd, "VIDEO_FORMAT\t",
                  VideoFormat(m_timeline.raster), kLineEnd, "AUDIO_FORMAT\t48khz", kLineEnd,
                  "FPS\t", RateText(m_timeline.rate), kLineEnd, kLineEnd);
    }

    void PutRow(const Row& row) {
        for (const Column& column : kColumns) {
            m_out.Put(&column == kColumns ? "" : "\t", OneLine(column.value(row)));
        }
        m_out.Put(kLineEnd);
    }

    const Timeline& m_timeline;
    Document& m_document;
    tool::OutputText& m_out;
};

} // namespace

void WriteAle(const Timeline& timeline, Document& document, Remarks& remarks) {
    if (!timeline.isBin) {
        remarks.Add("an ALE has no places on a timeline, channels and levels of sound: "
                    "its events are told one by one");
    }
    AleWriter(timeline, document).Write();
}

} // namespace nqp2::timeline
