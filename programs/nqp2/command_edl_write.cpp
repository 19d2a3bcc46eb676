// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_entry.h"
#include "nqp2/command.h"
#include "nqp2/edl_fields.h"
#include "nqp2/field.h"
#include "nqp2/input_text.h"
#include "nqp2/json_input.h"

#include "NQP2ParserU/TextBytes.h"

#include <map>
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
    return edl;
}

/// Whether a clip's name can stand in a path.
bool IsPlain(const CString& name) {
    return !name.IsEmpty() && BytesFromText(name).find_first_of("/\\:") == std::string::npos;
}

/// Gives events that name a clip of the card, and tell no identifier, that of the clip.
void IdentifyClips(ReadyParser& parser, const Card& card, tag_P2EDL& edl) {
    std::map<std::wstring, CString> known;
    for (tag_P2EDLClipTrackEvent& event : edl.Events) {
        if (event.GlobalClipID.IsEmpty() && event.GlobalClipGuid == GUID() &&
            IsPlain(event.ClipName)) {
            const auto [place, isNew] = known.try_emplace(std::wstring(event.ClipName.View()));
            _tag_P2Clip clip;
            if (isNew && parser->LoadClipInfo(card.Root(), event.ClipName, clip) == 0) {
                place->second = clip.GlobalClipID;
            }
            event.GlobalClipID = place->second;
            event.GlobalClipGuid = CNQP2Parser::GuidFromUMID(event.GlobalClipID);
        }
        // The library makes identifiers from GUIDs unless the note tells the clip's own. Notes
        // are not written.
        event.Note = event.GlobalClipID;
    }
}

Status RunEdlWrite(Console& console, const EdlWriteOptions& options) {
    RequireFileName(options);
    tag_P2EDL edl = ReadEdl(options.file);
    const Card card = EnterCard(console, options.card);
    // No folder is made for a mistyped card.
    card.RequireContents();
    ReadyParser parser;
    IdentifyClips(parser, card, edl);
    CString saved;
    const CString name = TextFromBytes(options.name);
    ScanReport report;
    if (parser->SaveCardEdl(card.Root(), edl, name, saved, report) != 0) {
        throw Failure(card.Folder(), "the edit list was not written",
                      BytesFromText(report.failure));
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
        "card has\nthat alone. Its number follows those of the lists in both. An event that names "
        "a clip "
        "of the card needs no GlobalClipID.");
}

} // namespace nqp2::tool
