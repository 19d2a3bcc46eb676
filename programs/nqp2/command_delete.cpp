// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/command.h"
#include "nqp2/worker_path.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

struct DeleteOptions {
    std::string card;
    std::vector<std::string> clips;
    std::string worker;
};

Status RunDelete(const DeleteOptions& options) {
    Card(options.card).RequireContents();
    const CString root = WorkerPath(options.card);
    WorkerSession session(options.worker);
    for (const std::string& clip : options.clips) {
        // Without a worker the clip would still leave the ingest list.
        session.RequireNoFailure(clip, "not deleted");
        session->DeleteFileW(TextFromBytes(clip), root);
        session.RequireNoFailure(clip, "not deleted");
    }
    return kDone;
}

} // namespace

void AddDeleteCommand(CLI::App& program, Action& chosen) {
    const auto options = std::make_shared<DeleteOptions>();
    CLI::App* command = program.add_subcommand(
        "delete", "Delete clips with all their files, and from the ingest list");
    AddCardArgument(*command, options->card);
    AddClipArguments(*command, options->clips);
    AddWorkerOption(*command, options->worker);
    SetExample(*command, "nqp2 delete /media/card 0001AB");
    command->callback(
        [options, &chosen] { chosen = [options](Console&) { return RunDelete(*options); }; });
}

} // namespace nqp2::tool
