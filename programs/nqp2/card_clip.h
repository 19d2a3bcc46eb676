// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/ReadyParser.h"

#include <optional>
#include <string>

namespace nqp2::tool {

/// What a P2 card tells of one of its clips.
struct CardClip {
    CString name; ///< in the letters that the card has it in
    CString identifier;
};

/// The clip of that name, in any letter case; nothing where the card has no metadata of it that can
/// be read.
std::optional<CardClip> FindCardClip(ReadyParser& parser, const Card& card, const CString& name);

/// Whether the card has files of a clip, in any letter case, be its metadata as they may.
bool HasFilesOfClip(const Card& card, const CString& name);

/// Throws the failure to report for a clip that the card has not or cannot tell, with the name that
/// may have been meant, or with `advice`. `place` is put behind the name.
[[noreturn]] void ThrowNoCardClip(const Card& card, const CString& name, const std::string& place,
                                  const std::string& advice);

} // namespace nqp2::tool
