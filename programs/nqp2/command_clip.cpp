// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_entry.h"
#include "nqp2/clip_fields.h"
#include "nqp2/command.h"
#include "nqp2/record_output.h"
#include "nqp2/scan_report_output.h"

#include "NQP2ParserU/TextBytes.h"

#include <string>

namespace nqp2::tool {
namespace {

struct ClipOptions {
    std::string card;
    std::string name;
    bool json = false;
};

/// A clip name is a file's title; with a separator it would lead to another folder.
void RequirePlainName(const std::string& name) {
    if (name.empty() || name.find_first_of("/\\") != std::string::npos) {
        throw Failure(name, "is no clip name", "give it as `nqp2 clips` shows it", kUsage);
    }
}

/// Scans the card to find out why a clip did not load: the scan's report knows.
[[noreturn]] void ThrowNoClip(ReadyParser& parser, const Card& card, const _tag_P2Clip& clip,
                              const std::string& name) {
    CArray<_tag_P2Clip> clips;
    ScanReport report;
    if (parser->LoadClipEx(card.Root(), clips, 0, report) != 0) {
        card.ThrowUnreadable();
    }
    const CString fileName = clip.XmlPath.Mid(clip.XmlPath.ReverseFind(L'\\'));
    for (const SkippedFile& file : report.skipped) {
        const CString skippedName = file.path.Mid(file.path.ReverseFind(L'\\'));
        if (skippedName.CompareNoCase(fileName) == 0) {
            throw Failure(PositionText(file), "cannot be read", ReasonText(file));
        }
    }
    throw Failure(card.Folder(), "no clip " + name, "`nqp2 clips` lists the clips");
}

_tag_P2Clip ReadClip(Console& console, const ClipOptions& options) {
    const Card card = EnterCard(console, options.card);
    ReadyParser parser;
    _tag_P2Clip clip;
    if (parser->LoadClipInfo(card.Root(), TextFromBytes(options.name), clip) != 0) {
        ThrowNoClip(parser, card, clip, options.name);
    }
    return clip;
}

Status RunClip(Console& console, const ClipOptions& options) {
    RequirePlainName(options.name);
    const _tag_P2Clip clip = ReadClip(console, options);
    PrintRecord(console, options.json, Content([&clip](ValueSink& sink) { PutClip(sink, clip); }));
    return kDone;
}

} // namespace

void AddClipCommand(const Command& program) {
    const Command command = program.Add("clip", "Show every field of one clip");
    ClipOptions& options = command.Runs(RunClip);
    command.CardArgument(options.card);
    command.Argument("CLIP", options.name, "The clip's name, in any letter case");
    command.JsonFlag(options.json);
    command.Example("nqp2 clip /media/card 0001AB --json");
}

} // namespace nqp2::tool
