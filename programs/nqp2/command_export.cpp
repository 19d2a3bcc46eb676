// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/value.h"
#include "nqp2/card_entry.h"
#include "nqp2/clip_hint.h"
#include "nqp2/clip_sizes.h"
#include "nqp2/command.h"
#include "nqp2/record_output.h"
#include "nqp2/transfer_watch.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/R8P2TransInfo.h"
#include "NQP2ParserU/TextBytes.h"
#include "NQP2ParserU/WorkerFields.h"

#include <fmt/core.h>

#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

struct ExportOptions {
    std::string folder; ///< that holds the clips
    std::vector<std::string> clips;
    std::string card; ///< that receives them
    ProgressOptions progress;
    std::string worker;
    std::string oldFolder; ///< given by the old name; then `folder` is the card
    bool incomplete = false;
    bool json = false;

    [[nodiscard]] bool AreOld() const { return !oldFolder.empty(); }
    [[nodiscard]] const std::string& Target() const { return AreOld() ? folder : card; }
    [[nodiscard]] const std::string& Source() const { return AreOld() ? oldFolder : folder; }
};

/// The clips' files together.
FileSum SizeOf(const Card& source, const std::vector<std::string>& clips) {
    ClipSizes sizes(source);
    FileSum sum;
    for (const std::string& clip : clips) {
        sum += sizes.Of(clip);
    }
    return sum;
}

/// All in one transfer.
void ExportClips(WorkerSession& session, TransferWatch& watch, stu_R8P2TransInfo& info,
                 const ExportOptions& options, const Card& source, const std::string& label) {
    CStringArray names;
    for (const std::string& clip : options.clips) {
        names.Add(TextFromBytes(clip));
    }
    watch.Begin(label);
    const bool done = session->ExportFile(&info, names) == 1;
    const TransferFields fields(info);
    watch.End(done ? FileSum{fields.files, fields.bytes} : FileSum());
    session.Require(done, label, "not exported", [&] { return ClipHint(source, options.clips); });
    watch.EndRun();
    // The session's first sentence: of clips that were taken although they are not whole.
    if (const std::string sentence = session.Sentence(); !sentence.empty()) {
        TellIncomplete(watch.Shown(), label, sentence);
    }
}

void PrintExport(Console& console, const ExportOptions& options, const Card& card,
                 const std::string& label) {
    if (!options.json) {
        console.WriteLine(fmt::format("{}: exported to {}", label, card.Folder()));
        return;
    }
    List records;
    for (const std::string& clip : options.clips) {
        records.emplace_back(Record{{"ClipName", clip}});
    }
    PrintJson(console, Record{{"card", OutputPath(card.Folder())}, {"clips", records}});
}

Status RunExport(Console& console, const ExportOptions& options) {
    if (options.Target().empty()) {
        throw Failure("export usage", "--to is required", "see nqp2 export --help", kUsage);
    }
    // An empty folder becomes a card.
    const Card card = EnterCard(console, options.Target());
    card.RequireFolder();
    const Card source = EnterCard(console, options.Source());
    source.RequireContents();
    TransferWatch watch(options.progress);
    WorkerSession session(options.worker);
    watch.Follow(*session.operator->());
    stu_R8P2TransInfo info;
    const TransferFields request(info);
    request.cardRoot = WorkerPath(card.Argument());
    request.folder = WorkerPath(source.Argument());
    request.flags = options.incomplete ? kTakeIncomplete : 0;
    const std::string label = options.clips.size() == 1
                                  ? options.clips.front()
                                  : fmt::format("{} clips", options.clips.size());
    watch.BeginRun("export", SizeOf(source, options.clips));
    ExportClips(session, watch, info, options, source, label);
    PrintExport(console, options, card, label);
    return kDone;
}

} // namespace

void AddExportCommand(const Command& program) {
    const Command command = program.Add("export", "Copy whole clips onto a card, all or none");
    ExportOptions& options = command.Runs(RunExport);
    command.Argument("FOLDER", options.folder, "The folder that holds them in a CONTENTS tree");
    command.ClipArguments(options.clips);
    const Option card =
        command.ValueOption("--to", options.card, "CARD", "The card that receives them")
            .RequiredByAnyName();
    command.ValueOption("--from", options.oldFolder, "FOLDER", "").Excludes(card).Unlisted();
    command.IncompleteFlag(options.incomplete);
    command.JsonFlag(options.json);
    command.AddProgressOptions(options.progress);
    command.WorkerOption(options.worker);
    command.Example("nqp2 export footage 0001AB 0002CD --to /media/card");
}

} // namespace nqp2::tool
