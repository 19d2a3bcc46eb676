// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"

#include <string>

namespace nqp2::dom {

/// The node as XML text in UTF-8. For a document, a line break (CR LF) follows each node beside
/// the document element and the element itself; nothing else is added to what the tree holds.
/// Namespace declarations that a node needs and does not carry itself are written where they are
/// first needed.
std::string Serialize(const Node& node);

struct Serialized {
    std::string text;
    /// Whether some part is of a size or name at which the parser may refuse the text: a name, a
    /// value, a depth, a prefix, the whole.
    bool isDoubtful = false;
};
/// The same for who wants to read the text again.
Serialized SerializeToReload(const Node& node);

} // namespace nqp2::dom
