// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/open_catalogue.h"

#include "catalogue/postgresql/open_postgresql.h"
#include "catalogue/schema.h"
#include "catalogue/sqlite/sqlite_connection.h"
#include "platform/folder.h"
#include "platform/medium.h"

#include <fmt/core.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <system_error>

namespace nqp2::catalogue {
namespace {

/// In the order of DatabaseFault.
constexpr std::array<const char*, 7> kProblems = {
    "is in use by another program",
    "has no space left: nothing was changed",
    "is damaged or no catalogue",
    "cannot be opened or written",
    "cannot be reached, or not any more: what was not finished is undone, run it again",
    "is being changed by others all the time: run it again",
    "cannot be used",
};

std::string FolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().native();
    return folder.empty() ? "." : folder;
}

/// Whether other machines reach the folder too.
bool IsOnNetwork(const std::string& folder) {
    std::unique_ptr<platform::Folder> opened;
    platform::MediumFacts facts;
    return platform::Files().OpenFolder(folder, opened) && opened->Medium(facts) &&
           !facts.server.empty();
}

std::unique_ptr<Connection> OpenFile(tool::Console& console, const std::string& path,
                                     Missing missing) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        if (missing == Missing::Refuse) {
            throw tool::Failure(path, "is not there", "nqp2 catalog add makes it");
        }
        std::filesystem::create_directories(FolderOf(path), error);
        if (error) {
            throw tool::Failure(FolderOf(path), "cannot be made", error.message());
        }
    }
    const bool isShared = IsOnNetwork(FolderOf(path));
    if (isShared) {
        console.Message(fmt::format("nqp2: {}: is on a network file system, whose locks may fail: "
                                    "use it from one machine at a time, or a server",
                                    path));
    }
    return OpenSqlite(path, isShared);
}

} // namespace

std::unique_ptr<Connection> OpenCatalogue(tool::Console& console, const Address& address,
                                          Missing missing) {
    std::unique_ptr<Connection> connection = address.isServer
                                                 ? OpenPostgresql(address.target)
                                                 : OpenFile(console, address.target, missing);
    BringUpToDate(*connection, address.name);
    return connection;
}

tool::Failure FailureOf(const DatabaseError& error, const std::string& name) {
    return {name, kProblems.at(static_cast<std::size_t>(error.Fault())), error.what()};
}

} // namespace nqp2::catalogue
