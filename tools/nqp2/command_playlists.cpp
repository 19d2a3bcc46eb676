// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/card.h"
#include "tools/nqp2/command.h"
#include "tools/nqp2/edl_output.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

struct PlaylistsOptions {
    std::string card;
    EdlForm form;
};

Status RunPlaylists(Console& console, const PlaylistsOptions& options) {
    const Card card(options.card);
    ReadyParser parser;
    CArray<tag_P2EDL> playlists;
    if (parser->LoadAVCHDEdl(card.Root(), playlists) != 0) {
        card.ThrowNoPlaylists();
    }
    PrintEdls(console, playlists, options.form);
    return kDone;
}

} // namespace

void AddPlaylistsCommand(CLI::App& program, Action& chosen) {
    const auto options = std::make_shared<PlaylistsOptions>();
    CLI::App* command =
        program.add_subcommand("playlists", "List the playlists of an AVCHD card as edit lists");
    AddCardArgument(*command, options->card);
    AddEdlForm(*command, options->form);
    SetExample(*command, "nqp2 playlists /media/card/PRIVATE --json");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunPlaylists(console, *options); };
    });
}

} // namespace nqp2::tool
