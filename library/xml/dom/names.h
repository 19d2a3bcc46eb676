// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"

#include <string>
#include <string_view>

/// What may stand where in an XML 1.0 document. All texts are UTF-8.
namespace nqp2::dom {

/// A name with at most one prefix (Namespaces in XML, production QName).
bool IsQualifiedName(const std::string& text);
/// Characters that XML allows, well-formed UTF-8 throughout.
bool IsXmlText(std::string_view text);
bool IsComment(std::string_view text);
bool IsInstruction(std::string_view target, std::string_view data);
/// Whether the document stays well-formed with that text in the node. The XML declaration does not
/// change.
bool MayHold(const Node& node, const std::string& text);

} // namespace nqp2::dom
