// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/edl_commands.h"
#include "nqp2/edl_fields.h"
#include "nqp2/field.h"
#include "nqp2/foreign_text.h"
#include "nqp2/json_input.h"

#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

constexpr const wchar_t* kExtension = L".xml"; // added to names without it

struct EdlWriteOptions {
    std::string card;
    std::string file;
    std::string name;
    bool named = false;
};

/// The list's file is put into the card's own folder and nowhere else.
void RequireFileName(const EdlWriteOptions& options) {
    const char* const fault = FileNameFault(TextFromBytes(options.name), kExtension);
    if (options.named && *fault != '\0') {
        throw Failure("--name " + options.name, "is no file name", fault, kUsage);
    }
}

tag_P2EDL ReadEdl(const std::string& file) {
    const InputDocument document(file);
    tag_P2EDL edl = EdlFromInput(document.Root());
    if (edl.Events.IsEmpty()) {
        document.Root().Refuse("holds no events", "an edit list needs one");
    }
    for (tag_P2EDLClipTrackEvent& event : edl.Events) {
        // The library makes identifiers from GUIDs unless the note tells the clip's own. Notes
        // are not written.
        event.Note = event.GlobalClipID;
    }
    return edl;
}

/// Whether the clip that the event names is on the card and is the one that it means.
bool IsOnCard(ReadyParser& parser, const Card& card, const tag_P2EDLClipTrackEvent& event) {
    _tag_P2Clip clip;
    const bool plain = BytesFromText(event.ClipName).find_first_of("/\\:") == std::string::npos;
    return plain && parser->LoadClipInfo(card.Root(), event.ClipName, clip) == 0 &&
           clip.GlobalClipGuid == CNQP2Parser::GuidFromUMID(event.GlobalClipID);
}

[[noreturn]] void ThrowNotWritten(ReadyParser& parser, const Card& card, const tag_P2EDL& edl) {
    const bool known = std::any_of(edl.Events.begin(), edl.Events.end(), [&](const auto& event) {
        return IsOnCard(parser, card, event);
    });
    throw Failure(
        card.Folder(), "the edit list was not written",
        known ? "the card may be write-protected, full or out of names, or the list too long"
              : "no event's ClipName and GlobalClipID are those of a clip on the card");
}

Status RunEdlWrite(Console& console, const EdlWriteOptions& options) {
    RequireFileName(options);
    const tag_P2EDL edl = ReadEdl(options.file);
    const Card card(options.card);
    // A mistyped card shall not be given a folder.
    card.RequireContents();
    ReadyParser parser;
    CString saved;
    const CString name = TextFromBytes(options.name);
    if (parser->SaveCardEdl(card.Root(), edl, name, saved) != 0) {
        ThrowNotWritten(parser, card, edl);
    }
    console.WriteLine(RealPath(saved));
    return kDone;
}

} // namespace

void AddEdlWriteCommand(CLI::App& group, Action& chosen) {
    const auto options = std::make_shared<EdlWriteOptions>();
    CLI::App* command = group.add_subcommand("write", "Write an edit list to a card");
    AddCardArgument(*command, options->card);
    command
        ->add_option("FILE", options->file,
                     "One edit list in JSON, as in `edl list --json`; - is standard input")
        ->type_name("")
        ->required();
    CLI::Option* name =
        command
            ->add_option("--name", options->name,
                         "The file's name, an old file is replaced; numbered if absent")
            ->type_name("NAME");
    SetExample(*command, "nqp2 edl write /media/card cut.json --name CUT1");
    command->footer(
        "The list goes into the card's EDITLIST folder, or into CONTENTS/EDITLIST where the "
        "card has\nthat alone. Its number follows those of the lists in both.\n\n" +
        command->get_footer());
    command->callback([options, name, &chosen] {
        options->named = name->count() > 0;
        chosen = [options](Console& console) { return RunEdlWrite(console, *options); };
    });
}

} // namespace nqp2::tool
