// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQXmlParser.h"

#include "media/families.h"
#include "platform/guard.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/node.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

using nqp2::dom::Document;
using nqp2::dom::Node;
using nqp2::dom::NodeType;
using nqp2::dom::SelectionRule;
using nqp2::dom::Tree;
using nqp2::media::CodeTypeFamily;
using nqp2::platform::Guarded;
using nqp2::platform::Utf8FromText;

namespace {

constexpr const char* kP2Declaration = R"(version="1.0" encoding="UTF-8" standalone="no")";
constexpr const char* kRenderDeclaration = R"(version="1.0" encoding="UTF-8")";
constexpr const char* kXsiNamespace = "http://www.w3.org/2001/XMLSchema-instance";

constexpr const wchar_t* kEditNamespace = L"urn:schemas-Professional-Plug-in:P2:EditMetadata:v2.0";
constexpr const wchar_t* kIntraNamespace = L"urn:schemas-Professional-Plug-in:P2:ClipMetadata:v3.1";
constexpr const wchar_t* kHighDefinitionNamespace =
    L"urn:schemas-Professional-Plug-in:P2:ClipMetadata:v3.0";

/// The namespace of a new P2 document, or null where none is chosen.
const wchar_t* NamespaceOf(eCodeType codeType, bool editList) {
    if (editList) {
        return kEditNamespace;
    }
    switch (nqp2::media::FamilyOf(codeType)) {
    case CodeTypeFamily::IntraHighRate:
    case CodeTypeFamily::IntraLowRate:
        return kIntraNamespace;
    case CodeTypeFamily::HighDefinition:
        return kHighDefinitionNamespace;
    default:
        return nullptr;
    }
}

/// UTF-8 of a text that a document may hold; throws for any other.
std::string Checked(const CString& text) {
    std::string bytes = Utf8FromText(text.View());
    if (!nqp2::dom::IsXmlText(bytes)) {
        throw _com_error(E_INVALIDARG);
    }
    return bytes;
}

std::string CheckedName(const CString& name) {
    std::string bytes = Utf8FromText(name.View());
    if (!nqp2::dom::IsQualifiedName(bytes)) {
        throw _com_error(E_FAIL);
    }
    return bytes;
}

bool IsSameAscii(std::wstring_view text, std::string_view bytes) {
    return std::equal(
        text.begin(), text.end(), bytes.begin(), bytes.end(), [](wchar_t ch, char byte) {
            return static_cast<unsigned char>(byte) < 0x80 && ch == static_cast<wchar_t>(byte);
        });
}

void AppendText(Node& element, const std::string& text) {
    Tree& tree = *element.tree;
    tree.Insert(element, tree.CreateCharacters(NodeType::Text, text), nullptr);
}

} // namespace

CNQXmlParser::CNQXmlParser() noexcept = default;
CNQXmlParser::CNQXmlParser(const CNQXmlParser& other) noexcept = default;
CNQXmlParser& CNQXmlParser::operator=(const CNQXmlParser& other) noexcept = default;
CNQXmlParser::~CNQXmlParser() = default;

bool CNQXmlParser::ParentStack::Push(const IXMLDOMNodePtr& node) noexcept {
    if (count >= kCapacity) {
        return false;
    }
    nodes[count++] = node;
    return true;
}

bool CNQXmlParser::ParentStack::Pop(IXMLDOMNodePtr& node) noexcept {
    if (count <= 0) {
        return false;
    }
    node = nodes[--count];
    return true;
}

void CNQXmlParser::EnsureDocument() {
    if (m_pDoc == nullptr) {
        m_pDoc = std::make_shared<Document>(SelectionRule::Names::Namespace);
        m_bReady = 1;
    }
}

void CNQXmlParser::StartDocument(const char* declaration, const char* rootName) {
    EnsureDocument();
    m_pCurrentNode = nullptr;
    m_pDoc->Clear();
    Tree& tree = *m_pDoc->Content();
    tree.Insert(tree.DocumentNode(), tree.CreateInstruction("xml", declaration), nullptr);
    Node& root = tree.CreateElement(rootName, {});
    tree.SetAttribute(root, "xmlns:xsi", kXsiNamespace);
    tree.Insert(tree.DocumentNode(), root, nullptr);
    m_pCurrentNode = tree.Share(&root);
}

