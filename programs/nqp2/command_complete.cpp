// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/display_text.h"
#include "nqp2/command.h"
#include "nqp2/completion/offers.h"
#include "nqp2/completion/typed_word.h"
#include "NQP2ParserU/DriveMap.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

struct CompleteOptions {
    std::vector<std::string> words;
    bool areTyped = false;
    std::optional<Command> program;
};

const char* NameOf(Offers::Paths paths) {
    switch (paths) {
    case Offers::Paths::Folders:
        return "folders";
    case Offers::Paths::Files:
        return "files";
    case Offers::Paths::None:
        break;
    }
    return "words";
}

/// The first line says what the shell completes itself, each other is a word, a tabulator, and what
/// it is.
Status RunComplete(Console& console, const CompleteOptions& options) {
    const manual::CommandPage page = options.program->ProgramPage();
    std::vector<std::string> words = options.words;
    for (std::size_t i = 0; i + 1 < words.size(); ++i) { // the last one is the shell's
        words[i] = MeaningOfTyped(words[i], options.areTyped ? Quotes::Kept : Quotes::Gone);
    }
    const Place place = FindPlace(page, words);
    for (const std::string& drive : place.drives) {
        static_cast<void>(MapDriveFromArgument(drive)); // of another form it leads nowhere
    }
    const Offers offers = OffersAt(place);
    console.WriteLine(NameOf(offers.paths));
    for (const manual::Meaning& word : offers.words) {
        console.Write(Printable(word.name, LineBreaks::Escape) + '\t' +
                      Printable(word.text, LineBreaks::Escape) + '\n');
    }
    return kDone;
}

} // namespace

void AddCompleteCommand(const Command& program) {
    const Command command = program.Add("complete", "Tell what may stand on a command line");
    CompleteOptions& options = command.Runs(RunComplete);
    options.program = program;
    command.Flag("--typed", options.areTyped, "The words still have their quotes");
    command.Argument("WORD", options.words, "Behind --: the words so far, the last one begun")
        .Required(false);
    command.Unlisted();
}

} // namespace nqp2::tool
