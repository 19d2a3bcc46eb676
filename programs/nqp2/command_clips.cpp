// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/clip_fields.h"
#include "nqp2/clip_table.h"
#include "nqp2/command.h"
#include "nqp2/flat_fields.h"
#include "nqp2/scan_report_output.h"
#include "nqp2/value.h"
#include "nqp2/worker_session.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::tool {
namespace {

using Clip = _tag_P2Clip;
using Before = bool (*)(const Clip*, const Clip*);

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

bool NameBefore(const Clip* left, const Clip* right) {
    const int order = left->ClipName.CompareNoCase(right->ClipName);
    return order != 0 ? order < 0 : left->ClipName < right->ClipName;
}

/// By shooting start, clips without one last.
bool DateBefore(const Clip* left, const Clip* right) {
    const bool leftDated = !left->StartDate.IsEmpty();
    const bool rightDated = !right->StartDate.IsEmpty();
    if (leftDated != rightDated) {
        return leftDated;
    }
    return left->StartDate == right->StartDate ? NameBefore(left, right)
                                               : left->StartDate < right->StartDate;
}

struct NamedOrder {
    const char* name;
    Before before; ///< null keeps the order of the card's folder
};
constexpr NamedOrder kOrders[] = {{"date", DateBefore}, {"name", NameBefore}, {"none", nullptr}};

std::vector<std::string> OrderNames() {
    std::vector<std::string> names;
    for (const NamedOrder& order : kOrders) {
        names.emplace_back(order.name);
    }
    return names;
}

Before OrderNamed(const std::string& name) {
    return std::find_if(std::begin(kOrders), std::end(kOrders),
                        [&](const NamedOrder& order) { return order.name == name; })
        ->before;
}

ClipOrder Ordered(const CArray<Clip>& clips, Before before) {
    ClipOrder order;
    for (const Clip& clip : clips) {
        order.push_back(&clip);
    }
    if (before != nullptr) {
        std::stable_sort(order.begin(), order.end(), before);
    }
    return order;
}

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
    return {clips.size(), [&clips](std::size_t index) { return ClipRecord(*clips[index]); }};
}

void PrintClipsJson(Console& console, const Card& card, const ClipOrder& clips, const Scan& scan,
                    bool report) {
    Record document = {
        {"card", card.Folder()}, {"kind", scan.kind}, {"clips", ClipSequence(clips)}};
    if (report) {
        document.push_back({"skipped", SkippedValue(scan.report)});
        document.push_back({"takes", TakesValue(scan.report)});
    }
    PrintJson(console, document);
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
    for (const std::string& line : ReportLines(report)) {
        if (aside) {
            console.Message(line);
        } else {
            console.WriteLine(line);
        }
    }
}

void PrintClips(Console& console, const ClipsOptions& options, const Card& card, const Scan& scan) {
    const ClipOrder clips = Ordered(scan.clips, OrderNamed(options.sort));
    if (options.form.json) {
        PrintClipsJson(console, card, clips, scan, options.report);
        return;
    }
    if (options.form.csv) {
        PrintCsv(console, ClipRecord({}), ClipSequence(clips));
    } else {
        PrintClipTable(console, clips);
    }
    if (options.report) {
        PrintReport(console, scan.report, options.form.csv);
    }
}

Status RunClips(Console& console, const ClipsOptions& options) {
    const Card card(options.card);
    const Scan scan = ScanCard(console, card, options);
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
        .OneOf(OrderNames());
    command.Flag("--report", options.report,
                 "Tell what was skipped and which takes are incomplete");
    command.Flag("--keep-digit", options.keepDigit, "Keep ClipIdDigit as read (else it is -1)");
    command.Flag("--strict", options.strict, "Exit with 4 when a file was skipped");
    command.WorkerOption(options.worker);
    command.Example("nqp2 clips /media/card --sort date --report");
}

} // namespace nqp2::tool
