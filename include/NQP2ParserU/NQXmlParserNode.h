// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/BStr.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/NodeHandle.h"
#include "NQP2ParserU/Variant.h"

/// The node handle that CNQXmlParser's queries return; see NodeHandle.
class NQP2_API CNQXmlParserNode : public nqp2::NodeHandle {
public:
    /// The first node that `xpath` selects from the current node, as a handle; empty when there is
    /// none. Throws _com_error for a path that cannot be evaluated.
    CNQXmlParserNode GetNode(_bstr_t xpath);
    /// All of them, as a list handle before its first node; empty when there are none.
    CNQXmlParserNode GetNodeList(_bstr_t xpath);
    /// The current node's children, texts and white space included; empty when it has none.
    CNQXmlParserNode GetChildNodeList();
    /// Name and text of the current node. Returns 1, or 0 without a node.
    int GetNodeInfo(CString& name, _variant_t& value);
};
