// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_layout.h"
#include "NQP2ParserU/CardFinder.h"
#include "platform/place.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Which folders are cards, and where they lie.
namespace nqp2::cards {

/// A folder that makes the one that holds it a card.
struct CardMark {
    CardKind kind;
    media::CardName folder;
};

/// All of them; the first kind that a root has is what it is taken for.
std::span<const CardMark> CardMarks();

/// The first step of a mark's folder: "AVCHD" of "AVCHD/BDMV".
std::string_view FirstStep(const CardMark& mark);

/// Whether a folder has the name of that in which memory cards keep such folders.
bool IsPrivate(const std::string& path);

/// Whether a set of kinds holds one.
bool Holds(std::uint32_t kinds, CardKind kind);

/// The marks that a folder holds, of those kinds; one for each scan that reads it.
std::vector<const CardMark*> MarksIn(const platform::Place& root, std::uint32_t kinds);

/// The card that a mark makes of its root.
FoundCard CardAt(const platform::Place& root, const CString& written, const CardMark& mark);

} // namespace nqp2::cards
