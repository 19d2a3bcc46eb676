// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/byte_size.h"
#include "console/table.h"
#include "console/value.h"
#include "nqp2/card_scan.h"
#include "nqp2/clip_fields.h"
#include "nqp2/code_types.h"
#include "nqp2/command.h"
#include "nqp2/input_text.h"
#include "nqp2/record_output.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

namespace nqp2::tool {
namespace {

constexpr std::int64_t kFirstUnit = 1024; ///< bytes from which on they have one
constexpr std::int64_t kMostBytes = std::numeric_limits<std::int64_t>::max(); ///< or more

struct SpaceOptions {
    std::string card;
    std::string bytesText;
    std::string framesText;
    std::string codeType;
    std::string standard;
    std::optional<Option> bytesOption;
    std::optional<Option> framesOption;
    bool audio24 = false;
    bool json = false;
};

/// The numbers that the user gave.
struct Amounts {
    std::optional<std::int64_t> bytes;
    std::optional<std::int64_t> frames;
};

/// What is to be recorded.
struct Recording {
    eCodeType codeType;
    eP2_VIDEO_STANDARD standard;
    int audioFlag;
};

/// The answers; what was not asked or cannot be said is missing.
struct Space {
    std::optional<bool> fits;
    std::int64_t freeBytes = 0;
    std::int64_t maxFrames = 0;
    std::optional<std::int64_t> spaceForFrames;
    std::optional<std::int64_t> framesFor4GB;
    std::int64_t sizeFor4GB = 0;
};

eP2_VIDEO_STANDARD StandardFromArgument(const std::string& text) {
    if (const auto known = StandardFromName(TextFromBytes(text))) {
        return *known;
    }
    const auto standard =
        static_cast<eP2_VIDEO_STANDARD>(WholeNumber<std::int32_t>(text).value_or(-1));
    if (*StandardName(standard) == '\0') {
        throw Failure("--standard " + text, "is no video standard",
                      "give a name like VS_50I or a number from 0 to 6", kUsage);
    }
    return standard;
}

/// What the card's first clip was recorded as. A card's format, told by the codec's name alone,
/// would not know the class, on which the size of a frame depends.
Recording CardRecording(Console& console, ReadyParser& parser, const Card& card) {
    CArray<_tag_P2Clip> clips;
    if (IsMediaCard(card)) {
        clips = ScanMediaCard(console, card).clips;
    } else if (parser->LoadClipEx(card.Root(), clips, 0) != 0) {
        card.ThrowUnreadable();
    }
    if (clips.IsEmpty()) {
        throw Failure(card.Folder(), "no clip tells the card's format",
                      "give --code-type and --standard");
    }
    return {CodeTypeOf(clips[0]), StandardOf(clips[0]), 0};
}

/// What the options tell. A code type's name tells the standard as well.
struct AskedRecording {
    std::optional<eCodeType> codeType;
    std::optional<eP2_VIDEO_STANDARD> standard;
};

AskedRecording AskedFrom(const SpaceOptions& options) {
    AskedRecording asked;
    if (!options.codeType.empty()) {
        asked.codeType = CodeTypeFromArgument(options.codeType);
        if (const FrameRate* const rate = RateInName(*asked.codeType)) {
            asked.standard = rate->standard;
        }
    }
    if (!options.standard.empty()) {
        asked.standard = StandardFromArgument(options.standard);
    }
    return asked;
}

Recording RecordingFrom(Console& console, ReadyParser& parser, const SpaceOptions& options,
                        const std::optional<Card>& card) {
    const AskedRecording asked = AskedFrom(options);
    Recording recording = {};
    if (!asked.codeType || !asked.standard) {
        if (!card) {
            throw Failure("space usage",
                          asked.codeType ? "--bytes and a code type without a name need --standard"
                                         : "--bytes needs --code-type",
                          "see nqp2 space --help", kUsage);
        }
        recording = CardRecording(console, parser, *card);
    }
    return {asked.codeType.value_or(recording.codeType),
            asked.standard.value_or(recording.standard), options.audio24 ? 1 : 0};
}

/// Of the medium of a card that is no P2 card: the parser tells those of P2 cards alone.
std::int64_t FreeBytes(const Card& card) {
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(card.Folder(), error);
    if (error) {
        throw Failure(card.Folder(), "free space is not known", error.message());
    }
    return static_cast<std::int64_t>(
        std::min<std::uintmax_t>(space.available, static_cast<std::uintmax_t>(kMostBytes)));
}

/// Free bytes, and whether the frames fit in them.
Space AskSpace(ReadyParser& parser, const std::optional<Card>& card, const Amounts& amounts,
               const Recording& recording) {
    const auto& [codeType, standard, audioFlag] = recording;
    const std::int64_t frames = amounts.frames.value_or(0);
    Space space;
    if (amounts.bytes || IsMediaCard(*card)) {
        space.freeBytes = amounts.bytes ? *amounts.bytes : FreeBytes(*card);
        const std::int64_t need =
            parser->CountSpaceFromFrames(codeType, audioFlag, standard, frames);
        space.fits = need != kMostBytes && space.freeBytes >= need;
        return space;
    }
    card->RequireContents();
    __int64 narrowFrames = 0; // counted with 16-bit audio, whatever the flag says
    space.fits = parser->GetDiscFree(card->Root(), codeType, audioFlag, standard, frames,
                                     space.freeBytes, narrowFrames) != 0;
    return space;
}

Space MeasureSpace(ReadyParser& parser, const std::optional<Card>& card, const Amounts& amounts,
                   const Recording& recording) {
    const auto& [codeType, standard, audioFlag] = recording;
    Space space = AskSpace(parser, card, amounts, recording);
    space.maxFrames = parser->CountFramesFromSpace(codeType, audioFlag, standard, space.freeBytes);
    if (amounts.frames) {
        space.spaceForFrames =
            parser->CountSpaceFromFrames(codeType, audioFlag, standard, *amounts.frames);
    } else {
        space.fits.reset();
    }
    const std::int64_t frames =
        parser->GetMaxFrameBy4GBSize(codeType, audioFlag, standard, space.sizeFor4GB);
    if (frames > 0) {
        space.framesFor4GB = frames;
    }
    return space;
}

Record SpaceRecord(const Space& space) {
    Record record;
    if (space.fits) {
        record.push_back({"fits", *space.fits});
    }
    record.push_back({"FreeBytes", space.freeBytes});
    record.push_back({"MaxFrames", space.maxFrames});
    if (space.spaceForFrames) {
        record.push_back({"SpaceForFrames", *space.spaceForFrames});
    }
    if (space.framesFor4GB) {
        record.push_back({"FramesFor4GB", *space.framesFor4GB});
        record.push_back({"SizeFor4GB", space.sizeFor4GB});
    }
    return record;
}

std::string CodeTypeText(eCodeType type) {
    const std::string name = CodeTypeName(type);
    return name.empty() ? fmt::format("{}", static_cast<int>(type))
                        : fmt::format("{} ({})", name, static_cast<int>(type));
}

std::string WithUnit(std::int64_t bytes) {
    return bytes < kFirstUnit
               ? fmt::format("{}", bytes)
               : fmt::format("{} ({})", bytes, BytesText(static_cast<std::uint64_t>(bytes)));
}

void GiveSpaceRows(const Amounts& amounts, const Recording& recording, const Space& space,
                   const TakeRow& take) {
    take({"Code type", CodeTypeText(recording.codeType)});
    take({"Standard", fmt::format("{} ({})", StandardName(recording.standard),
                                  static_cast<int>(recording.standard))});
    take({"Audio", recording.audioFlag != 0 ? "4 channels, 24 bits" : "4 channels, 16 bits"});
    take({"Free bytes", WithUnit(space.freeBytes)});
    take({"Frames that fit", fmt::format("{}{}", space.maxFrames,
                                         space.maxFrames <= 0  ? " (none)"
                                         : !space.framesFor4GB ? " of sound alone, see below"
                                                               : "")});
    if (space.spaceForFrames) {
        take({"Frames asked for", fmt::format("{}", *amounts.frames)});
        take({"Bytes they take", *space.spaceForFrames == kMostBytes
                                     ? fmt::format("{} or more", kMostBytes)
                                     : WithUnit(*space.spaceForFrames)});
        take({"Fits", *space.fits ? "yes" : "no"});
    }
    take({"4 GB limit", space.framesFor4GB ? fmt::format("reached with frame {}, {} bytes in all",
                                                         *space.framesFor4GB, space.sizeFor4GB)
                                           : "not known: the code type has no frame size, "
                                             "all figures count sound alone"});
}

/// The number that the user gave with the option, if any.
std::optional<std::int64_t> FramesFrom(const SpaceOptions& options) {
    const auto frames = WholeNumber<std::int64_t>(options.framesText);
    if (options.framesOption->IsGiven() && !frames) {
        throw Failure("--frames " + options.framesText, "is no whole number", "", kUsage);
    }
    return frames;
}

std::optional<std::int64_t> BytesFrom(const SpaceOptions& options) {
    if (!options.bytesOption->IsGiven()) {
        return std::nullopt;
    }
    const auto bytes = SizeFromText(options.bytesText);
    if (!bytes) {
        throw Failure("--bytes " + options.bytesText, "is no number of bytes",
                      "such are 64000000000, 64GB and 59.6GiB", kUsage);
    }
    return bytes;
}

Status RunSpace(Console& console, const SpaceOptions& options) {
    const Amounts amounts = {BytesFrom(options), FramesFrom(options)};
    if (options.card.empty() && !amounts.bytes) {
        throw Failure("space usage", "CARD or --bytes is required", "see nqp2 space --help",
                      kUsage);
    }
    ReadyParser parser;
    std::optional<Card> card;
    if (!amounts.bytes) {
        card = EnterCard(console, options.card, {kEveryCard});
    }
    const Recording recording = RecordingFrom(console, parser, options, card);
    const Space space = MeasureSpace(parser, card, amounts, recording);
    if (options.json) {
        PrintJson(console, SpaceRecord(space));
    } else {
        PrintPairs(console,
                   [&](const TakeRow& take) { GiveSpaceRows(amounts, recording, space, take); });
    }
    return kDone;
}

} // namespace

void AddSpaceCommand(const Command& program) {
    const Command command =
        program.Add("space", "Tell how much can be recorded in a card's free space");
    SpaceOptions& options = command.Runs(RunSpace);
    const Option card = command.CardArgument(options.card).Required(false);
    options.bytesOption = command
                              .ValueOption("--bytes", options.bytesText, "SIZE",
                                           "Count with that many free bytes (64GB, 59.6GiB), "
                                           "no card")
                              .Excludes(card);
    command.ValueOption("-f,--code-type", options.codeType, "TYPE",
                        "Name or number; the card's own if absent");
    command.ValueOption("--standard", options.standard, "STANDARD",
                        "Name or number; if absent that of the code type's name, else the card's");
    command.Flag("--audio24", options.audio24, "Record 24-bit audio instead of 16-bit");
    options.framesOption = command.ValueOption("--frames", options.framesText, "N",
                                               "Also tell what that many frames take");
    command.JsonFlag(options.json);
    command.Note(CodeTypeNote(CodeTypes::Any));
    command.Example("nqp2 space /media/card --frames 15000");
}

} // namespace nqp2::tool
