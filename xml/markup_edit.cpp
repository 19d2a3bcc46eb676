// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "platform/ComError.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/names.h"

#include <string>

using nqp2::dom::Node;
using nqp2::dom::NodeType;
using nqp2::dom::Tree;
using nqp2::platform::Utf8FromText;

namespace {

constexpr const char* kDeclaration = R"(version="1.0" encoding="UTF-8" standalone="no")";

/// Nothing may stand before the XML declaration: the place behind it then.
Node* PastDeclaration(Node* before) {
    const bool declaration = before != nullptr && before->type == NodeType::ProcessingInstruction &&
                             before->name == "xml";
    return declaration ? before->next : before;
}

/// A number as the text that an element or attribute holds.
template <class Number>
CString Written(Number value) {
    return _variant_t(value).ToText();
}

} // namespace

int CMarkupMSXML::x_PlaceNode(x_Level level, x_Place place, Node& node) {
    const bool atMain = level == x_Level::Main;
    const IXMLDOMNodePtr& container = atMain ? m_pParentPos : m_pMainPos;
    const IXMLDOMNodePtr& reference = atMain ? m_pMainPos : m_pChildPos;
    if (container == nullptr) {
        return 0;
    }
    Node* before = nullptr;
    if (place == x_Place::Before) {
        before = reference != nullptr ? reference.get() : container->firstChild;
    } else if (reference != nullptr) {
        before = reference->next;
    }
    if (!container->tree->Insert(*container, node, PastDeclaration(before))) {
        return 0;
    }
    (atMain ? m_pMainPos : m_pChildPos) = node.tree->Share(&node);
    return 1;
}

int CMarkupMSXML::x_AddElem(x_Level level, x_Place place, const wchar_t* name,
                            const wchar_t* value) {
    if (level == x_Level::Main) {
        ResetChildPos();
    }
    const IXMLDOMNodePtr& container = level == x_Level::Main ? m_pParentPos : m_pMainPos;
    const std::string bytes = Utf8FromText(name);
    const std::string text = Utf8FromText(value);
    if (container == nullptr || !nqp2::dom::IsQualifiedName(bytes) || !nqp2::dom::IsXmlText(text)) {
        return 0;
    }
    Tree& tree = *container->tree;
    Node& element = tree.CreateElement(bytes, Utf8FromText(m_strDefaultNamespace.View()));
    if (!text.empty()) {
        tree.Insert(element, tree.CreateCharacters(NodeType::Text, text), nullptr);
    }
    return x_PlaceNode(level, place, element);
}

int CMarkupMSXML::AddElem(const wchar_t* name, const wchar_t* value) {
    return x_AddElem(x_Level::Main, x_Place::After, name, value);
}
int CMarkupMSXML::AddElem(const wchar_t* name, int value) {
    return AddElem(name, Written(value));
}
int CMarkupMSXML::AddElem(const wchar_t* name, __int64 value) {
    return AddElem(name, Written(value));
}
int CMarkupMSXML::AddElem(const wchar_t* name, double value) {
    return AddElem(name, Written(value));
}

int CMarkupMSXML::InsertElem(const wchar_t* name, const wchar_t* value) {
    return x_AddElem(x_Level::Main, x_Place::Before, name, value);
}
int CMarkupMSXML::InsertElem(const wchar_t* name, int value) {
    return InsertElem(name, Written(value));
}
int CMarkupMSXML::InsertElem(const wchar_t* name, __int64 value) {
    return InsertElem(name, Written(value));
}
int CMarkupMSXML::InsertElem(const wchar_t* name, double value) {
    return InsertElem(name, Written(value));
}

int CMarkupMSXML::AddChildElem(const wchar_t* name, const wchar_t* value) {
    return x_AddElem(x_Level::Child, x_Place::After, name, value);
}
int CMarkupMSXML::AddChildElem(const wchar_t* name, int value) {
    return AddChildElem(name, Written(value));
}
int CMarkupMSXML::AddChildElem(const wchar_t* name, __int64 value) {
    return AddChildElem(name, Written(value));
}
int CMarkupMSXML::AddChildElem(const wchar_t* name, double value) {
    return AddChildElem(name, Written(value));
}

