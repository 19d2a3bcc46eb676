// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/edl_commands.h"
#include "nqp2/edl_output.h"
#include "nqp2/scan_report_output.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

struct EdlListOptions {
    std::string card;
    EdlForm form;
    bool strict = false;
};

struct EdlScan {
    CArray<tag_P2EDL> edls;
    ScanReport report;
};

EdlScan LoadEdls(const Card& card) {
    ReadyParser parser;
    EdlScan scan;
    const bool found = parser->LoadCardEdls(card.Root(), scan.edls, scan.report) == 0;
    if (!found && scan.report.skipped.IsEmpty()) {
        card.RequireContents();
    }
    return scan;
}

Status RunEdlList(Console& console, const EdlListOptions& options) {
    EdlScan scan = LoadEdls(Card(options.card));
    PrintEdls(console, scan.edls, options.form);
    console.Finish();
    return TellLosses(console, scan.report, options.strict);
}

} // namespace

void AddEdlListCommand(CLI::App& group, Action& chosen) {
    const auto options = std::make_shared<EdlListOptions>();
    CLI::App* command = group.add_subcommand("list", "List the edit lists of a card");
    AddCardArgument(*command, options->card);
    AddEdlForm(*command, options->form);
    command->add_flag("--strict", options->strict, "Exit with 4 when a file was skipped");
    SetExample(*command, "nqp2 edl list /media/card --json");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunEdlList(console, *options); };
    });
}

} // namespace nqp2::tool
