// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/history.h"

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

/// A chain of this size has tens of thousands of generations.
inline constexpr std::uint64_t kMaxChainBytes = std::uint64_t{16} * 1024 * 1024;
/// Manifests are read in pieces of so many bytes.
inline constexpr std::size_t kManifestPiece = std::size_t{256} * 1024;

/// The history of one folder, which may lie below the outermost scope.
struct HistoryPart {
    std::string folder; ///< below the outermost scope; "" for that itself
    bool hasFolder = false;
    bool hasChain = false;
    std::vector<ChainEntry> chain;
    Hashes chainHash; ///< of the chain's bytes as they were read
    std::vector<Generation> generations;
    std::vector<std::string> unlisted;
    std::vector<Reference> references; ///< of the newest generation, below the outermost scope
    IgnoreList ignored;

    /// A path below its folder as one below the outermost scope.
    [[nodiscard]] std::string PathOf(std::string_view path) const {
        return folder.empty() ? std::string(path) : folder + "/" + std::string(path);
    }
};

struct HistoryState {
    std::shared_ptr<platform::Folder> scope;
    std::vector<HistoryPart> parts;  ///< in the order of their folders, the outermost one first
    std::vector<std::string> nested; ///< folders of all parts but the first
    Findings found;
    Tree expected;
    std::vector<std::uint32_t> recorded; ///< by node: the last generation of its part, from 1
    std::vector<bool> isGone;            ///< by node: renamed away
    std::vector<bool> hasFailed;         ///< by node: in the last generation that recorded it
    std::vector<bool> isCurrent;         ///< by node: the newest of its part has it, not failed
    IgnoreList ignored = IgnoreList::Default();
    FormatSet formats;

    void Add(bool isFault, std::string file, int line, std::string sentence) {
        found.Add({isFault, std::move(file), line, std::move(sentence)});
    }
};

/// Finds the folders that have histories and reads these.
void ReadHistories(HistoryState& state);

/// A folder's pattern as one of the outermost scope.
std::string PatternBelow(std::string_view folder, std::string_view pattern);

} // namespace nqp2::mhl
