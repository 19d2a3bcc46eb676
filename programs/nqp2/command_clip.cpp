// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_scan.h"
#include "nqp2/clip_fields.h"
#include "nqp2/clip_hint.h"
#include "nqp2/command.h"
#include "nqp2/record_output.h"
#include "nqp2/scan_report_output.h"

#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
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

[[noreturn]] void ThrowUnknown(const Card& card, const std::string& name,
                               const CArray<_tag_P2Clip>& clips) {
    const std::string hint = NearClip(name, clips);
    throw Failure(card.Folder(), "no clip " + name,
                  hint.empty() ? "`nqp2 clips` lists the clips" : hint);
}

[[noreturn]] void ThrowNoClip(ReadyParser& parser, const Card& card, const ScanReport& report,
                              const std::string& name) {
    for (const SkippedFile& file : report.skipped) {
        throw Failure(PositionText(file), "cannot be read", ReasonText(file));
    }
    CArray<_tag_P2Clip> clips;
    if (parser->LoadClipEx(card.Root(), clips, 0) != 0) {
        card.ThrowUnreadable();
    }
    ThrowUnknown(card, name, clips);
}

_tag_P2Clip FindMediaClip(Console& console, const Card& card, const std::string& name) {
    const CardScan scan = ScanMediaCard(console, card);
    const auto found =
        std::find_if(scan.clips.begin(), scan.clips.end(), [&](const _tag_P2Clip& clip) {
            return clip.ClipName.CompareNoCase(TextFromBytes(name)) == 0;
        });
    if (found == scan.clips.end()) {
        ThrowUnknown(card, name, scan.clips);
    }
    return *found;
}

_tag_P2Clip ReadClip(Console& console, const ClipOptions& options) {
    const Card card = EnterCard(console, options.card, {kEveryCard});
    if (IsMediaCard(card)) {
        return FindMediaClip(console, card, options.name);
    }
    ReadyParser parser;
    _tag_P2Clip clip;
    ScanReport report;
    if (parser->LoadClipInfo(card.Root(), TextFromBytes(options.name), clip, report) != 0) {
        ThrowNoClip(parser, card, report, options.name);
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
