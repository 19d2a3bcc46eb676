// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "manual/man_page.h"
#include "nqp2/command.h"

#include "NQP2ParserU/TextBytes.h"
#include "NQP2ParserU/WholeFile.h"

#include <optional>
#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

constexpr const char* kSource = "NQP2ParserU " NQP2_TOOL_VERSION;

struct ManualOptions {
    std::string folder;
    std::optional<Command> program;
};

void WritePages(const manual::CommandPage& page, const std::vector<std::string>& also,
                const std::string& folder) {
    const std::string path = folder + '/' + manual::ManName(page) + ".1";
    if (const std::string why = WriteWholeFile(path, manual::ManPage(page, kSource, also));
        !why.empty()) {
        throw Failure(path, "cannot be written", why);
    }
    const std::vector<std::string> above = {manual::ManName(page)};
    for (const manual::CommandPage& command : page.commands) {
        if (command.isListed) {
            WritePages(command, above, folder);
        }
    }
}

Status RunManual(Console& /*console*/, const ManualOptions& options) {
    WritePages(options.program->ProgramPage(), {"nqp2-worker"}, options.folder);
    return kDone;
}

} // namespace

void AddManualCommand(const Command& program) {
    const Command command = program.Add("manual", "Write the pages of the manual");
    ManualOptions& options = command.Runs(RunManual);
    options.program = program;
    command.ValueOption("--to", options.folder, "FOLDER", "The folder that receives them")
        .Required();
    command.Unlisted();
}

} // namespace nqp2::tool
