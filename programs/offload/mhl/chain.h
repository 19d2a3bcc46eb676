// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/hash_format.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

inline constexpr std::string_view kHistoryFolder = "ascmhl";
inline constexpr std::string_view kChainFile = "ascmhl_chain.xml";
inline constexpr std::string_view kManifestEnding = ".mhl";

/// A generation in the chain.
struct ChainEntry {
    std::uint64_t number = 0; ///< from 1
    std::string name;         ///< of the manifest, beside the chain
    Hashes c4;                ///< of the manifest's bytes; empty when there was no valid one
    int line = 0;
};

struct Chain {
    std::vector<ChainEntry> entries; ///< as they stand in the file
    bool isWhole = false;            ///< read to its end
};

using ChainFault = std::function<void(int line, std::string sentence)>;

/// Reads a chain's bytes; whatever is wrong with it, also gaps in its numbers, is told. Entries
/// whose names are no plain names are left out.
Chain ReadChain(std::string_view bytes, const ChainFault& onFault);
/// The chain's bytes.
std::string ChainText(const std::vector<ChainEntry>& entries);

} // namespace nqp2::mhl
