// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_scan.h"
#include "nqp2/clip_fields.h"
#include "nqp2/clip_order.h"
#include "nqp2/clip_table.h"
#include "nqp2/command.h"
#include "nqp2/record_output.h"
#include "nqp2/scan_report_output.h"
#include "nqp2/value.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace nqp2::tool {
namespace {

struct ClipsOptions {
    ScanOptions scan;
    std::string sort = "name";
    OutputForm form;
    bool report = false;
    bool strict = false;
};

/// What was scanned, and whether as one card or as a list of cards.
struct Scanned {
    const CardScans& scans;
    bool areSeveral;

    [[nodiscard]] const CardScan& Only() const { return scans.cards.front(); }
};

std::string KindName(CardKind kind) {
    return kind == CardKind::P2 ? "p2" : "avchd";
}

Record ClipsDocument(const Sequence& clips, const Scanned& scanned, bool report) {
    if (scanned.areSeveral) {
        return {{"clips", clips}};
    }
    const CardScan& scan = scanned.Only();
    Record document = {
        {"card", scan.card.Folder()}, {"kind", KindName(scan.kind)}, {"clips", clips}};
    if (report) {
        document.push_back({"skipped", SkippedValue(scan.report)});
        document.push_back({"takes", TakesValue(scan.report)});
    }
    return document;
}

/// Says how much was left out to a user who did not ask for the report.
void WarnOfSkipped(Console& console, const CardScan& scan) {
    const std::int64_t count = CountOfLosses(scan.report.skipped);
    if (count > 0) {
        console.Message(fmt::format("nqp2: {}: {} file{} skipped or incomplete (--report names {})",
                                    scan.card.Folder(), count, count == 1 ? "" : "s",
                                    count == 1 ? "it" : "them"));
    }
}

void WarnOfSkipped(Console& console, const CardScans& scans) {
    for (const SkippedFile& file : scans.skipped) {
        console.Message(
            fmt::format("nqp2: {}: skipped ({})", PositionText(file), ReasonText(file)));
    }
    for (const CardScan& scan : scans.cards) {
        WarnOfSkipped(console, scan);
    }
}

void PrintReport(Console& console, const Scanned& scanned, bool aside) {
    const TellLine tell = [&](const std::string& line) {
        if (aside) {
            console.Message(line);
        } else {
            console.WriteLine(line);
        }
    };
    if (scanned.areSeveral) {
        ForEachReportLine(scanned.scans, tell);
    } else {
        ForEachReportLine(scanned.Only().report, tell);
    }
}

void PutRow(ValueSink& sink, const Scanned& scanned, const _tag_P2Clip& clip) {
    if (scanned.areSeveral) {
        PutClipOfCard(sink, scanned.scans.CardOf(clip).label, clip);
    } else {
        PutClip(sink, clip);
    }
}

Value FreshRow(bool areSeveral) {
    return Content([areSeveral](ValueSink& sink) {
        if (areSeveral) {
            PutClipOfCard(sink, {}, {});
        } else {
            PutClip(sink, {});
        }
    });
}

void PrintClips(Console& console, const ClipsOptions& options, const Scanned& scanned) {
    const ClipOrder clips = OrderedClips(scanned.scans, options.sort);
    const Sequence rows = {clips.size(), [&](ValueSink& sink, std::size_t index) {
                               PutRow(sink, scanned, *clips[index]);
                           }};
    const CardOfClip card = [&scanned](const _tag_P2Clip& clip) {
        return scanned.scans.CardOf(clip).label;
    };
    PrintListing(console, options.form,
                 {ClipsDocument(rows, scanned, options.report), FreshRow(scanned.areSeveral), rows,
                  [&](Console& target) {
                      PrintClipTable(target, clips, scanned.areSeveral ? card : CardOfClip());
                  }});
    if (options.report && !options.form.json) {
        PrintReport(console, scanned, options.form.csv);
    }
}

bool HasLosses(const CardScans& scans) {
    return CountOfLosses(scans.skipped) > 0 ||
           std::any_of(scans.cards.begin(), scans.cards.end(),
                       [](const CardScan& scan) { return CountOfLosses(scan.report.skipped) > 0; });
}

Status RunClips(Console& console, const ClipsOptions& options) {
    // The process ends with this command: the system takes all memory back at once, faster than ten
    // thousand records can be taken apart.
    static const CardScans& scans = *new CardScans(ScanCards(console, options.scan));
    PrintClips(console, options, {scans, options.scan.AreSeveral()});
    console.Finish();
    if (!options.report) {
        WarnOfSkipped(console, scans);
    }
    return options.strict && HasLosses(scans) ? kSkipped : kDone;
}

} // namespace

void AddClipsCommand(const Command& program) {
    const Command command =
        program.Add("clips", "List all clips of cards, P2 or AVCHD, or camera folders");
    ClipsOptions& options = command.Runs(RunClips);
    command.CardArguments(options.scan.cards);
    command.Flag("--recursive", options.scan.recursive,
                 "List every card in these folders and below");
    command.JsonAndCsvFlags(options.form, ", every field", ", every field");
    command
        .ValueOption("--sort", options.sort, "ORDER",
                     "By name (the default), by shooting date or not at all")
        .OneOf(ClipOrderNames());
    command.Flag("--report", options.report,
                 "Tell what was skipped and which takes are incomplete");
    command.Flag("--keep-digit", options.scan.keepDigit,
                 "Keep ClipIdDigit as read (else it is -1)");
    command.Flag("--strict", options.strict, "Exit with 4 when a file was skipped");
    command.WorkerOption(options.scan.worker);
    command.Example("nqp2 clips /media/card --sort date --report");
}

} // namespace nqp2::tool
