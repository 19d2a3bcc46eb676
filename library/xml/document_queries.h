// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/BStr.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/DomPointers.h"
#include "xml/dom/parse_error.h"

/// Questions that both document classes answer in the same way. A null document answers nothing.
namespace nqp2::xml {

/// Why the document's last load failed. A null document is one that there was no memory for.
const dom::ParseError& LoadErrorOf(const IXMLDOMDocumentPtr& document) noexcept;

/// The attribute of that local name; "" when there is none.
CString AttributeOf(const dom::Node& node, const CString& localName);

/// Throw _com_error for a path that cannot be evaluated.
IXMLDOMNodePtr NodeAt(const IXMLDOMDocumentPtr& document, const _bstr_t& xpath);
/// Null when nothing is selected.
IXMLDOMNodeListPtr NodesAt(const IXMLDOMDocumentPtr& document, const _bstr_t& xpath);
/// Among the selected elements the first whose child NAME has exactly that text.
IXMLDOMNodePtr ParamNodeAt(const IXMLDOMDocumentPtr& document, const _bstr_t& xpath,
                           const CString& name);

} // namespace nqp2::xml
