// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/card.h"
#include "tools/nqp2/edl_commands.h"
#include "tools/nqp2/edl_output.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

struct EdlListOptions {
    std::string card;
    EdlForm form;
};

/// Edit lists lie in the card's root or in its CONTENTS folder; both are asked for.
CArray<tag_P2EDL> LoadEdls(const Card& card) {
    ReadyParser parser;
    CArray<tag_P2EDL> edls;
    const bool inRoot = parser->LoadEdl(card.Root(), edls) == 0;
    const bool inContents = parser->LoadEdl(card.ContentsRoot(), edls) == 0;
    if (!inRoot && !inContents) {
        card.RequireContents();
    }
    return edls;
}

Status RunEdlList(Console& console, const EdlListOptions& options) {
    CArray<tag_P2EDL> edls = LoadEdls(Card(options.card));
    PrintEdls(console, edls, options.form);
    return kDone;
}

} // namespace

void AddEdlListCommand(CLI::App& group, Action& chosen) {
    const auto options = std::make_shared<EdlListOptions>();
    CLI::App* command = group.add_subcommand("list", "List the edit lists of a card");
    AddCardArgument(*command, options->card);
    AddEdlForm(*command, options->form);
    SetExample(*command, "nqp2 edl list /media/card --json");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunEdlList(console, *options); };
    });
}

} // namespace nqp2::tool
