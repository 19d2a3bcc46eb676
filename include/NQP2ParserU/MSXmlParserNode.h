// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/BStr.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/NodeHandle.h"

/// The node handle that CMarkupMSXML's queries return; see NodeHandle.
class NQP2_API CMSXmlParserNode : public nqp2::NodeHandle {
public:
    /// The first node that `xpath` selects from the current node, as a handle; empty when there is
    /// none. Throws _com_error for a path that cannot be evaluated.
    CMSXmlParserNode GetNode(_bstr_t xpath);
    /// All of them, as a list handle before its first node; empty when there are none.
    CMSXmlParserNode GetNodeList(_bstr_t xpath);
};