int CMarkupMSXML::InsertChildElem(const wchar_t* name, const wchar_t* value) {
    return x_AddElem(x_Level::Child, x_Place::Before, name, value);
}
int CMarkupMSXML::InsertChildElem(const wchar_t* name, int value) {
    return InsertChildElem(name, Written(value));
}
int CMarkupMSXML::InsertChildElem(const wchar_t* name, __int64 value) {
    return InsertChildElem(name, Written(value));
}
int CMarkupMSXML::InsertChildElem(const wchar_t* name, double value) {
    return InsertChildElem(name, Written(value));
}

int CMarkupMSXML::CreateMainRoot(const wchar_t* name, const wchar_t* value) {
    if (m_pDoc == nullptr) {
        return 0;
    }
    // A document that is made anew starts at its own top, whatever the cursor stood on before.
    ResetMainPos();
    m_pParentPos = nullptr;
    m_pDoc->Clear();
    ResetPos();
    Tree& tree = *m_pDoc->Content();
    tree.Insert(tree.DocumentNode(), tree.CreateInstruction("xml", kDeclaration), nullptr);
    return AddElem(name, value);
}

int CMarkupMSXML::x_SetAttrib(const IXMLDOMNodePtr& element, const wchar_t* name,
                              const wchar_t* value) {
    const std::string bytes = Utf8FromText(name);
    const std::string text = Utf8FromText(value);
    if (element == nullptr || element->type != NodeType::Element ||
        !nqp2::dom::IsQualifiedName(bytes) || !nqp2::dom::IsXmlText(text)) {
        return 0;
    }
    element->tree->SetAttribute(*element, bytes, text);
    return 1;
}

int CMarkupMSXML::SetAttrib(const wchar_t* name, const wchar_t* value) {
    return x_SetAttrib(m_pMainPos, name, value);
}
int CMarkupMSXML::SetAttrib(const wchar_t* name, int value) {
    return SetAttrib(name, Written(value));
}
int CMarkupMSXML::AddAttrib(const wchar_t* name, const wchar_t* value) {
    return SetAttrib(name, value);
}
int CMarkupMSXML::AddAttrib(const wchar_t* name, int value) {
    return SetAttrib(name, value);
}

int CMarkupMSXML::SetChildAttrib(const wchar_t* name, const wchar_t* value) {
    return x_SetAttrib(m_pChildPos, name, value);
}
int CMarkupMSXML::SetChildAttrib(const wchar_t* name, int value) {
    return SetChildAttrib(name, Written(value));
}
int CMarkupMSXML::AddChildAttrib(const wchar_t* name, const wchar_t* value) {
    return SetChildAttrib(name, value);
}
int CMarkupMSXML::AddChildAttrib(const wchar_t* name, int value) {
    return SetChildAttrib(name, value);
}

void CMarkupMSXML::SetDefaultNamespace(const wchar_t* ns) {
    m_strDefaultNamespace = ns;
}

int CMarkupMSXML::SetData(const wchar_t* value, int cdata) {
    return x_SetData(m_pMainPos, value, cdata);
}
int CMarkupMSXML::SetData(int value, int cdata) {
    return SetData(Written(value), cdata);
}
int CMarkupMSXML::SetData(__int64 value, int cdata) {
    return SetData(Written(value), cdata);
}
int CMarkupMSXML::SetData(double value, int cdata) {
    return SetData(Written(value), cdata);
}

int CMarkupMSXML::SetChildData(const wchar_t* value, int cdata) {
    return x_SetData(m_pChildPos, value, cdata);
}
int CMarkupMSXML::SetChildData(int value, int cdata) {
    return SetChildData(Written(value), cdata);
}
int CMarkupMSXML::SetChildData(__int64 value, int cdata) {
    return SetChildData(Written(value), cdata);
}
int CMarkupMSXML::SetChildData(double value, int cdata) {
    return SetChildData(Written(value), cdata);
}

int CMarkupMSXML::RemoveElem() {
    ResetChildPos();
    return x_Remove(m_pMainPos, true);
}

int CMarkupMSXML::RemoveChildElem() {
    return x_Remove(m_pChildPos, true);
}

int CMarkupMSXML::x_Remove(IXMLDOMNodePtr& position, bool elementsOnly) {
    if (position == nullptr || (elementsOnly && position->type != NodeType::Element)) {
        return 0;
    }
    Node* previous = position->previous;
    while (elementsOnly && previous != nullptr && previous->type != NodeType::Element) {
        previous = previous->previous;
    }
    Tree& tree = *position->tree;
    tree.Unlink(*position);
    position = tree.Share(previous);
    return 1;
}
