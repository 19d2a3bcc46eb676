// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/console.h"
#include "nqp2/card.h"
#include "NQP2ParserU/CardFinder.h"

#include <cstdint>
#include <string>

namespace nqp2::tool {

/// What a command takes as a card.
struct CardEntry {
    std::uint32_t kinds = kP2Cards;
    /// A folder that lets the one that holds it count as it is, card or not; null for none.
    const wchar_t* own = nullptr;
    /// Whether a folder that leads to several cards is taken as it is, instead of refused.
    bool takesAny = false;
    const char* several = "give one of them"; ///< what to do about several
};

/// The card that the user's folder is or leads to; says which when that is another folder. A
/// folder that leads to none comes as it is. Throws the failure to report for one that leads to
/// several.
Card EnterCard(Console& console, const std::string& argument, const CardEntry& entry = {});

} // namespace nqp2::tool
