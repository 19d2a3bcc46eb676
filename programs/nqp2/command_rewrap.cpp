// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_scan.h"
#include "nqp2/clip_choice.h"
#include "nqp2/command.h"
#include "nqp2/rewrap/targets.h"
#include "nqp2/rewrap_document.h"
#include "nqp2/scan_report_output.h"
#include "nqp2/timeline_lists.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace nqp2::tool {
namespace {

namespace fs = std::filesystem;
using rewrap::Plan;

struct RewrapOptions {
    std::vector<std::string> cards;
    std::string clip;
    std::string editList;
    std::string playlist;
    std::string output;
    std::string folder;
    std::string form;
    rewrap::PlanOptions plan;
    ProgressOptions progress;
    std::string worker;
    bool all = false;
    bool noTake = false;
    bool dryRun = false;
    bool json = false;

    /// Whether one file is asked for, not several in a folder.
    [[nodiscard]] bool IsOne() const { return !clip.empty() || !editList.empty(); }
};

[[noreturn]] void ThrowUsage(const std::string& problem) {
    throw Failure("rewrap usage", problem, "see nqp2 rewrap --help", kUsage);
}

void RequireSense(const RewrapOptions& options) {
    const int wishes = (options.clip.empty() ? 0 : 1) + (options.editList.empty() ? 0 : 1) +
                       (options.playlist.empty() ? 0 : 1) + (options.all ? 1 : 0);
    if (wishes != 1) {
        ThrowUsage("one of --clip, --edl, --playlist and --all is required");
    }
    if (options.IsOne() ? options.output.empty() : options.folder.empty()) {
        ThrowUsage(options.IsOne() ? "-o is required" : "--to is required");
    }
    if (options.IsOne() ? !options.folder.empty() : !options.output.empty()) {
        ThrowUsage(options.IsOne() ? "--to is for several files" : "-o is for one file");
    }
    if (!options.IsOne() && !(options.plan.title.empty() && options.plan.timecode.empty())) {
        ThrowUsage("--title and --timecode are for one file");
    }
    if (options.noTake && !options.editList.empty()) {
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

/// A list, with all those of its card.
struct FoundList {
    const CardScan* card = nullptr;
    std::unique_ptr<TimelineLists> lists;
    const tag_P2EDL* list = nullptr;
};

/// Throws the failure to report for a name that none or several of the cards of a kind have.
FoundList FindList(Console& console, const CardScans& scans, CardKind kind,
                   const std::string& name) {
    const char* const what = kind == CardKind::P2 ? "edit list" : "playlist";
    FoundList found;
    for (const CardScan& scan : scans.cards) {
        if (scan.kind != kind) {
            continue;
        }
        auto lists = std::make_unique<TimelineLists>(scan);
        const tag_P2EDL* const list = lists->Find(name);
        if (list == nullptr) {
            TellLosses(console, lists->Report(), false);
        } else if (found.list != nullptr) {
            throw Failure(name, fmt::format("is the {} of several cards", what),
                          fmt::format("give {} or {}", found.card->label, scan.label));
        } else {
            found = {&scan, std::move(lists), list};
        }
    }
    if (found.list == nullptr) {
        throw Failure(
            name, fmt::format("is no {} of the card{}", what, scans.cards.size() == 1 ? "" : "s"),
            "");
    }
    return found;
}

/// Finds what is to be made.
class Planner {
public:
    Planner(Console& console, const RewrapOptions& options, const CardScans& scans)
        : m_console(console), m_options(options), m_scans(scans), m_reader(scans) {}

    std::vector<Plan> Make() {
        if (!m_options.editList.empty()) {
            const FoundList found = FindList(m_console, m_scans, CardKind::P2, m_options.editList);
            return {PlanEditList(m_reader, m_scans, *found.list, m_options.plan)};
        }
        const rewrap::Recordings recordings(m_scans, m_options.noTake);
        if (!m_options.clip.empty()) {
            return {PlanRecording(m_reader, recordings.Of(NamedClipOfAll()), m_options.plan)};
        }
        return m_options.all ? OfAll(recordings) : OfPlaylist(recordings);
    }

    std::vector<Loss> TakeLosses() { return std::move(m_losses); }

private:
    const _tag_P2Clip& NamedClipOfAll() const {
        const _tag_P2Clip* const clip = NamedClip(m_scans, m_options.clip);
        if (clip == nullptr) {
            throw Failure(m_options.clip, "is no clip of " + m_scans.cards.front().card.Folder(),
                          "`nqp2 clips --report` lists the clips");
        }
        return *clip;
    }

    std::vector<Plan> OfAll(const rewrap::Recordings& recordings) {
        for (const CardScan& scan : m_scans.cards) {
            AddUnread(scan);
        }
        return PlanRecordings(m_reader, recordings.All(), m_options.plan);
    }

    /// Files of which nobody knows what clips they tell of.
    void AddUnread(const CardScan& scan) {
        constexpr SkipReason kNoLoss[] = {SkipReason::Companion, SkipReason::NoClipContent,
                                          SkipReason::UnsafeName};
        for (const SkippedFile& file : scan.report.skipped) {
            if (std::find(std::begin(kNoLoss), std::end(kNoLoss), file.reason) ==
                std::end(kNoLoss)) {
                m_losses.push_back({PositionText(file), ReasonText(file)});
            }
        }
    }

    std::vector<Plan> OfPlaylist(const rewrap::Recordings& recordings) {
        const FoundList found = FindList(m_console, m_scans, CardKind::Avchd, m_options.playlist);
        const rewrap::PlaylistRecordings shown = RecordingsOf(*found.list, *found.card, recordings);
        const std::string name = BytesFromText(found.list->Name);
        if (shown.lostFrames > 0) {
            m_losses.push_back(
                {name, fmt::format("{} of its frames are of clips that are not on the card",
                                   shown.lostFrames)});
        }
        if (!shown.cut.empty()) {
            m_console.Message(fmt::format("nqp2: {}: shows only a part of {}: the files have all "
                                          "of each recording",
                                          name, fmt::join(shown.cut, ", ")));
        }
        return PlanRecordings(m_reader, shown.list, m_options.plan);
    }

    Console& m_console;
    const RewrapOptions& m_options;
    const CardScans& m_scans;
    rewrap::EssenceReader m_reader;
    std::vector<Loss> m_losses;
};

/// What a person has to know before anything is written.
void TellPlans(RunProgress& shown, const RewrapRun& run, const std::vector<Loss>& losses) {
    for (const Loss& loss : losses) {
        shown.Fail(loss.name, "", loss.reason);
    }
    for (const RewrappedFile& file : run.files) {
        for (const std::string& remark : file.plan->remarks) {
            shown.Remark(fmt::format("{}: {}", file.plan->name, remark));
        }
        if (!file.plan->IsPossible()) {
            shown.Fail(file.plan->name, "", fmt::format("not written ({})", file.failure));
        }
    }
}

/// The first of the names, and how many there are more.
std::string NamesOf(const std::vector<const RewrappedFile*>& files) {
    constexpr std::size_t kShown = 8;
    std::vector<std::string> names;
    for (const RewrappedFile* const file : files) {
        if (names.size() < kShown) {
            names.push_back(file->plan->name);
        }
    }
    return fmt::format("{}{}", fmt::join(names, ", "),
                       files.size() <= kShown ? ""
                                              : fmt::format(" and {} more", files.size() - kShown));
}

void TellEnd(RunProgress& shown, const RewrapRun& run) {
    std::string text =
        fmt::format("{} of {} files written", run.With(FileFate::Written).size(), run.files.size());
    constexpr std::pair<FileFate, const char*> kOthers[] = {{FileFate::Refused, "failed"},
                                                            {FileFate::Left, "not begun"}};
    for (const auto& [fate, words] : kOthers) {
        if (const auto others = run.With(fate); !others.empty()) {
            text += fmt::format("; {}: {}", words, NamesOf(others));
        }
    }
    shown.Remark(text);
}

void MakeFolder(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw Failure(folder, "cannot be made", error.message());
    }
}

Status RunPlans(Console& console, const RewrapOptions& options, TransferWatch& watch,
                RewrapRun& run, const std::vector<Loss>& losses) {
    if (!options.IsOne()) {
        MakeFolder(options.folder);
    }
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
    if (!options.IsOne()) {
        TellEnd(watch.Shown(), run);
    }
    const bool isEvery = run.With(FileFate::Written).size() == run.files.size();
    return run.hasLostWorker ? kWorkerFailed : isEvery && losses.empty() ? kDone : kFailed;
}

Status RunRewrap(Console& console, const RewrapOptions& options) {
    RequireSense(options);
    const rewrap::Form& form = FormOf(options);
    ScanOptions scan;
    scan.cards = options.cards;
    scan.worker = options.worker;
    scan.withFiles = true;
    scan.entry = {kP2Cards | kAvchdCards};
    const CardScans scans = ScanCards(console, scan);
    Planner planner(console, options, scans);
    std::vector<Plan> plans = planner.Make();
    const std::vector<Loss> losses = planner.TakeLosses();
    if (options.IsOne()) {
        SetTarget(plans.front(), form, options.output);
    } else {
        SetTargets(plans, form, options.folder);
    }
    RewrapRun run = NewRun(plans);
    TransferWatch watch(options.progress);
    TellPlans(watch.Shown(), run, losses);
    Status status = run.With(FileFate::Refused).empty() && losses.empty() ? kDone : kFailed;
    if (!options.dryRun) {
        status = RunPlans(console, options, watch, run, losses);
    } else if (!options.json) {
        PrintPlans(console, run);
    }
    if (options.json) {
        PrintRewrap(console, run, losses);
        console.Finish();
    }
    return status;
}

void AddSourceOptions(const Command& command, RewrapOptions& options) {
    command.CardArguments(options.cards);
    command.ValueOption("--clip", options.clip, "CLIP",
                        "A clip of one of the cards, with all of its take");
    command.Flag("--no-take", options.noTake, "Each clip alone");
    command.ValueOption("--edl", options.editList, "NAME",
                        "An edit list of one of the cards, cut by cut");
    command.Flag("--close-gaps", options.plan.closeGaps,
                 "With --edl, events come right behind each other");
    command.ValueOption("--playlist", options.playlist, "NAME",
                        "The recordings of a playlist, a file for each");
    command.Flag("--all", options.all, "The recordings of the cards, a file for each");
}

void AddTargetOptions(const Command& command, RewrapOptions& options) {
    command.ValueOption("-o,--output", options.output, "FILE",
                        "The file to write, which must not be there");
    command.ValueOption("--to", options.folder, "FOLDER", "The folder that receives several files");
    command
        .ValueOption("-f,--form", options.form, "FORM",
                     "mov, mxf, mkv or mp4; by the file's suffix if left out, else mov")
        .OneOf(rewrap::FormNames());
    command.Flag("--one-track", options.plan.oneTrack,
                 "All channels in one track instead of one each");
    command.ValueOption("--title", options.plan.title, "TEXT", "Instead of the clip's own");
    command.ValueOption("--reel", options.plan.reel, "NAME", "Instead of the clip's name");
    command.ValueOption("--timecode", options.plan.timecode, "TC",
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
