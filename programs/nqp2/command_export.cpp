// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/command.h"
#include "nqp2/json_output.h"
#include "nqp2/transfer_watch.h"
#include "nqp2/worker_path.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/R8P2TransInfo.h"
#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

struct ExportOptions {
    std::string card;
    std::vector<std::string> clips;
    std::string source;
    std::string worker;
    bool incomplete = false;
    bool json = false;
    bool quiet = false;
};

Status RunExport(Console& console, const ExportOptions& options) {
    const Card card(options.card);
    card.RequireFolder();
    Card(options.source).RequireContents();
    TransferWatch watch(options.quiet);
    WorkerSession session(options.worker);
    watch.Follow(*session.operator->());
    stu_R8P2TransInfo info;
    info.text1 = WorkerPath(options.card);
    info.text3 = WorkerPath(options.source);
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
        PrintJson(console, {{"card", card.Folder()}, {"clips", records}});
    } else {
        console.WriteLine(fmt::format("{}: exported to {}", label, card.Folder()));
    }
    return kDone;
}

} // namespace

void AddExportCommand(CLI::App& program, Action& chosen) {
    const auto options = std::make_shared<ExportOptions>();
    CLI::App* command =
        program.add_subcommand("export", "Copy whole clips onto a card, all or none");
    AddCardArgument(*command, options->card);
    AddClipArguments(*command, options->clips);
    command->add_option("--from", options->source, "The folder that holds them in a CONTENTS tree")
        ->type_name("FOLDER")
        ->required();
    AddIncompleteOption(*command, options->incomplete);
    command->add_flag("--json", options->json, "Print JSON");
    AddQuietOption(*command, options->quiet);
    AddWorkerOption(*command, options->worker);
    SetExample(*command, "nqp2 export /media/card 0001AB 0002CD --from footage");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunExport(console, *options); };
    });
}

} // namespace nqp2::tool
