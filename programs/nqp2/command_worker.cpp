// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/value.h"
#include "nqp2/card_entry.h"
#include "nqp2/clip_hint.h"
#include "nqp2/command.h"
#include "nqp2/icon_picture.h"
#include "nqp2/record_output.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/TextBytes.h"

#include <string>

namespace nqp2::tool {
namespace {

struct IconOptions {
    std::string card;
    std::string clip;
    std::string picture;
    std::string worker;
};

/// The file that a frame for an icon is taken from.
std::string VideoOf(const Card& card, const std::string& name) {
    ReadyParser parser;
    _tag_P2Clip clip;
    const std::string path = parser->LoadClipInfo(card.Root(), TextFromBytes(name), clip) == 0
                                 ? RealPath(clip.VideoPath)
                                 : std::string();
    if (path.empty()) {
        const std::string hint = ClipHint(card, {name});
        throw Failure(name, "has no video for an icon", hint.empty() ? "give a picture" : hint);
    }
    return path;
}

Status RunIcon(Console& console, const IconOptions& options) {
    const Card card = EnterCard(console, options.card);
    card.RequireContents();
    WorkerSession session(options.worker);
    Bitmap bitmap = IconPicture(session, options.picture.empty() ? VideoOf(card, options.clip)
                                                                 : options.picture);
    auto* const pixels = reinterpret_cast<unsigned char*>(bitmap.pixels.data());
    session.Require(session->CreateIconBmp(WorkerPath(card.Argument()), TextFromBytes(options.clip),
                                           pixels, bitmap.size) == 1,
                    options.clip, "no icon was made",
                    [&] { return ClipHint(card, {options.clip}); });
    return kDone;
}

struct SerialOptions {
    std::string card;
    std::string worker;
    bool json = false;
};

Status RunSerial(Console& console, const SerialOptions& options) {
    // Of any volume: a folder that leads to several cards is taken as it is.
    const Card card = EnterCard(console, options.card, {kEveryCard, nullptr, true});
    card.RequireFolder();
    WorkerSession session(options.worker);
    CString serial;
    session.Require(session->GetP2SerialNumber(WorkerPath(card.Argument()), serial) == 0,
                    card.Folder(), "no serial number");
    if (options.json) {
        PrintJson(console, Record{{"P2SerialNo", BytesFromText(serial)}});
    } else {
        console.WriteLine(BytesFromText(serial));
    }
    return kDone;
}

struct LastErrorOptions {
    std::string worker;
    bool json = false;
};

Status RunLastError(Console& console, const LastErrorOptions& options) {
    WorkerSession session(options.worker);
    const std::string sentence = BytesFromText(session->GetLastError());
    if (sentence.empty()) {
        session.RequireNoFailure("the worker", "tells nothing");
    }
    if (options.json) {
        PrintJson(console, Record{{"LastError", sentence}});
    } else if (sentence.empty()) {
        console.Message("a fresh worker answers and knows of no failure");
    } else {
        console.WriteLine(sentence);
    }
    return kDone;
}

} // namespace

void AddIconCommand(const Command& program) {
    const Command command = program.Add("icon", "Give a clip another icon");
    IconOptions& options = command.Runs(RunIcon);
    command.CardArgument(options.card);
    command.Argument("CLIP", options.clip, "The clip's name");
    command
        .Argument("PICTURE", options.picture,
                  "A bitmap of 24 bits a pixel, taken as it is (80 x 60 is usual), or "
                  "another picture or video, made to fit; the clip's first frame if left out")
        .Required(false);
    command.WorkerOption(options.worker);
    command.Example("nqp2 icon /media/card 0001AB picture.bmp");
}

void AddSerialCommand(const Command& program) {
    const Command command =
        program.Add("serial", "Print the serial number of the volume that holds a card");
    SerialOptions& options = command.Runs(RunSerial);
    command.CardArgument(options.card);
    command.JsonFlag(options.json);
    command.WorkerOption(options.worker);
    command.Example("nqp2 serial /media/card");
}

void AddLastErrorCommand(const Command& program) {
    const Command command =
        program.Add("last-error", "Ask the worker for the last failure it knows of");
    LastErrorOptions& options = command.Runs(RunLastError);
    command.JsonFlag(options.json);
    command.WorkerOption(options.worker);
    command.Example("nqp2 last-error");
}

} // namespace nqp2::tool
