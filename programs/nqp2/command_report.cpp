// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/console.h"
#include "nqp2/card_scan.h"
#include "nqp2/clip_order.h"
#include "nqp2/command.h"
#include "nqp2/media_describer.h"
#include "nqp2/report/page.h"
#include "nqp2/report/pictures.h"

#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/WholeFile.h"

#include <fmt/chrono.h>
#include <fmt/core.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>

namespace nqp2::tool {
namespace {

struct ReportOptions {
    ScanOptions scan;
    std::string page;
};

/// Its worker has ended when this returns.
report::PageContents ReadPage(Console& console, const ReportOptions& options,
                              const CardScans& scans, const ClipOrder& clips) {
    MediaDescriber describer(console, options.scan.worker);
    report::PageContents page;
    page.cards = report::ReadContents(scans, clips, describer);
    page.takes = scans.Takes();
    report::MarkTakes(page.takes, page.cards);
    page.skipped = scans.skipped;
    page.made = fmt::format("{:%Y-%m-%d %H:%M}", fmt::localtime(std::time(nullptr)));
    return page;
}

/// A camera's card is not written to, whatever way leads to it.
void RequireOffTheCards(const std::string& page, const CardScans& scans) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(fs::absolute(page).parent_path(), error);
    for (const CardScan& scan : scans.cards) {
        const fs::path card = fs::weakly_canonical(PosixPath(scan.card.Top()), error);
        const auto [left, end] =
            std::mismatch(card.begin(), card.end(), folder.begin(), folder.end());
        if (page != kStandardOutput && left == card.end()) {
            throw Failure(page, "is on the card", "cards are not written to: give another folder",
                          kUsage);
        }
    }
}

void TellPage(Console& console, const ClipOrder& clips, report::Pictures& pictures) {
    const auto bare = std::count_if(clips.begin(), clips.end(), [&](const _tag_P2Clip* clip) {
        return pictures.Of(*clip).jpeg.empty();
    });
    const auto other = std::count_if(clips.begin(), clips.end(), [&](const _tag_P2Clip* clip) {
        return !pictures.IconProblem(*clip).IsEmpty();
    });
    if (const std::string& remark = pictures.Remark(); !remark.empty()) {
        console.Message("nqp2: Pictures are missing: " + remark);
    }
    const auto count = [](std::ptrdiff_t number, const char* what) {
        return number == 0 ? "" : fmt::format(", {} {}", number, what);
    };
    console.Message(fmt::format("{} clip{}{}{}", clips.size(), clips.size() == 1 ? "" : "s",
                                count(bare, "without a picture"),
                                count(other, "with another picture than the icon")));
}

Status RunReport(Console& console, const ReportOptions& options) {
    // Not taken apart, as in the listing of clips.
    ScanOptions scan = options.scan;
    scan.withFiles = true;
    static const CardScans& scans = *new CardScans(ScanCards(console, scan));
    RequireOffTheCards(options.page, scans);
    const ClipOrder clips = OrderedClips(scans, "name");
    std::optional<report::Pictures> pictures;
    const auto askForPictures = [&] { pictures.emplace(console, clips, options.scan.worker); };
    // There is one worker at a time, and what is no P2 clip's may be asked of it.
    const bool areP2 = std::all_of(clips.begin(), clips.end(),
                                   [](const _tag_P2Clip* clip) { return clip->SourceKind == 0; });
    if (areP2) {
        askForPictures();
    }
    static const report::PageContents& page =
        *new report::PageContents(ReadPage(console, options, scans, clips));
    if (!areP2) {
        askForPictures();
    }
    const std::string text = report::MakePage(page, *pictures);
    if (options.page == kStandardOutput) {
        console.Write(text);
        console.Finish();
    } else if (const std::string reason = WriteWholeFile(options.page, text); !reason.empty()) {
        throw Failure(options.page, "cannot be written", reason);
    }
    TellPage(console, clips, *pictures);
    return kDone;
}

} // namespace

void AddReportCommand(const Command& program) {
    const Command command =
        program.Add("report", "Write a page that shows what is on cards, with pictures");
    ReportOptions& options = command.Runs(RunReport);
    command.CardArguments(options.scan.cards);
    command
        .ValueOption("-o,--output", options.page, "PAGE",
                     "The file to write, .html, in the place of an older one; - for standard\n"
                     "output")
        .Required();
    command.Flag("--recursive", options.scan.recursive,
                 "Show every card in these folders and below");
    command.WorkerOption(options.scan.worker);
    command.Example("nqp2 report /media/card -o card.html");
}

} // namespace nqp2::tool
