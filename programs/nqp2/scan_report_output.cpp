// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/scan_report_output.h"

#include "nqp2/card.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace nqp2::tool {
namespace {

struct ReasonWords {
    SkipReason reason;
    const char* words;
};
/// Reasons whose text is only a detail; that of every other reason is a whole sentence.
constexpr ReasonWords kReasons[] = {
    {SkipReason::NotWellFormed, "not well-formed XML"},
    {SkipReason::DocumentType, "document types are refused"},
    {SkipReason::TooLarge, "too large"},
    {SkipReason::Unreadable, "cannot be read"},
    {SkipReason::FolderUnreadable, "the folder could not be read to its end"},
};

Record SkippedRecord(const SkippedFile& file) {
    return {{"path", OutputPath(file.path)},
            {"reason", ReasonText(file)},
            {"line", file.line},
            {"column", file.column}};
}

Record TakeRecord(const JoinedTake& take) {
    List segments;
    for (const TakeSegment& segment : take.segments) {
        segments.emplace_back(BytesFromText(segment.clipName));
    }
    return {{"TopGlobalClipID", BytesFromText(take.topGlobalClipID)},
            {"segments", segments},
            {"complete", take.complete},
            {"missing", MissingRecords(take.missing)}};
}

/// "A + B: incomplete, missing C on card D", from the segments that are there.
std::string TakeLine(const std::vector<std::string>& segments, bool complete,
                     const CArray<MissingSegment>& missing) {
    std::string line = fmt::format("take {}", fmt::join(segments, " + "));
    if (complete) {
        return line + ": complete";
    }
    const char* separator = ": incomplete, missing ";
    for (const MissingSegment& segment : missing) {
        line += separator + MissingText(segment);
        separator = ", ";
    }
    return missing.IsEmpty() ? line + ": incomplete" : line;
}

std::string TakeLine(const Take& take) {
    std::vector<std::string> segments;
    for (const CString& segment : take.segments) {
        segments.push_back(BytesFromText(segment));
    }
    return TakeLine(segments, take.complete, take.missing);
}

/// Copies of a segment are told as its other cards.
std::string TakeLine(const JoinedTake& take, const std::vector<CardScan>& cards) {
    std::vector<std::string> segments;
    for (std::int64_t i = 0; i < take.segments.GetSize(); ++i) {
        const TakeSegment& segment = take.segments[i];
        const std::string& card = cards[static_cast<std::size_t>(segment.card)].label;
        if (i > 0 && take.segments[i - 1].place == segment.place) {
            segments.back() += " and " + card;
        } else {
            segments.push_back(fmt::format("{} on {}", BytesFromText(segment.clipName), card));
        }
    }
    return TakeLine(segments, take.complete, take.missing);
}

/// Whether the file is among the clips or playlists all the same.
bool IsListed(const SkippedFile& file) {
    return file.reason == SkipReason::NoClipContent || file.reason == SkipReason::UnsafeName ||
           file.reason == SkipReason::MissingClip;
}

void TellSkipped(const CArray<SkippedFile>& skipped, const TellLine& tell) {
    for (const SkippedFile& file : skipped) {
        tell(fmt::format("{} {}: {}", IsListed(file) ? "remark" : "skipped", PositionText(file),
                         ReasonText(file)));
    }
}

} // namespace

List MissingRecords(const CArray<MissingSegment>& segments) {
    List missing;
    for (const MissingSegment& segment : segments) {
        missing.emplace_back(Record{{"ClipName", BytesFromText(segment.clipName)},
                                    {"P2SerialNo", BytesFromText(segment.serialNo)}});
    }
    return missing;
}

std::string MissingText(const MissingSegment& segment) {
    std::string text = segment.clipName.IsEmpty() ? BytesFromText(segment.globalClipID)
                                                  : BytesFromText(segment.clipName);
    if (text.empty()) {
        text = "a segment without a name";
    }
    return segment.serialNo.IsEmpty()
               ? text
               : fmt::format("{} on card {}", text, BytesFromText(segment.serialNo));
}

std::string ReasonText(const SkippedFile& file) {
    const auto* words =
        std::find_if(std::begin(kReasons), std::end(kReasons),
                     [&](const ReasonWords& row) { return row.reason == file.reason; });
    std::string detail = BytesFromText(file.text);
    if (words == std::end(kReasons)) {
        return detail;
    }
    return detail.empty() ? words->words : fmt::format("{}: {}", words->words, detail);
}

std::string PositionText(const SkippedFile& file) {
    const std::string path = RealPath(file.path);
    return file.line > 0 ? fmt::format("{}:{}:{}", path, file.line, file.column) : path;
}

Value SkippedValue(const CardScans& scans) {
    return Content([&scans](ValueSink& sink) {
        const auto put = [&sink](const CArray<SkippedFile>& skipped) {
            for (const SkippedFile& file : skipped) {
                Put(sink, SkippedRecord(file));
            }
        };
        sink.BeginList(ListOf::Records);
        put(scans.skipped);
        for (const CardScan& scan : scans.cards) {
            put(scan.report.skipped);
        }
        sink.EndList();
    });
}

Value TakesValue(const CArray<JoinedTake>& takes) {
    return SequenceOf(takes,
                      [](ValueSink& sink, const JoinedTake& take) { Put(sink, TakeRecord(take)); });
}

void ForEachReportLine(const ScanReport& report, const TellLine& tell) {
    TellSkipped(report.skipped, tell);
    for (const Take& take : report.takes) {
        tell(TakeLine(take));
    }
}

void ForEachReportLine(const CardScans& scans, const TellLine& tell) {
    TellSkipped(scans.skipped, tell);
    for (const CardScan& scan : scans.cards) {
        TellSkipped(scan.report.skipped, tell);
    }
    for (const JoinedTake& take : scans.Takes()) {
        tell(TakeLine(take, scans.cards));
    }
}

std::int64_t CountOfLosses(const CArray<SkippedFile>& skipped) {
    return std::count_if(skipped.begin(), skipped.end(), [](const SkippedFile& file) {
        return file.reason != SkipReason::Companion;
    });
}

Status TellLosses(Console& console, const ScanReport& report, bool strict) {
    Status status = kDone;
    for (const SkippedFile& file : report.skipped) {
        if (file.reason == SkipReason::FolderUnreadable) {
            console.Message(fmt::format("nqp2: {}: cannot be read to its end ({})",
                                        PositionText(file), BytesFromText(file.text)));
            status = kFailed;
        } else if (file.reason != SkipReason::Companion) { // of which nothing is lost
            const bool isKept = file.reason == SkipReason::MissingClip;
            console.Message(fmt::format("nqp2: {}: {}", PositionText(file),
                                        isKept ? ReasonText(file)
                                               : fmt::format("skipped ({})", ReasonText(file))));
            status = strict && status == kDone ? kSkipped : status;
        }
    }
    return status;
}

} // namespace nqp2::tool
