// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The least that any reader of a card has to do. Failures throw std::system_error: a floor that
/// skipped something would flatter what it is compared with.
namespace nqp2::bench {

/// Folder of the card's clip metadata, with a trailing separator.
std::string ClipFolder(const std::string& card);

/// Names of the card's metadata files in the file system's order.
std::vector<std::string> ListClips(const std::string& card);
/// The same for any folder, its path with a trailing separator.
std::vector<std::string> ListFolder(const std::string& path);

/// Lists the clip folder, then opens, reads and closes file after file into one buffer. Returns
/// how many bytes came.
std::size_t ReadOneAfterAnother(const std::string& card);
std::size_t ReadFolder(const std::string& folder);
/// The same for the first 64 KB of each file.
std::size_t ReadHeads(const std::string& folder);

/// The metadata files' bytes.
std::vector<std::string> ReadDocuments(const std::string& card);

} // namespace nqp2::bench
