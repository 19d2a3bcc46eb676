// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/byte_size.h"
#include "console/value.h"
#include "nqp2/clip_import.h"
#include "nqp2/command.h"
#include "nqp2/record_output.h"
#include "nqp2/scan_report_output.h"

#include "NQP2ParserU/TextBytes.h"
#include "NQP2ParserU/WorkerFields.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::tool {
namespace {

struct ImportOptions {
    std::string card;
    std::vector<std::string> words; ///< behind it: clips, or more cards
    std::vector<std::string> clips;
    ImportTarget target;
    ProgressOptions progress;
    std::string worker;
    bool all = false;
    bool take = false;
    bool noTake = false;
    bool json = false;
};

/// With clips by option, or none, all arguments are cards; and there a take goes as a whole.
ImportWish WishFrom(const ImportOptions& options) {
    if (!options.all && options.clips.empty()) {
        if (options.words.empty()) {
            throw Failure("import usage", "CLIP, --clip or --all is required",
                          "see nqp2 import --help", kUsage);
        }
        return {{options.card}, options.words, options.take ? TakeWish::Whole : TakeWish::Leave};
    }
    ImportWish wish = {{options.card}, options.clips, TakeWish::Leave};
    wish.cards.insert(wish.cards.end(), options.words.begin(), options.words.end());
    wish.takes = options.all || options.noTake ? TakeWish::Leave : TakeWish::Whole;
    return wish;
}

std::string CardFolder(const ImportPlan& plan, const PlannedClip& clip) {
    return OutputPath(plan.cards[clip.card].card.Folder());
}

Record NameRecord(const ImportPlan& plan, const PlannedClip& clip) {
    return {{"ClipName", clip.name}, {"card", CardFolder(plan, clip)}};
}

/// What the worker tells of a clip that it has imported.
Record ImportRecord(const ImportPlan& plan, const ImportedClip& one) {
    const TransferFields told(one.info);
    return {{"ClipName", BytesFromText(told.clipName)},
            {"card", CardFolder(plan, *one.clip)},
            {"files", told.files},
            {"bytes", told.bytes},
            {"written", told.writtenBytes},
            {"video", told.videoBytes},
            {"audio", told.audioBytes},
            {"metadata", told.metadataBytes},
            {"other", told.otherBytes},
            {"incomplete", (told.flags & kWasIncomplete) != 0}};
}

void PrintImport(Console& console, const ImportPlan& plan, const ImportedClip& one) {
    const TransferFields told(one.info);
    const std::uint64_t there = told.bytes - told.writtenBytes;
    const std::string rest = there == 0 ? "" : fmt::format(" ({} were there already)", there);
    console.WriteLine(fmt::format("{}: {} files, {} bytes{}", plan.LabelOf(*one.clip), told.files,
                                  told.bytes, rest));
    console.Finish(); // the next clip may take long
}

void PrintRun(Console& console, const ImportPlan& plan, const ImportRun& run) {
    List clips;
    List failed;
    List left;
    for (const ImportedClip& one : run.clips) {
        if (one.fate == ClipFate::Imported) {
            clips.emplace_back(ImportRecord(plan, one));
        } else if (one.fate == ClipFate::Left) {
            left.emplace_back(NameRecord(plan, *one.clip));
        } else {
            Record record = NameRecord(plan, *one.clip);
            record.push_back({"failure", one.failure});
            failed.emplace_back(std::move(record));
        }
    }
    List others;
    List missing;
    for (const PartialTake& take : plan.takes) {
        for (const PlannedClip& clip : take.left) {
            others.emplace_back(NameRecord(plan, clip));
        }
        List ofTake = MissingRecords(take.missing);
        std::move(ofTake.begin(), ofTake.end(), std::back_inserter(missing));
    }
    PrintJson(console, Record{{"clips", clips},
                              {"failed", failed},
                              {"left", left},
                              {"otherSegments", others},
                              {"missingSegments", missing}});
}

/// The first of the names, and how many there are more.
std::string NamesOf(const std::vector<std::string>& names) {
    constexpr std::size_t kShown = 8;
    const auto end = names.begin() + static_cast<std::ptrdiff_t>(std::min(kShown, names.size()));
    const std::string shown = fmt::format("{}", fmt::join(names.begin(), end, ", "));
    return names.size() <= kShown ? shown
                                  : fmt::format("{} and {} more", shown, names.size() - kShown);
}

template <class Clips, class Name>
std::string NamesOf(const Clips& clips, const Name& nameOf) {
    std::vector<std::string> names;
    std::transform(std::begin(clips), std::end(clips), std::back_inserter(names), nameOf);
    return NamesOf(names);
}

std::string TakeText(const ImportPlan& plan, const PartialTake& take) {
    const auto label = [&plan](const PlannedClip& clip) { return plan.LabelOf(clip); };
    std::string text = fmt::format("take of {}:", NamesOf(take.taken, label));
    if (!take.left.empty()) {
        text += fmt::format(" {} left out", NamesOf(take.left, label));
    }
    if (!take.missing.IsEmpty()) {
        text += fmt::format("{} {} on none of the cards", take.left.empty() ? "" : ",",
                            NamesOf(take.missing, MissingText));
    }
    return text;
}

/// What a person has to know of what is planned.
void TellPlan(RunProgress& shown, const ImportPlan& plan) {
    for (const PartialTake& take : plan.takes) {
        shown.Remark(TakeText(plan, take) + (take.left.empty() ? "" : " (--take takes it whole)"));
    }
    for (const SkippedFile& folder : plan.unread) {
        shown.Fail(PositionText(folder), "", "cannot be read to its end");
    }
}

/// What is done and what is not, of a run of several.
void TellEnd(TransferWatch& watch, const ImportPlan& plan, const ImportRun& run) {
    const auto label = [&plan](const ImportedClip* one) { return plan.LabelOf(*one->clip); };
    std::string text =
        fmt::format("{} of {} clips imported, {}", run.With(ClipFate::Imported).size(),
                    run.clips.size(), BytesText(watch.Done().bytes));
    constexpr std::pair<ClipFate, const char*> kOthers[] = {{ClipFate::Refused, "failed"},
                                                            {ClipFate::Left, "not begun"}};
    for (const auto& [fate, words] : kOthers) {
        if (const auto others = run.With(fate); !others.empty()) {
            text += fmt::format("; {}: {}", words, NamesOf(others, label));
        }
    }
    watch.Shown().Remark(text);
}

Status StatusOf(const ImportPlan& plan, const ImportRun& run, const ImportWish& wish) {
    // Who asks for whole takes is told when one is not.
    const bool lacksSegments =
        wish.takes == TakeWish::Whole &&
        std::any_of(plan.takes.begin(), plan.takes.end(),
                    [](const PartialTake& take) { return !take.missing.IsEmpty(); });
    if (run.hasLostWorker) {
        return kWorkerFailed;
    }
    return run.IsEvery() && plan.unread.empty() && !lacksSegments ? kDone : kFailed;
}

Status RunImport(Console& console, const ImportOptions& options) {
    const ImportWish wish = WishFrom(options);
    const ImportPlan plan = PlanImport(console, wish);
    TransferWatch watch(options.progress);
    WorkerSession session(options.worker);
    watch.Follow(*session.operator->());
    TellPlan(watch.Shown(), plan);
    const ImportRun run =
        ImportClips(session, watch, plan, options.target, [&](const ImportedClip& one) {
            if (!options.json) {
                PrintImport(console, plan, one);
            }
        });
    if (options.json) {
        PrintRun(console, plan, run);
        console.Finish();
    }
    const bool isSet = options.all || wish.takes == TakeWish::Whole;
    if (isSet || (run.clips.size() > 1 && !run.IsEvery())) {
        TellEnd(watch, plan, run);
    }
    return StatusOf(plan, run, wish);
}

} // namespace

