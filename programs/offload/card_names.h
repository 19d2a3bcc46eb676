// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/card_identity.h"
#include "offload/name_tokens.h"

namespace nqp2::offload {

/// What a copy's name can tell of a card. `path` is the card's, whole; the project is looked for
/// when `pattern` asks for it.
NameFacts NameFactsOf(const std::string& path, const GivenFolder& given, const FolderIndex& index,
                      const CardIdentity& identity, const std::string& pattern);

} // namespace nqp2::offload