int CNQXmlParser::CreateP2MainRoot(eCodeType codeType, int bEditList) {
    return Guarded(0, [&] {
        StartDocument(kP2Declaration, "P2Main");
        const wchar_t* const chosen = NamespaceOf(codeType, bEditList != 0);
        if (chosen != nullptr) {
            m_strNamespaceURI = chosen;
            m_pCurrentNode->tree->SetAttribute(*m_pCurrentNode, "xmlns",
                                               Utf8FromText(m_strNamespaceURI.View()));
        }
        return 1;
    });
}

int CNQXmlParser::CreateEPRRoot(CString eprType) {
    return Guarded(0, [&] {
        StartDocument(kRenderDeclaration, "EPRINFO");
        Tree& tree = *m_pCurrentNode->tree;
        tree.SetAttribute(*m_pCurrentNode, "xsi:noNamespaceSchemaLocation", "render.xsd",
                          kXsiNamespace);
        Node& child = tree.CreateElement("EPRTYPE", {});
        tree.Insert(*m_pCurrentNode, child, nullptr);
        AppendText(child, Checked(eprType));
        return 1;
    });
}

int CNQXmlParser::CreateRoot(CString name) {
    return Guarded(0, [&] {
        EnsureDocument();
        ReplaceRoot(name);
        return 1;
    });
}

void CNQXmlParser::ReplaceRoot(const CString& name) {
    Tree& tree = *m_pDoc->Content();
    tree.Tidy();
    Node& root = tree.CreateElement(CheckedName(name), {});
    m_pCurrentNode = tree.Share(&root);
    Node* const old = tree.Root();
    Node* const behind = old != nullptr ? old->Next() : nullptr;
    if (old != nullptr) {
        tree.Unlink(*old);
    }
    tree.Insert(tree.DocumentNode(), root, behind);
}

Node& CNQXmlParser::MakeElement(const CString& name, const CString& attrName,
                                const CString& attrValue) {
    if (m_pCurrentNode == nullptr) {
        throw _com_error(E_POINTER);
    }
    Tree& tree = *m_pCurrentNode->tree;
    tree.Tidy();
    std::string converted;
    std::string_view uri = m_pCurrentNode->Uri(); // mostly that of the new element as well
    if (!IsSameAscii(m_strNamespaceURI.View(), uri)) {
        converted = Utf8FromText(m_strNamespaceURI.View());
        uri = converted;
    }
    Node& element = tree.CreateElement(CheckedName(name), uri);
    if (!attrName.IsEmpty() && !attrValue.IsEmpty()) {
        tree.SetAttribute(element, CheckedName(attrName), Checked(attrValue));
    }
    return element;
}

int CNQXmlParser::AddChildElement(CString name, CString attrName, CString attrValue) {
    return Guarded(0, [&] {
        if (m_bReady == 0) {
            return 0;
        }
        // A full stack remembers nothing more, and no failure is told: kept, hosts rely on it.
        m_parentStack.Push(m_pCurrentNode);
        Node& element = MakeElement(name, attrName, attrValue);
        IXMLDOMNodePtr shared = element.tree->Share(&element);
        element.tree->Insert(*m_pCurrentNode, element, nullptr);
        m_pCurrentNode = std::move(shared);
        return 1;
    });
}

int CNQXmlParser::AddChildTextNode(CString name, _variant_t value, CString attrName,
                                   CString attrValue) {
    return Guarded(0, [&] {
        if (m_bReady == 0 || m_pCurrentNode == nullptr) {
            return 0;
        }
        const std::string text = Checked(value.ToText());
        Node& element = MakeElement(name, attrName, attrValue);
        AppendText(element, text);
        element.tree->Insert(*m_pCurrentNode, element, nullptr);
        return 1;
    });
}

int CNQXmlParser::BackToParent() noexcept {
    return m_bReady != 0 && m_parentStack.Pop(m_pCurrentNode) ? 1 : 0;
}

int CNQXmlParser::AddParam(CString name, _variant_t value) {
    return Guarded(0, [&] {
        const CString none;
        if (AddChildElement(L"PARAM", none, none) == 0) {
            return 0;
        }
        const auto written = [&](const wchar_t* part, const _variant_t& content) {
            return Guarded(false, [&] { return AddChildTextNode(part, content, none, none) != 0; });
        };
        const bool both = written(L"NAME", name) && written(L"VALUE", value);
        return BackToParent() != 0 && both ? 1 : 0;
    });
}
