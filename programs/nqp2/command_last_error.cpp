// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command.h"
#include "nqp2/json_output.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

struct LastErrorOptions {
    std::string worker;
    bool json = false;
};

Status RunLastError(Console& console, const LastErrorOptions& options) {
    WorkerSession session(options.worker);
    const std::string sentence = BytesFromText(session->GetLastError());
    if (sentence.empty()) {
        session.RequireNoFailure("the worker", "tells nothing");
    }
    if (options.json) {
        PrintJson(console, {{"LastError", sentence}});
    } else if (sentence.empty()) {
        console.Message("the worker answers and knows of no failure");
    } else {
        console.WriteLine(sentence);
    }
    return kDone;
}

} // namespace

void AddLastErrorCommand(CLI::App& program, Action& chosen) {
    const auto options = std::make_shared<LastErrorOptions>();
    CLI::App* command =
        program.add_subcommand("last-error", "Ask the worker for the last failure it knows of");
    command->add_flag("--json", options->json, "Print JSON");
    AddWorkerOption(*command, options->worker);
    SetExample(*command, "nqp2 last-error");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunLastError(console, *options); };
    });
}

} // namespace nqp2::tool
