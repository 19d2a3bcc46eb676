// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

namespace nqp2::offload {

/// What a copy's name can tell of its card; "" what is not known of it.
struct NameFacts {
    std::string card; ///< name of the card's folder
    std::string serial;
    std::string date; ///< of the first shot, "2026-11-21"
    std::string project;
};

/// Whether the text holds {counter}.
bool HasCounter(std::string_view pattern);

/// The text with its tokens filled in; values that file systems of cards do not take in names are
/// made fit. Throws Failure for a token that is unknown or has no value here.
std::string FillName(const std::string& pattern, const NameFacts& facts, int counter);

/// Why a name cannot be that of a copy; "" when it can.
std::string FaultOfName(const std::string& name);

/// Whether a folder's name says nothing about the card that it is.
bool IsGenericName(std::string_view name);

} // namespace nqp2::offload
