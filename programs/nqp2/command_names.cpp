// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_entry.h"
#include "nqp2/command.h"
#include "nqp2/input_text.h"

#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/TextBytes.h"

#include <optional>
#include <string>

namespace nqp2::tool {
namespace {

Status RunFreeName(Console& console, const std::string& argument) {
    const Card card = EnterCard(console, argument);
    ReadyParser parser;
    DiskFormat format;
    // A folder that is no card has every name free: ask first whether it is one.
    if (parser->GetDiskFormat(card.Root(), format) != 0) {
        card.ThrowUnreadable();
    }
    CString name;
    if (parser->CheckName(name, card.Root()) == 0) {
        throw Failure(card.Folder(), "no clip name is free", "every candidate is taken");
    }
    console.WriteLine(BytesFromText(name));
    return kDone;
}

struct UmidOptions {
    std::string guid;
    std::optional<Option> given;
};

GUID GuidFromArgument(const std::string& text) {
    const std::optional<GUID> guid = GuidFromForm(text);
    if (!guid) {
        throw Failure(text, "is no GUID", "expected 8-4-4-4-12 hexadecimal digits", kUsage);
    }
    return *guid;
}

Status RunUmid(Console& console, const UmidOptions& options) {
    CNQP2Parser parser;
    // An empty argument is a variable that was not set.
    const GUID guid = options.given->IsGiven() ? GuidFromArgument(options.guid) : GUID{};
    const CString identifier = parser.CreateUMID(guid);
    if (identifier.IsEmpty()) {
        throw Failure("umid", "no identifier", "the system gave no random bytes");
    }
    console.WriteLine(BytesFromText(identifier));
    return kDone;
}

} // namespace

void AddFreeNameCommand(const Command& program) {
    const Command command =
        program.Add("free-name", "Print the next clip name that is free on a card");
    command.CardArgument(command.Runs(RunFreeName));
    command.Example("nqp2 free-name /media/card");
}

void AddUmidCommand(const Command& program) {
    const Command command = program.Add("umid", "Make the identifier text of a clip");
    UmidOptions& options = command.Runs(RunUmid);
    options.given =
        command
            .Argument("GUID", options.guid,
                      "8-4-4-4-12 or 32 hexadecimal digits; a fresh one if left out or zero")
            .Required(false);
    command.Example("nqp2 umid 6f9619ff-8b86-d011-b42d-00c04fc964ff");
}

} // namespace nqp2::tool
