// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_entry.h"
#include "nqp2/command.h"
#include "nqp2/edl_fields.h"
#include "nqp2/field.h"
#include "nqp2/input_text.h"
#include "nqp2/json_input.h"

#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
#include <optional>
#include <string>

namespace nqp2::tool {
namespace {

constexpr const wchar_t* kExtension = L".xml"; // added to names without it

struct EdlWriteOptions {
    std::string card;
    std::string file;
    std::string name;
    std::optional<Option> named;
};

/// The list's file is put into the card's own folder and nowhere else.
void RequireFileName(const EdlWriteOptions& options) {
    const char* const fault = FileNameFault(TextFromBytes(options.name), kExtension);
    if (options.named->IsGiven() && *fault != '\0') {
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
    const Card card = EnterCard(console, options.card);
    // No folder is made for a mistyped card.
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

void AddEdlWriteCommand(const Command& group) {
    const Command command = group.Add("write", "Write an edit list to a card");
    EdlWriteOptions& options = command.Runs(RunEdlWrite);
    command.CardArgument(options.card);
    command.Argument("FILE", options.file,
                     "One edit list in JSON, as in `edl list --json`; - is standard input");
    options.named =
        command.ValueOption("--name", options.name, "NAME",
                            "The file's name, an old file is replaced; numbered if absent");
    command.Example("nqp2 edl write /media/card cut.json --name CUT1");
    command.Note(
        "The list goes into the card's EDITLIST folder, or into CONTENTS/EDITLIST where the "
        "card has\nthat alone. Its number follows those of the lists in both.");
}

} // namespace nqp2::tool
