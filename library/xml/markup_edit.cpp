// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "platform/guard.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/node.h"

#include <string>
#include <utility>

using nqp2::WholeText;
using nqp2::dom::Node;
using nqp2::dom::NodeType;
using nqp2::dom::Tree;
using nqp2::platform::Guarded;
using nqp2::platform::Utf8FromText;

namespace {

constexpr const char* kDeclaration = R"(version="1.0" encoding="UTF-8" standalone="no")";

/// Nothing may come before the XML declaration: the place behind it then.
Node* PastDeclaration(Node* before) {
    const bool declaration = before != nullptr && before->type == NodeType::ProcessingInstruction &&
                             before->Name() == "xml";
    return declaration ? before->Next() : before;
}

} // namespace

// The node is shared before it is linked, so that nothing can fail in between.
int CMarkupMSXML::x_PlaceNode(x_Level level, x_Place place, IXMLDOMNodePtr node) {
    const bool atMain = level == x_Level::Main;
    const IXMLDOMNodePtr& container = atMain ? m_pParentPos : m_pMainPos;
    const IXMLDOMNodePtr& reference = atMain ? m_pMainPos : m_pChildPos;
    if (container == nullptr) {
        return 0;
    }
    Node* before = nullptr;
    if (place == x_Place::Before) {
        before = reference != nullptr ? reference.get() : container->FirstChild();
    } else if (reference != nullptr) {
        before = reference->Next();
    }
    if (!container->tree->Insert(*container, *node, PastDeclaration(before))) {
        return 0;
    }
    (atMain ? m_pMainPos : m_pChildPos) = std::move(node);
    return 1;
}

int CMarkupMSXML::x_AddElem(x_Level level, x_Place place, const wchar_t* name,
                            const wchar_t* value) noexcept {
    return Guarded(0, [&] {
        if (level == x_Level::Main) {
            ResetChildPos();
        }
        const IXMLDOMNodePtr& container = level == x_Level::Main ? m_pParentPos : m_pMainPos;
        const std::string bytes = Utf8FromText(name);
        const std::string text = Utf8FromText(value);
        if (container == nullptr || !nqp2::dom::IsQualifiedName(bytes) ||
            !nqp2::dom::IsXmlText(text)) {
            return 0;
        }
        Tree& tree = *container->tree;
        tree.Tidy();
        Node& element = tree.CreateElement(bytes, Utf8FromText(m_strDefaultNamespace.View()));
        if (!text.empty()) {
            tree.Insert(element, tree.CreateCharacters(NodeType::Text, text), nullptr);
        }
        return x_PlaceNode(level, place, tree.Share(&element));
    });
}

