// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/commands.h"

#include "catalogue/open_catalogue.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace nqp2::catalogue {
namespace {

constexpr struct {
    std::string_view name;
    Command run;
    Missing missing;
} kCommands[] = {
    {"add", RunAdd, Missing::Make},         {"update", RunUpdate, Missing::Refuse},
    {"cards", RunCards, Missing::Refuse},   {"search", RunSearch, Missing::Refuse},
    {"show", RunShow, Missing::Refuse},     {"remove", RunRemove, Missing::Refuse},
    {"export", RunExport, Missing::Refuse},
};

} // namespace

tool::Status RunCommand(tool::Console& console, const Arguments& arguments,
                        const Address& address) {
    const auto* const command =
        std::find_if(std::begin(kCommands), std::end(kCommands),
                     [&](const auto& each) { return each.name == arguments.operation; });
    if (command == std::end(kCommands)) {
        throw tool::Failure(arguments.operation, "is not understood", "nqp2 runs this program",
                            tool::kUsage);
    }
    const std::unique_ptr<Connection> connection =
        OpenCatalogue(console, address, command->missing);
    return command->run(console, *connection, arguments);
}

} // namespace nqp2::catalogue
