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

struct ImportOptions {
    std::string card;
    std::vector<std::string> clips;
    std::string target;
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

stu_R8P2TransInfo Import(WorkerSession& session, TransferWatch& watch, const ImportOptions& options,
                         const std::string& clip) {
    stu_R8P2TransInfo info;
    info.text1 = WorkerPath(options.card);
    info.text2 = TextFromBytes(clip);
    info.text3 = WorkerPath(options.target);
    info.value2 = options.incomplete ? kTakeIncomplete : 0;
    watch.Begin(clip);
    const bool done = session->ImportFile(info) == 0;
    watch.End();
    session.Require(done, clip, "not imported");
    return info;
}

Status RunImport(Console& console, const ImportOptions& options) {
    Card(options.card).RequireContents();
    TransferWatch watch(options.quiet);
    WorkerSession session(options.worker);
    watch.Follow(*session.operator->());
    List records;
    for (const std::string& clip : options.clips) {
        const stu_R8P2TransInfo info = Import(session, watch, options, clip);
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
        PrintJson(console, {{"clips", records}});
    }
    return kDone;
}

} // namespace

void AddImportCommand(CLI::App& program, Action& chosen) {
    const auto options = std::make_shared<ImportOptions>();
    CLI::App* command =
        program.add_subcommand("import", "Copy whole clips off a card and verify the copies");
    AddCardArgument(*command, options->card);
    AddClipArguments(*command, options->clips);
    command->add_option("--to", options->target, "The folder that receives a CONTENTS tree")
        ->type_name("FOLDER")
        ->required();
    AddIncompleteOption(*command, options->incomplete);
    command->add_flag("--json", options->json, "Print JSON");
    AddQuietOption(*command, options->quiet);
    AddWorkerOption(*command, options->worker);
    SetExample(*command, "nqp2 import /media/card 0001AB 0002CD --to footage");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunImport(console, *options); };
    });
}

} // namespace nqp2::tool
