// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::catalogue {

/// A file below a card as its folder lists it.
struct FileState {
    std::uint32_t folder = 0; ///< its place among the card's folders
    std::string name;
    std::uint64_t size = 0;
    std::int64_t modified = 0;
    std::uint32_t modifiedNanoseconds = 0;
};

/// What lies below a card: enough to tell whether anything has changed.
struct CardState {
    std::vector<std::string> folders; ///< paths below the card
    std::vector<FileState> files;     ///< by folder, sorted by name in each
    std::string digest;               ///< of all paths, sizes and times
    std::uint64_t bytes = 0;

    [[nodiscard]] std::string PathOf(const FileState& file) const {
        const std::string& folder = folders[file.folder];
        return folder.empty() ? file.name : folder + '/' + file.name;
    }
};

/// Lists a card's folders, and asks each file for size and time; no file is opened and no link
/// followed. Throws tool::Failure when a folder cannot be read: what is not seen must not pass for
/// gone.
CardState StateOf(const std::string& root);

/// A clip of a P2 card that has metadata.
struct ClipStamp {
    std::string name;   ///< of its metadata file, without the ending
    std::string digest; ///< of the sizes and times of all its files
};

/// By the names in capitals.
std::map<std::string, ClipStamp> ClipStamps(const CardState& state);
/// ASCII letters as capitals, as these names have them.
std::string Capitals(std::string_view text);

} // namespace nqp2::catalogue
