// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MSXmlParserNode.h"

#include "platform/guard.h"

using nqp2::platform::ComGuarded;

CMSXmlParserNode CMSXmlParserNode::GetNode(_bstr_t xpath) {
    return ComGuarded(CMSXmlParserNode(), [&] {
        CMSXmlParserNode handle;
        handle.SetNode(SelectNode(xpath));
        return handle;
    });
}

CMSXmlParserNode CMSXmlParserNode::GetNodeList(_bstr_t xpath) {
    return ComGuarded(CMSXmlParserNode(), [&] {
        CMSXmlParserNode handle;
        handle.SetNodeList(SelectNodeList(xpath));
        return handle;
    });
}
