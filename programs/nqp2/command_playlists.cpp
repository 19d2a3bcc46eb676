// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/command.h"
#include "nqp2/edl_output.h"
#include "nqp2/scan_report_output.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

struct PlaylistsOptions {
    std::string card;
    EdlForm form;
    bool strict = false;
};

Status RunPlaylists(Console& console, const PlaylistsOptions& options) {
    const Card card(options.card);
    ReadyParser parser;
    CArray<tag_P2EDL> playlists;
    ScanReport report;
    if (parser->LoadCardPlaylists(card.Root(), playlists, report) != 0) {
        card.ThrowNoPlaylists();
    }
    PrintEdls(console, playlists, options.form);
    console.Finish();
    return TellLosses(console, report, options.strict);
}

} // namespace

void AddPlaylistsCommand(CLI::App& program, Action& chosen) {
    const auto options = std::make_shared<PlaylistsOptions>();
    CLI::App* command =
        program.add_subcommand("playlists", "List the playlists of an AVCHD card or disc folder");
    AddCardArgument(*command, options->card);
    AddEdlForm(*command, options->form);
    command->add_flag("--strict", options->strict, "Exit with 4 when a playlist was skipped");
    SetExample(*command, "nqp2 playlists /media/card/PRIVATE --json");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunPlaylists(console, *options); };
    });
}

} // namespace nqp2::tool
