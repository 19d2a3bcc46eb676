// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/BStr.h"
#include "NQP2ParserU/ComError.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/DomPointers.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/Variant.h"

namespace nqp2 {

/// What the handles of both XML class families share: a node list with its iterator, a current
/// node, or both. A handle is a value; it is empty when it holds neither. On a fresh list handle
/// the first question for a value moves onto the list's first node, as GetNextNode would.
class NQP2_API NodeHandle {
public:
    /// An empty handle.
    NodeHandle() noexcept = default;

    /// Sets the current node; the list stays.
    void SetNode(IXMLDOMNodePtr node) noexcept;
    /// Sets the list; the current node stays.
    void SetNodeList(IXMLDOMNodeListPtr list) noexcept;

    /// 1 when there is neither a node nor a list.
    int IsEmpty() const noexcept;
    /// Moves to the list's next node. Returns 1, or 0 without a list and at its end (the current
    /// node is then null).
    int GetNextNode();
    /// Moves on and reads the texts of the child elements NAME and VALUE, "" where one is missing.
    /// Returns as GetNextNode; the texts are untouched when it returns 0.
    int GetNextNode(CString& name, CString& value);

    /// The text of what `xpath` selects from the current node, as a text variant; an empty variant
    /// for a missing node with `bIgnoreMissing` nonzero; else VT_NULL.
    _variant_t GetNodeVal(CString xpath, int bIgnoreMissing);
    /// The current node's own text in the same form.
    _variant_t GetNodeVal(int bIgnoreMissing) noexcept;
    /// The same as plain text; "" wherever there is none.
    CString GetNodeText(CString xpath, int bIgnoreMissing) noexcept;
    /// The same of the current node.
    CString GetNodeText(int bIgnoreMissing) noexcept;

    /// The current node as XML; "" when there is none.
    _bstr_t GetXml();
    /// Replaces what the current node holds by the text. Returns 0 without a current node (a list
    /// is not advanced) and when the node takes no text.
    int SetNodeText(const CString& text);
    /// Rewrites the VALUE of the parameter block (element PARAM) that is the current node. Returns
    /// 0, with nothing changed, for any other node and for an empty or null value.
    int SetParamVal(_variant_t val);

protected:
    /// Reads the text of what `xpath` selects, "" meaning the current node itself, into `val`.
    /// Returns 1, also for a missing node that may be missing (`val` is then empty); else 0.
    int GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing);
    /// The current node, taken from the list first when there is none yet; null when there is
    /// nothing to take.
    const IXMLDOMNodePtr& CurrentNode() noexcept;
    ///@{
    /// Queries relative to the current node; null when nothing is selected. Throw _com_error for a
    /// path that cannot be evaluated.
    IXMLDOMNodePtr SelectNode(const _bstr_t& xpath);
    IXMLDOMNodeListPtr SelectNodeList(const _bstr_t& xpath);
    ///@}

    IXMLDOMNodeListPtr m_pNodeList; ///< null when there is none
    IXMLDOMNodePtr m_pNode;         ///< null when there is none
};

} // namespace nqp2
