// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libxml/tree.h>

namespace nqp2::dom {

/// Whether a schema can be compiled at little cost. Definitions that name others, which name others
/// again, make content models that grow with every level as powers do; so do unions and groups of
/// attributes. What they come to is counted, not made.
bool IsAffordable(const xmlDoc& schema);

} // namespace nqp2::dom
