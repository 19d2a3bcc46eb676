// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_clip.h"
#include "nqp2/card_entry.h"
#include "nqp2/command.h"
#include "nqp2/edl_fields.h"
#include "nqp2/field.h"
#include "nqp2/input_text.h"
#include "nqp2/json_input.h"
#include "nqp2/timeline_lists.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace nqp2::tool {
namespace {

constexpr const wchar_t* kExtension = L".xml"; // added to names without it
constexpr const char* kLists = "edls";         // of what `edl list --json` prints

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

/// The only list of what `edl list --json` prints.
tag_P2EDL OnlyListOf(const InputValue& root) {
    CArray<tag_P2EDL> lists;
    root.ForEachMember([&](const std::string& name, const InputValue& value) {
        if (name == kLists) {
            value.ForEachElement(
                [&](std::size_t, const InputValue& list) { lists.Add(EdlFromInput(list)); });
        }
    });
    if (lists.GetSize() != 1) {
        root.Refuse(fmt::format("holds {} edit lists", lists.GetSize()),
                    lists.IsEmpty() ? "give one" : "give one of them: " + ListNames(lists));
    }
    return lists[0];
}

tag_P2EDL ReadEdl(const std::string& file) {
    const InputDocument document(file);
    const InputValue root = document.Root();
    tag_P2EDL edl = root.Has(kLists) ? OnlyListOf(root) : EdlFromInput(root);
    if (edl.Events.IsEmpty()) {
        root.Refuse("holds no events", "an edit list needs one");
    }
    return edl;
}

/// The card's clips that events name.
class NamedClips {
public:
    NamedClips(ReadyParser& parser, const Card& card) : m_parser(parser), m_card(card) {}

    /// Gives an event that tells no identifier that of the clip that it names, and any event of
    /// a clip of the card the card's spelling. Throws the failure to report for one without either.
    void Identify(tag_P2EDLClipTrackEvent& event, std::int64_t number) {
        const bool isTold = !event.GlobalClipID.IsEmpty() || event.GlobalClipGuid != GUID();
        const std::optional<CardClip>& clip = Find(event.ClipName);
        if (!isTold && !clip) {
            ThrowUnknown(event, number);
        }
        if (!isTold) {
            event.GlobalClipID = clip->identifier;
            event.GlobalClipGuid = CNQP2Parser::GuidFromUMID(event.GlobalClipID);
        }
        // Clips of other cards may have the same name.
        if (clip && event.GlobalClipGuid == CNQP2Parser::GuidFromUMID(clip->identifier)) {
            event.ClipName = clip->name;
        }
    }

private:
    const std::optional<CardClip>& Find(const CString& name) {
        const auto [place, isNew] = m_known.try_emplace(std::wstring(name.View()));
        if (isNew) {
            place->second = FindCardClip(m_parser, m_card, name);
        }
        return place->second;
    }
    [[noreturn]] void ThrowUnknown(const tag_P2EDLClipTrackEvent& event,
                                   std::int64_t number) const {
        const std::string place = fmt::format("Events[{}]", number);
        if (event.ClipName.IsEmpty()) {
            throw Failure(place, "names no clip", "it needs a ClipName or a GlobalClipID", kUsage);
        }
        ThrowNoCardClip(m_card, event.ClipName, " of " + place,
                        "clips of other cards need their GlobalClipID");
    }

    ReadyParser& m_parser;
    const Card& m_card;
    std::map<std::wstring, std::optional<CardClip>> m_known;
};

void IdentifyClips(ReadyParser& parser, const Card& card, tag_P2EDL& edl) {
    NamedClips clips(parser, card);
    for (std::int64_t i = 0; i < edl.Events.GetSize(); ++i) {
        tag_P2EDLClipTrackEvent& event = edl.Events[i];
        clips.Identify(event, i);
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
                     "One edit list in JSON, as `edl list --json` prints it; - is standard input");
    options.named =
        command.ValueOption("--name", options.name, "NAME",
                            "The file's name, an old file is replaced; numbered if absent");
    command.Example("nqp2 edl write /media/card cut.json --name CUT1");
    command.Note(
        "The list goes into the card's EDITLIST folder, or into CONTENTS/EDITLIST where the "
        "card has\nthat alone. Its number follows those of the lists in both. An event that names "
        "a clip "
        "of the card needs no GlobalClipID,\nand of Duration, SourceIn and SourceOut the "
        "third follows from two. An event without Offset follows\nthe one before it; a list "
        "without Duration ends with its events.");
}

} // namespace nqp2::tool
