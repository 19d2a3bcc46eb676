// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_scan.h"
#include "nqp2/command.h"
#include "nqp2/output_folder.h"
#include "nqp2/rewrap/targets.h"
#include "nqp2/rewrap_document.h"
#include "nqp2/rewrap_plans.h"

#include "NQP2ParserU/TextBytes.h"
#include "NQP2ParserU/WholeFile.h"

#include <fmt/format.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace nqp2::tool {
namespace {

namespace fs = std::filesystem;

struct RewrapOptions {
    std::vector<std::string> cards;
    RewrapWish wish;
    std::string output;
    std::string folder;
    std::string form;
    ProgressOptions progress;
    std::string worker;
    bool dryRun = false;
    bool json = false;

    /// Whether one file is asked for, not several in a folder.
    [[nodiscard]] bool IsOne() const { return !wish.clip.empty() || !wish.editList.empty(); }
    /// Where they go.
    [[nodiscard]] std::string Folder() const {
        const std::string above = fs::path(output).parent_path().native();
        return !IsOne() ? folder : above.empty() ? "." : above;
    }
    /// What it is called that files are asked for of.
    [[nodiscard]] std::string Subject() const {
        return wish.all ? cards.front() : wish.clip + wish.editList + wish.playlist;
    }
};

[[noreturn]] void ThrowUsage(const std::string& problem) {
    throw Failure("rewrap usage", problem, "see nqp2 rewrap --help", kUsage);
}

void RequireSense(const RewrapOptions& options) {
    const int wishes = (options.wish.clip.empty() ? 0 : 1) +
                       (options.wish.editList.empty() ? 0 : 1) +
                       (options.wish.playlist.empty() ? 0 : 1) + (options.wish.all ? 1 : 0);
    if (wishes != 1) {
        ThrowUsage("one of --clip, --edl, --playlist and --all is required");
    }
    if (options.IsOne() ? options.output.empty() : options.folder.empty()) {
        ThrowUsage(options.IsOne() ? "-o is required" : "--to is required");
    }
    if (options.IsOne() ? !options.folder.empty() : !options.output.empty()) {
        ThrowUsage(options.IsOne() ? "--to is for several files" : "-o is for one file");
    }
    if (!options.IsOne() &&
        !(options.wish.plan.title.empty() && options.wish.plan.timecode.empty())) {
        ThrowUsage("--title and --timecode are for one file");
    }
    if (options.wish.noTake && !options.wish.editList.empty()) {
        ThrowUsage("--no-take is for clips");
    }
}

/// The form that was asked for, else that of the file's suffix; the first for a folder.
const rewrap::Form& FormOf(const RewrapOptions& options) {
    if (!options.form.empty()) {
        return *rewrap::FindForm(options.form);
    }
    if (!options.IsOne()) {
        return rewrap::kForms[0];
    }
    const std::string suffix = fs::path(options.output).extension().native();
    const rewrap::Form* const form = rewrap::FindForm(suffix.substr(suffix.empty() ? 0 : 1));
    if (form == nullptr) {
        throw Failure(options.output, "its suffix names no form",
                      fmt::format("give -f {}", fmt::join(rewrap::FormNames(), ", ")), kUsage);
    }
    return *form;
}

void MakeFiles(Console& console, const RewrapOptions& options, TransferWatch& watch,
               RewrapRun& run) {
    if (run.With(FileFate::Left).empty()) {
        return; // none is possible
    }
    if (!options.IsOne()) {
        MakeFolder(options.folder);
    }
    {
        WorkerSession session(options.worker);
        watch.Follow(*session.operator->());
        RewrapFiles(session, watch, run, [&](const RewrappedFile& file) {
            for (const CString& remark : file.result.remarks) {
                watch.Shown().Remark(fmt::format("{}: {}", file.plan->name, BytesFromText(remark)));
            }
            if (!options.json) {
                PrintRewrapped(console, file);
            }
        });
    }
    if (run.hasLostWorker) { // which is gone by now
        RemoveAbandonedFiles(options.Folder());
    }
}

ScanOptions ScanFor(const RewrapOptions& options) {
    ScanOptions scan;
    scan.cards = options.cards;
    scan.worker = options.worker;
    scan.withFiles = true;
    scan.entry = {kP2Cards | kAvchdCards};
    return scan;
}

RewrapPlans PlansFor(Console& console, const CardScans& scans, const RewrapOptions& options,
                     const rewrap::Form& form) {
    RewrapPlans made = PlanRewrap(console, scans, options.wish);
    if (options.IsOne()) {
        SetTarget(made.plans.front(), form, options.output);
    } else {
        SetTargets(made.plans, form, options.folder);
    }
    return made;
}

/// What throws is in the document as well as told.
template <class Work, class Print>
auto WithDocument(const RewrapOptions& options, Work work, Print print) {
    try {
        return work();
    } catch (const Failure& failure) {
        if (options.json) {
            print(failure);
        }
        throw;
    }
}

/// A document about nothing but why there is no file.
void PrintRefusal(Console& console, const RewrapOptions& options, const Failure& failure) {
    rewrap::Plan plan;
    plan.name = options.Subject();
    plan.failure = failure.what();
    if (options.IsOne()) {
        PrintRewrap(console, NewRun({plan}), {});
    } else {
        PrintRewrap(console, {}, {{plan.name, plan.failure}});
    }
}

Status RunRewrap(Console& console, const RewrapOptions& options) {
    RequireSense(options);
    const rewrap::Form& form = FormOf(options);
    const CardScans scans = ScanCards(console, ScanFor(options));
    const RewrapPlans made = WithDocument(
        options, [&] { return PlansFor(console, scans, options, form); },
        [&](const Failure& failure) { PrintRefusal(console, options, failure); });
    RewrapRun run = NewRun(made.plans);
    TransferWatch watch(options.progress);
    TellPlans(watch.Shown(), run, made.losses);
    const auto print = [&] { PrintRewrap(console, run, made.losses); };
    if (!options.dryRun) {
        WithDocument(
            options, [&] { MakeFiles(console, options, watch, run); },
            [&](const Failure&) { print(); });
    } else if (!options.json) {
        PrintPlans(console, run);
    }
    if (options.json) {
        print();
    }
    if (!options.dryRun && !options.IsOne()) {
        TellEnd(watch.Shown(), run);
    }
    const bool isAll = run.With(FileFate::Refused).empty() && made.losses.empty() &&
                       (options.dryRun || run.With(FileFate::Left).empty());
    return run.hasLostWorker ? kWorkerFailed : isAll ? kDone : kFailed;
}

void AddSourceOptions(const Command& command, RewrapOptions& options) {
    command.CardArguments(options.cards);
    command.ValueOption("--clip", options.wish.clip, "CLIP",
                        "A clip of one of the cards, with all of its take");
    command.Flag("--no-take", options.wish.noTake, "Each clip alone");
    const Option edl = command.ValueOption("--edl", options.wish.editList, "LIST",
                                           "An edit list of one of the cards, cut by cut");
    command.Flag("--close-gaps", options.wish.plan.closeGaps, "Events come right behind each other")
        .Needs(edl);
    command.ValueOption("--playlist", options.wish.playlist, "LIST",
                        "The recordings of a playlist, a file for each");
    command.Flag("--all", options.wish.all, "The recordings of the cards, a file for each");
}

void AddTargetOptions(const Command& command, RewrapOptions& options) {
    command.ValueOption("-o,--output", options.output, "FILE",
                        "The file to write, which must not be there");
    command.ValueOption("--to", options.folder, "FOLDER", "The folder that receives several files");
    command
        .ValueOption("-f,--form", options.form, "FORM",
                     "mov, mxf, mkv or mp4; by the file's suffix if left out, else mov")
        .OneOf(rewrap::FormNames());
    command.Flag("--one-track", options.wish.plan.oneTrack,
                 "All channels in one track instead of one each");
    command.ValueOption("--title", options.wish.plan.title, "TEXT", "Instead of the clip's own");
    command.ValueOption("--reel", options.wish.plan.reel, "NAME", "Instead of the clip's name");
    command.ValueOption("--timecode", options.wish.plan.timecode, "TC",
                        "Of the first frame; ; before the frames for drop frame");
    command.Flag("--dry-run", options.dryRun, "Show what would be made of what, and write nothing");
}

} // namespace

void AddRewrapCommand(const Command& program) {
    const Command command =
        program.Add("rewrap", "Make one playable file of a recording, without encoding it anew");
    RewrapOptions& options = command.Runs(RunRewrap);
    AddSourceOptions(command, options);
    AddTargetOptions(command, options);
    command.JsonFlag(options.json);
    command.AddProgressOptions(options.progress);
    command.WorkerOption(options.worker);
    command.Example("nqp2 rewrap /media/card --clip 0001AB -o take.mov");
    command.Note("  nqp2 rewrap CARD... --clip CLIP -o FILE       a clip with its take\n"
                 "  nqp2 rewrap CARD... --edl NAME -o FILE        an edit list\n"
                 "  nqp2 rewrap CARD... --playlist NAME --to FOLDER\n"
                 "  nqp2 rewrap CARD... --all --to FOLDER         all recordings of cards");
}

} // namespace nqp2::tool