void AddImportCommand(const Command& program) {
    const Command command =
        program.Add("import", "Copy whole clips off cards and verify the copies");
    ImportOptions& options = command.Runs(RunImport);
    command.CardArgument(options.card);
    command
        .Argument("CLIP", options.words,
                  "Names of clips of that card, in any letter case; with --all\n"
                  "or --clip, more cards")
        .Required(false);
    command
        .ValueOption("--to", options.target.folder, "FOLDER",
                     "The folder that receives a CONTENTS tree")
        .Required();
    const Option all = command.Flag("--all", options.all, "Import every clip of the cards");
    const Option clip =
        command
            .RepeatedOption("--clip", options.clips, "CLIP",
                            "A clip of one of the cards, with all of its take (repeatable)")
            .Excludes(all);
    const Option noTake = command.Flag("--no-take", options.noTake, "With --clip, the clip alone");
    noTake.Needs(clip);
    command.Flag("--take", options.take, "Import all of the takes that the named clips are of")
        .Excludes(all)
        .Excludes(noTake);
    command.IncompleteFlag(options.target.incomplete);
    command.JsonFlag(options.json);
    command.AddProgressOptions(options.progress);
    command.WorkerOption(options.worker);
    command.Example("nqp2 import /media/card 0001AB 0002CD --to footage");
    command.Statuses({{"0", "all that was asked for is there"},
                      {"1", "a clip, a card or a part of a take is not"},
                      {"2", "wrong usage"},
                      {"3", "the worker failed"}});
    command.Note("  nqp2 import CARD CLIP...          clips of one card\n"
                 "  nqp2 import CARD... --all         all clips of cards\n"
                 "  nqp2 import CARD... --clip CLIP   a clip with its take, over all these cards");
}

} // namespace nqp2::tool
