// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MSXmlParserNode.h"

CMSXmlParserNode CMSXmlParserNode::GetNode(_bstr_t xpath) {
    CMSXmlParserNode handle;
    handle.SetNode(SelectNode(xpath));
    return handle;
}

CMSXmlParserNode CMSXmlParserNode::GetNodeList(_bstr_t xpath) {
    CMSXmlParserNode handle;
    handle.SetNodeList(SelectNodeList(xpath));
    return handle;
}
