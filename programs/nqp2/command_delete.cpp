// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/byte_size.h"
#include "console/run_progress.h"
#include "nqp2/card_entry.h"
#include "nqp2/clip_hint.h"
#include "nqp2/clip_sizes.h"
#include "nqp2/command.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/Interrupt.h"
#include "NQP2ParserU/Terminal.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <iostream>
#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

struct DeleteOptions {
    std::string card;
    std::vector<std::string> clips;
    std::string worker;
    bool yes = false;
    bool dryRun = false;
};

void RequireQuestion(const DeleteOptions& options) {
    if (!options.yes && !options.dryRun && !(IsTerminal(stdin) && IsTerminal(stderr))) {
        throw Failure("delete", "asks on a terminal, and there is none",
                      "nothing is removed; --yes removes without asking, --dry-run shows what",
                      kUsage);
    }
}

/// What would go.
struct Going {
    FileSum sum;
    std::vector<std::string> unknown; ///< names of no clip
};

Going ShowFiles(Console& console, const Card& card, const std::vector<std::string>& clips) {
    ClipSizes sizes(card);
    Going going;
    for (const std::string& clip : clips) {
        const FileSum size = sizes.Of(clip);
        if (size.files == 0) {
            going.unknown.push_back(clip);
            continue;
        }
        going.sum += size;
        console.WriteLine(fmt::format("{}: {} files, {} bytes", clip, size.files, size.bytes));
        for (const ClipFile& file : sizes.FilesOf(clip)) {
            console.WriteLine(fmt::format("  {}", RealPath(file.path)));
        }
    }
    console.Finish();
    return going;
}

bool IsConfirmed(const FileSum& sum) {
    std::cerr << fmt::format("Remove {} files, {}? [y/N] ", sum.files, BytesText(sum.bytes))
              << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

void Delete(WorkerSession& session, const Card& card, const CString& root,
            const std::string& clip) {
    // Without a worker the clip would still leave the ingest list.
    session.RequireNoFailure(clip, "not deleted");
    session->DeleteFileW(TextFromBytes(clip), root);
    session.RequireNoFailure(clip, "not deleted", [&] { return ClipHint(card, {clip}); });
}

void DeleteAll(const DeleteOptions& options, const Card& card) {
    const CString root = WorkerPath(card.Argument());
    CatchInterrupt();
    WorkerSession session(options.worker);
    for (const std::string& clip : options.clips) {
        if (WasInterrupted()) {
            throw Failure(clip, "not deleted", "cancelled; what was named before it is");
        }
        Delete(session, card, root, clip);
    }
}

Status RunDelete(Console& console, const DeleteOptions& options) {
    const Card card = EnterCard(console, options.card);
    card.RequireContents();
    RequireQuestion(options);
    const auto& [sum, unknown] = ShowFiles(console, card, options.clips);
    if (options.dryRun) {
        for (const std::string& clip : unknown) {
            console.Message(fmt::format("nqp2: {}: {}", clip,
                                        WithHint("there is no such clip", ClipHint(card, {clip}))));
        }
        return unknown.empty() ? kDone : kFailed;
    }
    if (!options.yes && sum.files > 0 && !IsConfirmed(sum)) {
        console.Message("nqp2: nothing was removed");
        return kFailed;
    }
    DeleteAll(options, card);
    return kDone;
}

} // namespace

void AddDeleteCommand(const Command& program) {
    const Command command =
        program.Add("delete", "Delete clips with all their files, and from the ingest list");
    DeleteOptions& options = command.Runs(RunDelete);
    command.CardArgument(options.card);
    command.ClipArguments(options.clips);
    const Option yes = command.Flag("-y,--yes", options.yes, "Remove without asking");
    command.Flag("--dry-run", options.dryRun, "Show what would be removed, and remove nothing")
        .Excludes(yes);
    command.WorkerOption(options.worker);
    command.Example("nqp2 delete /media/card 0001AB");
    command.Statuses({{"0", "done"},
                      {"1", "a clip is not known or was not removed"},
                      {"2", "wrong usage, or nobody to ask: nothing was removed"},
                      {"3", "the worker failed"}});
    command.Note("It shows the files and asks. Where there is no terminal it needs --yes.");
}

} // namespace nqp2::tool
