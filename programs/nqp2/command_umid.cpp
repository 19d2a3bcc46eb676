// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command.h"
#include "nqp2/guid_form.h"

#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <string>

namespace nqp2::tool {
namespace {

GUID GuidFromArgument(const std::string& text) {
    const std::optional<GUID> guid = GuidFromForm(text);
    if (!guid) {
        throw Failure(text, "is no GUID", "expected 8-4-4-4-12 hexadecimal digits", kUsage);
    }
    return *guid;
}

Status RunUmid(Console& console, const std::string& text) {
    CNQP2Parser parser;
    const GUID guid = text.empty() ? GUID{} : GuidFromArgument(text);
    const CString identifier = parser.CreateUMID(guid);
    if (identifier.IsEmpty()) {
        throw Failure("umid", "no identifier", "the system gave no random bytes");
    }
    console.WriteLine(BytesFromText(identifier));
    return kDone;
}

} // namespace

void AddUmidCommand(CLI::App& program, Action& chosen) {
    const auto guid = std::make_shared<std::string>();
    CLI::App* command = program.add_subcommand("umid", "Make the identifier text of a clip");
    command
        ->add_option("GUID", *guid,
                     "8-4-4-4-12 or 32 hexadecimal digits; a fresh one if left out or zero")
        ->type_name("");
    SetExample(*command, "nqp2 umid 6f9619ff-8b86-d011-b42d-00c04fc964ff");
    command->callback([guid, command, &chosen] {
        // An empty argument is a variable that somebody forgot to set.
        if (command->count("GUID") > 0 && guid->empty()) {
            throw Failure("", "is no GUID", "expected 8-4-4-4-12 hexadecimal digits", kUsage);
        }
        chosen = [guid](Console& console) { return RunUmid(console, *guid); };
    });
}

} // namespace nqp2::tool
