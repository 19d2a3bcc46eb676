// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/command.h"
#include "nqp2/json_output.h"
#include "nqp2/worker_path.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

struct SerialOptions {
    std::string card;
    std::string worker;
    bool json = false;
};

Status RunSerial(Console& console, const SerialOptions& options) {
    const Card card(options.card);
    card.RequireFolder();
    WorkerSession session(options.worker);
    CString serial;
    session.Require(session->GetP2SerialNumber(WorkerPath(options.card), serial) == 0,
                    card.Folder(), "no serial number");
    if (options.json) {
        PrintJson(console, {{"P2SerialNo", BytesFromText(serial)}});
    } else {
        console.WriteLine(BytesFromText(serial));
    }
    return kDone;
}

} // namespace

void AddSerialCommand(CLI::App& program, Action& chosen) {
    const auto options = std::make_shared<SerialOptions>();
    CLI::App* command =
        program.add_subcommand("serial", "Print the serial number of the volume that holds a card");
    AddCardArgument(*command, options->card);
    command->add_flag("--json", options->json, "Print JSON");
    AddWorkerOption(*command, options->worker);
    SetExample(*command, "nqp2 serial /media/card");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunSerial(console, *options); };
    });
}

} // namespace nqp2::tool
