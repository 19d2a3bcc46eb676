// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_scan.h"
#include "nqp2/command.h"
#include "nqp2/report/page.h"
#include "nqp2/report/pictures.h"

#include "NQP2ParserU/WholeFile.h"

#include <fmt/chrono.h>
#include <fmt/core.h>

#include <algorithm>
#include <ctime>
#include <future>
#include <string>
#include <utility>

namespace nqp2::tool {
namespace {

struct ReportOptions {
    ScanOptions scan;
    std::string page;
};

/// What the cards tell; the worker looks at pictures meanwhile.
report::PageContents ReadPage(const CardScans& scans, const std::string& worker) {
    auto asked =
        std::async(std::launch::async, [&] { return report::TakePictures(scans, worker); });
    report::PageContents page;
    page.cards = report::ReadContents(scans);
    page.takes = scans.Takes();
    page.skipped = scans.skipped;
    page.made = fmt::format("{:%Y-%m-%d %H:%M}", fmt::localtime(std::time(nullptr)));
    report::Pictures pictures = asked.get();
    page.remark = pictures.remark.empty() ? "" : "Pictures are missing: " + pictures.remark;
    for (report::CardContents& card : page.cards) {
        for (report::ClipContents& clip : card.clips) {
            if (const auto found = pictures.byClip.find(clip.clip);
                found != pictures.byClip.end()) {
                clip.picture = std::move(found->second);
            }
        }
    }
    return page;
}

void TellPage(Console& console, const report::PageContents& page) {
    std::int64_t clips = 0;
    std::int64_t bare = 0;
    for (const report::CardContents& card : page.cards) {
        clips += static_cast<std::int64_t>(card.clips.size());
        bare += std::count_if(
            card.clips.begin(), card.clips.end(),
            [](const report::ClipContents& clip) { return clip.picture.jpeg.empty(); });
    }
    if (!page.remark.empty()) {
        console.Message("nqp2: " + page.remark);
    }
    console.Message(fmt::format("{} clip{}{}", clips, clips == 1 ? "" : "s",
                                bare == 0 ? "" : fmt::format(", {} without a picture", bare)));
}

Status RunReport(Console& console, const ReportOptions& options) {
    // Not taken apart, as in the listing of clips.
    static const CardScans& scans = *new CardScans(ScanCards(console, options.scan));
    static const report::PageContents& page =
        *new report::PageContents(ReadPage(scans, options.scan.worker));
    const std::string text = report::MakePage(page);
    if (options.page == "-") {
        console.Write(text);
        console.Finish();
    } else if (const std::string reason = WriteWholeFile(options.page, text); !reason.empty()) {
        throw Failure(options.page, "cannot be written", reason);
    }
    TellPage(console, page);
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
                     "The file to write, .html; - for standard output")
        .Required();
    command.Flag("--recursive", options.scan.recursive,
                 "Show every card in these folders and below");
    command.WorkerOption(options.scan.worker);
    command.Example("nqp2 report /media/card -o card.html");
}

} // namespace nqp2::tool
