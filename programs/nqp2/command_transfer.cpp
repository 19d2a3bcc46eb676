// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/value.h"
#include "nqp2/card_entry.h"
#include "nqp2/command.h"
#include "nqp2/record_output.h"
#include "nqp2/transfer_watch.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/R8P2TransInfo.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

struct TransferOptions {
    std::string card;
    std::vector<std::string> clips;
    std::string folder; ///< beside the card, the other end
    std::string worker;
    bool incomplete = false;
    bool json = false;
    bool quiet = false;
};

/// What the worker tells of a clip that it has imported.
Record ImportRecord(const stu_R8P2TransInfo& info) {
    return {{"ClipName", BytesFromText(info.text2)},
            {"files", info.value1},
            {"bytes", info.size1},
            {"written", info.size2},
            {"video", info.size3},
            {"audio", info.size4},
            {"metadata", info.size5},
            {"other", info.size6},
            {"incomplete", (info.value2 & kWasIncomplete) != 0}};
}

void PrintImport(Console& console, const stu_R8P2TransInfo& info) {
    const std::uint64_t there = info.size1 - info.size2;
    const std::string rest = there == 0 ? "" : fmt::format(" ({} were there already)", there);
    console.WriteLine(fmt::format("{}: {} files, {} bytes{}", BytesFromText(info.text2),
                                  info.value1, info.size1, rest));
    console.Finish(); // the next clip may take long
}

stu_R8P2TransInfo Import(WorkerSession& session, TransferWatch& watch, const Card& card,
                         const TransferOptions& options, const std::string& clip) {
    stu_R8P2TransInfo info;
    info.text1 = WorkerPath(card.Argument());
    info.text2 = TextFromBytes(clip);
    info.text3 = WorkerPath(options.folder);
    info.value2 = options.incomplete ? kTakeIncomplete : 0;
    watch.Begin(clip);
    const bool done = session->ImportFile(info) == 0;
    watch.End();
    session.Require(done, clip, "not imported");
    return info;
}

Status RunImport(Console& console, const TransferOptions& options) {
    const Card card = EnterCard(console, options.card);
    card.RequireContents();
    TransferWatch watch(options.quiet);
    WorkerSession session(options.worker);
    watch.Follow(*session.operator->());
    List records;
    for (const std::string& clip : options.clips) {
        const stu_R8P2TransInfo info = Import(session, watch, card, options, clip);
        if ((info.value2 & kWasIncomplete) != 0) {
            TellIncomplete(console, clip, session.Sentence());
        }
        if (options.json) {
            records.emplace_back(ImportRecord(info));
        } else {
            PrintImport(console, info);
        }
    }
    if (options.json) {
        PrintJson(console, Record{{"clips", records}});
    }
    return kDone;
}

Status RunExport(Console& console, const TransferOptions& options) {
    // An empty folder becomes a card.
    const Card card = EnterCard(console, options.card);
    card.RequireFolder();
    const Card source = EnterCard(console, options.folder);
    source.RequireContents();
    TransferWatch watch(options.quiet);
    WorkerSession session(options.worker);
    watch.Follow(*session.operator->());
    stu_R8P2TransInfo info;
    info.text1 = WorkerPath(card.Argument());
    info.text3 = WorkerPath(source.Argument());
    info.value2 = options.incomplete ? kTakeIncomplete : 0;
    CStringArray names;
    List records;
    for (const std::string& clip : options.clips) {
        names.Add(TextFromBytes(clip));
        records.emplace_back(Record{{"ClipName", clip}});
    }
    const std::string label =
        names.GetSize() == 1 ? options.clips.front() : fmt::format("{} clips", names.GetSize());
    watch.Begin(label);
    const bool done = session->ExportFile(&info, names) == 1;
    watch.End();
    session.Require(done, label, "not exported");
    // The session's first sentence: of clips that were taken although they are not whole.
    if (const std::string sentence = session.Sentence(); !sentence.empty()) {
        TellIncomplete(console, label, sentence);
    }
    if (options.json) {
        PrintJson(console, Record{{"card", OutputPath(card.Folder())}, {"clips", records}});
    } else {
        console.WriteLine(fmt::format("{}: exported to {}", label, card.Folder()));
    }
    return kDone;
}

void AddTransferOptions(const Command& command, TransferOptions& options, const std::string& way,
                        const std::string& folder) {
    command.CardArgument(options.card);
    command.ClipArguments(options.clips);
    command.ValueOption(way, options.folder, "FOLDER", folder).Required();
    command.IncompleteFlag(options.incomplete);
    command.JsonFlag(options.json);
    command.QuietFlag(options.quiet);
    command.WorkerOption(options.worker);
}

} // namespace

void AddImportCommand(const Command& program) {
    const Command command =
        program.Add("import", "Copy whole clips off a card and verify the copies");
    TransferOptions& options = command.Runs(RunImport);
    AddTransferOptions(command, options, "--to", "The folder that receives a CONTENTS tree");
    command.Example("nqp2 import /media/card 0001AB 0002CD --to footage");
}

void AddExportCommand(const Command& program) {
    const Command command = program.Add("export", "Copy whole clips onto a card, all or none");
    TransferOptions& options = command.Runs(RunExport);
    AddTransferOptions(command, options, "--from", "The folder that holds them in a CONTENTS tree");
    command.Example("nqp2 export /media/card 0001AB 0002CD --from footage");
}

} // namespace nqp2::tool