int CMarkupMSXML::AddElem(const wchar_t* name, const wchar_t* value) noexcept {
    return x_AddElem(x_Level::Main, x_Place::After, name, value);
}
int CMarkupMSXML::AddElem(const wchar_t* name, int value) noexcept {
    return AddElem(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::AddElem(const wchar_t* name, __int64 value) noexcept {
    return AddElem(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::AddElem(const wchar_t* name, double value) {
    return Guarded(0, [&] { return AddElem(name, _variant_t(value).ToText()); });
}

int CMarkupMSXML::InsertElem(const wchar_t* name, const wchar_t* value) noexcept {
    return x_AddElem(x_Level::Main, x_Place::Before, name, value);
}
int CMarkupMSXML::InsertElem(const wchar_t* name, int value) noexcept {
    return InsertElem(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::InsertElem(const wchar_t* name, __int64 value) noexcept {
    return InsertElem(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::InsertElem(const wchar_t* name, double value) {
    return Guarded(0, [&] { return InsertElem(name, _variant_t(value).ToText()); });
}

int CMarkupMSXML::AddChildElem(const wchar_t* name, const wchar_t* value) noexcept {
    return x_AddElem(x_Level::Child, x_Place::After, name, value);
}
int CMarkupMSXML::AddChildElem(const wchar_t* name, int value) noexcept {
    return AddChildElem(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::AddChildElem(const wchar_t* name, __int64 value) noexcept {
    return AddChildElem(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::AddChildElem(const wchar_t* name, double value) {
    return Guarded(0, [&] { return AddChildElem(name, _variant_t(value).ToText()); });
}

int CMarkupMSXML::InsertChildElem(const wchar_t* name, const wchar_t* value) noexcept {
    return x_AddElem(x_Level::Child, x_Place::Before, name, value);
}
int CMarkupMSXML::InsertChildElem(const wchar_t* name, int value) noexcept {
    return InsertChildElem(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::InsertChildElem(const wchar_t* name, __int64 value) noexcept {
    return InsertChildElem(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::InsertChildElem(const wchar_t* name, double value) {
    return Guarded(0, [&] { return InsertChildElem(name, _variant_t(value).ToText()); });
}

int CMarkupMSXML::CreateMainRoot(const wchar_t* name, const wchar_t* value) {
    return Guarded(0, [&] {
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
    });
}

int CMarkupMSXML::x_SetAttrib(const IXMLDOMNodePtr& element, const wchar_t* name,
                              const wchar_t* value) noexcept {
    return Guarded(0, [&] {
        const std::string bytes = Utf8FromText(name);
        const std::string text = Utf8FromText(value);
        if (element == nullptr || element->type != NodeType::Element ||
            !nqp2::dom::IsQualifiedName(bytes) || !nqp2::dom::IsXmlText(text)) {
            return 0;
        }
        element->tree->Tidy();
        element->tree->SetAttribute(*element, bytes, text);
        return 1;
    });
}

int CMarkupMSXML::SetAttrib(const wchar_t* name, const wchar_t* value) noexcept {
    return x_SetAttrib(m_pMainPos, name, value);
}
int CMarkupMSXML::SetAttrib(const wchar_t* name, int value) noexcept {
    return SetAttrib(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::AddAttrib(const wchar_t* name, const wchar_t* value) noexcept {
    return SetAttrib(name, value);
}
int CMarkupMSXML::AddAttrib(const wchar_t* name, int value) noexcept {
    return SetAttrib(name, value);
}

int CMarkupMSXML::SetChildAttrib(const wchar_t* name, const wchar_t* value) noexcept {
    return x_SetAttrib(m_pChildPos, name, value);
}
int CMarkupMSXML::SetChildAttrib(const wchar_t* name, int value) noexcept {
    return SetChildAttrib(name, static_cast<const wchar_t*>(WholeText(value)));
}
int CMarkupMSXML::AddChildAttrib(const wchar_t* name, const wchar_t* value) noexcept {
    return SetChildAttrib(name, value);
}
int CMarkupMSXML::AddChildAttrib(const wchar_t* name, int value) noexcept {
    return SetChildAttrib(name, value);
}

void CMarkupMSXML::SetDefaultNamespace(const wchar_t* ns) {
    Guarded([&] {
        m_strDefaultNamespace.Empty();
        m_strDefaultNamespace = ns;
    });
}

int CMarkupMSXML::SetData(const wchar_t* value, int cdata) noexcept {
    return x_SetData(m_pMainPos, value, cdata);
}
int CMarkupMSXML::SetData(int value, int cdata) noexcept {
    return SetData(static_cast<const wchar_t*>(WholeText(value)), cdata);
}
int CMarkupMSXML::SetData(__int64 value, int cdata) noexcept {
    return SetData(static_cast<const wchar_t*>(WholeText(value)), cdata);
}
int CMarkupMSXML::SetData(double value, int cdata) {
    return Guarded(0, [&] { return SetData(_variant_t(value).ToText(), cdata); });
}

int CMarkupMSXML::SetChildData(const wchar_t* value, int cdata) noexcept {
    return x_SetData(m_pChildPos, value, cdata);
}
int CMarkupMSXML::SetChildData(int value, int cdata) noexcept {
    return SetChildData(static_cast<const wchar_t*>(WholeText(value)), cdata);
}
int CMarkupMSXML::SetChildData(__int64 value, int cdata) noexcept {
    return SetChildData(static_cast<const wchar_t*>(WholeText(value)), cdata);
}
int CMarkupMSXML::SetChildData(double value, int cdata) {
    return Guarded(0, [&] { return SetChildData(_variant_t(value).ToText(), cdata); });
}

int CMarkupMSXML::RemoveElem() noexcept {
    return x_RemoveMain(true);
}

int CMarkupMSXML::RemoveChildElem() noexcept {
    return x_Remove(m_pChildPos, true);
}

int CMarkupMSXML::RemoveNode() noexcept {
    return x_RemoveMain(false);
}

int CMarkupMSXML::x_RemoveMain(bool elementsOnly) noexcept {
    ResetChildPos();
    return x_Remove(m_pMainPos, elementsOnly);
}

int CMarkupMSXML::x_Remove(IXMLDOMNodePtr& position, bool elementsOnly) noexcept {
    return Guarded(0, [&] {
        if (position == nullptr || (elementsOnly && position->type != NodeType::Element)) {
            return 0;
        }
        Node* previous = position->Previous();
        while (elementsOnly && previous != nullptr && previous->type != NodeType::Element) {
            previous = previous->Previous();
        }
        Tree& tree = *position->tree;
        tree.Tidy();
        IXMLDOMNodePtr next = tree.Share(previous);
        tree.Unlink(*position);
        position = std::move(next);
        return 1;
    });
}
