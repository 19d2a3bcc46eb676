// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/hash_format.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::offload {

enum class Operation { Offload, Seal, Verify };

/// What nqp2 asks for. Paths are whole; what was not given is empty.
struct Arguments {
    Operation operation = Operation::Offload;
    std::string card;
    std::vector<std::string> targets;
    std::string folder; ///< to seal or verify
    std::string name;
    std::vector<std::string> hashes; ///< as manifests name the formats
    std::vector<std::string> sums;
    std::uint32_t copies = 0;
    std::string log;
    std::string progress; ///< "bar", "lines", "json" or "none"
    bool noVerifySource = false;
    bool dryRun = false;
    bool append = false;
    bool json = false;
};

/// Reads the program's arguments: the operation, then "key=value" texts. Throws tool::Failure of
/// wrong usage for what it does not know.
Arguments ReadArguments(int count, const char* const* arguments);

/// Whether they ask for progress as objects of JSON, be they understood otherwise or not.
bool AskForObjects(int count, const char* const* arguments);

/// The formats of those names. Throws tool::Failure of wrong usage for one that there is not.
mhl::FormatSet FormatsNamed(const std::vector<std::string>& names);

} // namespace nqp2::offload
