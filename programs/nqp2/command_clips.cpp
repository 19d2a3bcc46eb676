// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/clip_fields.h"
#include "nqp2/clip_order.h"
#include "nqp2/clip_table.h"
#include "nqp2/command.h"
#include "nqp2/record_output.h"
#include "nqp2/scan_report_output.h"
#include "nqp2/value.h"
#include "nqp2/worker_session.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace nqp2::tool {
namespace {

using Clip = _tag_P2Clip;

struct ClipsOptions {
    std::string card;
    std::string sort = "name";
    std::string worker;
    OutputForm form;
    bool report = false;
    bool keepDigit = false;
    bool strict = false;
};

/// A card as it was scanned.
struct Scan {
    std::string kind = "p2";
    CArray<Clip> clips;
    ScanReport report;
};

/// Nothing for a folder that holds no such media.
std::optional<Scan> ScanMedia(const CString& root) {
    Scan scan;
    scan.kind = "avchd";
    ReadyParser parser;
    const bool found = parser->LoadAVCHDClip(root, scan.clips, scan.report) == 0;
    return found ? std::optional(std::move(scan)) : std::nullopt;
}

/// Whether the scan met camera files, of which only the worker knows what they hold.
bool NeedsWorker(const Scan& scan) {
    const auto& skipped = scan.report.skipped;
    return std::any_of(skipped.begin(), skipped.end(), [](const SkippedFile& file) {
        return file.reason == SkipReason::NotDescribed;
    });
}

/// Scans once more, with a worker. Without one the camera files stay among what was skipped.
void DescribeCameraFiles(Console& console, const ClipsOptions& options, Scan& scan) {
    try {
        const Worker worker(options.worker);
        // By its whole path, which is all that a worker knows.
        scan = ScanMedia(WorkerPath(options.card)).value_or(scan);
    } catch (const Failure& failure) {
        console.Message(fmt::format("nqp2: {}", failure.what()));
    }
}

Scan ScanCard(Console& console, const Card& card, const ClipsOptions& options) {
    Scan scan;
    ReadyParser parser;
    if (parser->LoadClipEx(card.Root(), scan.clips, options.keepDigit ? 1 : 0, scan.report) == 0) {
        return scan;
    }
    std::optional<Scan> media = ScanMedia(card.Root());
    if (!media) {
        card.ThrowUnreadable();
    }
    if (NeedsWorker(*media)) {
        DescribeCameraFiles(console, options, *media);
    }
    return *std::move(media);
}

Sequence ClipSequence(const ClipOrder& clips) {
    return {clips.size(), [&clips](ValueSink& sink, std::size_t index) {
                FetchAhead(clips, index);
                PutClip(sink, *clips[index]);
            }};
}

Record ClipsDocument(const Card& card, const Sequence& clips, const Scan& scan, bool report) {
    Record document = {{"card", card.Folder()}, {"kind", scan.kind}, {"clips", clips}};
    if (report) {
        document.push_back({"skipped", SkippedValue(scan.report)});
        document.push_back({"takes", TakesValue(scan.report)});
    }
    return document;
}

/// How many files were skipped or are incomplete; companion files are no loss.
std::ptrdiff_t CountOfLosses(const ScanReport& report) {
    return std::count_if(report.skipped.begin(), report.skipped.end(), [](const SkippedFile& file) {
        return file.reason != SkipReason::Companion;
    });
}

/// Says how much was left out to a user who did not ask for the report.
void WarnOfSkipped(Console& console, const Card& card, const ScanReport& report) {
    const std::ptrdiff_t count = CountOfLosses(report);
    if (count > 0) {
        console.Message(fmt::format("nqp2: {}: {} file{} skipped or incomplete (--report names {})",
                                    card.Folder(), count, count == 1 ? "" : "s",
                                    count == 1 ? "it" : "them"));
    }
}

void PrintReport(Console& console, const ScanReport& report, bool aside) {
    ForEachReportLine(report, [&](const std::string& line) {
        if (aside) {
            console.Message(line);
        } else {
            console.WriteLine(line);
        }
    });
}

void PrintClips(Console& console, const ClipsOptions& options, const Card& card, const Scan& scan) {
    const ClipOrder clips = OrderedClips(scan.clips, options.sort);
    const Sequence rows = ClipSequence(clips);
    PrintListing(console, options.form,
                 {ClipsDocument(card, rows, scan, options.report),
                  Content([](ValueSink& sink) { PutClip(sink, {}); }), rows,
                  [&clips](Console& target) { PrintClipTable(target, clips); }});
    if (options.report && !options.form.json) {
        PrintReport(console, scan.report, options.form.csv);
    }
}

Status RunClips(Console& console, const ClipsOptions& options) {
    const Card card(options.card);
    // The process ends with this command: the system takes all memory back at once, faster than ten
    // thousand records can be taken apart.
    static const Scan& scan = *new Scan(ScanCard(console, card, options));
    PrintClips(console, options, card, scan);
    console.Finish();
    if (!options.report) {
        WarnOfSkipped(console, card, scan.report);
    }
    return options.strict && CountOfLosses(scan.report) > 0 ? kSkipped : kDone;
}

} // namespace

void AddClipsCommand(const Command& program) {
    const Command command =
        program.Add("clips", "List all clips of a card, P2 or AVCHD, or camera folder");
    ClipsOptions& options = command.Runs(RunClips);
    command.CardArgument(options.card);
    command.JsonAndCsvFlags(options.form, ", every field", ", every field");
    command
        .ValueOption("--sort", options.sort, "ORDER",
                     "By name (the default), by shooting date or not at all")
        .OneOf(ClipOrderNames());
    command.Flag("--report", options.report,
                 "Tell what was skipped and which takes are incomplete");
    command.Flag("--keep-digit", options.keepDigit, "Keep ClipIdDigit as read (else it is -1)");
    command.Flag("--strict", options.strict, "Exit with 4 when a file was skipped");
    command.WorkerOption(options.worker);
    command.Example("nqp2 clips /media/card --sort date --report");
}

} // namespace nqp2::tool
