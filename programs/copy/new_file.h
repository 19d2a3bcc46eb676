// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What all copies of files have in common.
namespace nqp2::copy {

/// Writes into a new file; runs of zeros become holes where the file system has such.
platform::IoStatus WriteOrLeaveHole(platform::FileWriter& writer, std::uint64_t position,
                                    std::string_view bytes);

/// Gives a new file its length and the time of change of another.
platform::IoStatus SetLengthAndTime(platform::FileWriter& writer, std::uint64_t size,
                                    const std::optional<platform::FileInfo>& time);

/// Whether both have the same time of change.
bool IsOfSameTime(const platform::FileInfo& one, const platform::FileInfo& other);

/// Cards without owners let no one set times, by which nothing is lost: success for that.
platform::IoStatus TimeKept(const platform::IoStatus& status);

/// Why something that is no file cannot make way for one: "PATH is in the way and is a link."
std::string InTheWay(const std::string& path, platform::EntryKind kind);

/// What a file of that size takes, at most, on a medium whose file system gives space in clusters.
std::uint64_t SpaceTaken(std::uint64_t size);

/// "There is too little space in FOLDER ..."
std::string TooLittleSpace(const std::string& folder, std::uint64_t needed, std::uint64_t free);

} // namespace nqp2::copy
