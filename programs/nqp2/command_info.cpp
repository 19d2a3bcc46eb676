// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/table.h"
#include "console/value.h"
#include "nqp2/card_scan.h"
#include "nqp2/clip_fields.h"
#include "nqp2/command.h"
#include "nqp2/record_output.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <string>

namespace nqp2::tool {
namespace {

struct FormatOptions {
    std::string card;
    OutputForm form;
};

/// That of the first clip, as far as its record tells.
DiskFormat ReadMediaFormat(Console& console, const Card& card) {
    const CardScan scan = ScanMediaCard(console, card);
    DiskFormat format;
    if (!scan.clips.IsEmpty()) {
        const _tag_P2Clip& clip = scan.clips[0];
        format.found = true;
        format.codeType = CodeTypeOf(clip);
        format.standard = StandardOf(clip);
        format.frameRate = clip.FrameRate;
        format.codec = clip.CodecName;
        format.class50 = clip.AvcIntraClass50;
    }
    return format;
}

DiskFormat ReadFormat(Console& console, const Card& card) {
    ReadyParser parser;
    DiskFormat format;
    if (IsMediaCard(card)) {
        format = ReadMediaFormat(console, card);
    } else if (parser->GetDiskFormat(card.Root(), format) != 0) {
        card.ThrowUnreadable();
    }
    if (!format.found) {
        throw Failure(card.Folder(), "no clip tells the card's format",
                      "none could be read; see `nqp2 clips --report`");
    }
    return format;
}

Record FormatRecord(const DiskFormat& format) {
    return {{"CodeType", CodeTypeRecord(format.codeType)},
            {"VideoStandard", StandardRecord(format.standard)},
            {"FrameRate", BytesFromText(format.frameRate)},
            {"Codec", BytesFromText(format.codec)},
            {"EditUnit", BytesFromText(format.editUnit)},
            {"Class50", format.class50}};
}

void PrintFormat(Console& console, const DiskFormat& format) {
    PrintPairs(console, [&](const TakeRow& take) {
        take({"Code type", fmt::format("{} ({})", CodeTypeName(format.codeType), format.codeType)});
        take({"Standard", fmt::format("{} ({})", StandardName(format.standard), format.standard)});
        take({"Codec", BytesFromText(format.codec)});
        take({"Frame rate", BytesFromText(format.frameRate)});
        take({"Edit unit", BytesFromText(format.editUnit)});
        take({"Class 50", format.class50 != 0 ? "yes" : "no"});
    });
}

Status RunFormat(Console& console, const FormatOptions& options) {
    const DiskFormat format = ReadFormat(console, EnterCard(console, options.card, {kEveryCard}));
    const Record record = FormatRecord(format);
    PrintListing(console, options.form,
                 {record,
                  record,
                  {1, [&record](ValueSink& sink, std::size_t) { Put(sink, record); }},
                  [&](Console& target) { PrintFormat(target, format); }});
    return kDone;
}

} // namespace

void AddInfoCommand(const Command& program) {
    const Command command =
        program.Add("info", "Tell a card's recording format from its first clip");
    command.Alias("format");
    FormatOptions& options = command.Runs(RunFormat);
    command.CardArgument(options.card);
    command.JsonAndCsvFlags(options.form, "", "");
    command.Note(
        "The code type of a P2 card is a coarse one, told by the codec's name alone: AVC-Intra of\n"
        "class 50 has that of class 100, and the line Class 50 says which it is.");
    command.Example("nqp2 info /media/card");
}

} // namespace nqp2::tool
