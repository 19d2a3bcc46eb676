// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/bitmap_file.h"
#include "nqp2/card.h"
#include "nqp2/command.h"
#include "nqp2/worker_path.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

struct IconOptions {
    std::string card;
    std::string clip;
    std::string picture;
    std::string worker;
};

Status RunIcon(const IconOptions& options) {
    Card(options.card).RequireContents();
    Bitmap bitmap = ReadBitmap(options.picture);
    WorkerSession session(options.worker);
    auto* const pixels = reinterpret_cast<unsigned char*>(bitmap.pixels.data());
    session.Require(session->CreateIconBmp(WorkerPath(options.card), TextFromBytes(options.clip),
                                           pixels, bitmap.size) == 1,
                    options.clip, "no icon was made");
    return kDone;
}

} // namespace

void AddIconCommand(CLI::App& program, Action& chosen) {
    const auto options = std::make_shared<IconOptions>();
    CLI::App* command = program.add_subcommand("icon", "Give a clip another icon");
    AddCardArgument(*command, options->card);
    command->add_option("CLIP", options->clip, "The clip's name")->type_name("")->required();
    command
        ->add_option("PICTURE", options->picture,
                     "A bitmap file (.bmp) of 24 bits a pixel; 80 x 60 is usual")
        ->type_name("")
        ->required();
    AddWorkerOption(*command, options->worker);
    SetExample(*command, "nqp2 icon /media/card 0001AB picture.bmp");
    command->callback(
        [options, &chosen] { chosen = [options](Console&) { return RunIcon(*options); }; });
}

} // namespace nqp2::tool
