// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// Pointers into XML documents.

#include <memory>

namespace nqp2::dom {
struct Node;
class NodeList;
class Document;
} // namespace nqp2::dom

///@{
/// Reference-counted pointer to what a document is made of. Opaque to hosts: it is handed out
/// and handed back. A node pointer keeps its whole tree alive.
using IXMLDOMNodePtr = std::shared_ptr<nqp2::dom::Node>;
using IXMLDOMNodeListPtr = std::shared_ptr<nqp2::dom::NodeList>;
using IXMLDOMDocumentPtr = std::shared_ptr<nqp2::dom::Document>;
///@}
