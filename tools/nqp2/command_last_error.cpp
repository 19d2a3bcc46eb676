// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/command.h"
#include "tools/nqp2/worker_session.h"

#include "platform/TextBytes.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

Status RunLastError(Console& console, const std::string& worker) {
    WorkerSession session(worker);
    const std::string sentence = BytesFromText(session->GetLastError());
    if (!sentence.empty()) {
        console.WriteLine(sentence);
        return kDone;
    }
    session.RequireNoFailure("the worker", "tells nothing");
    console.Message("the worker answers and knows of no failure");
    return kDone;
}

} // namespace

void AddLastErrorCommand(CLI::App& program, Action& chosen) {
    const auto worker = std::make_shared<std::string>();
    CLI::App* command =
        program.add_subcommand("last-error", "Ask the worker for the last failure it knows of");
    AddWorkerOption(*command, *worker);
    SetExample(*command, "nqp2 last-error");
    command->callback([worker, &chosen] {
        chosen = [worker](Console& console) { return RunLastError(console, *worker); };
    });
}

} // namespace nqp2::tool
