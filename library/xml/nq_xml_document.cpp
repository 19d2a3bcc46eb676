// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQXmlParser.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/diagnostics.h"
#include "platform/file_system.h"
#include "platform/guard.h"
#include "platform/place.h"
#include "platform/unicode.h"
#include "xml/document_queries.h"
#include "xml/dom/document.h"
#include "xml/dom/schema.h"
#include "xml/dom/serialize.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

using nqp2::dom::Document;
using nqp2::dom::Node;
using nqp2::dom::ParseError;
using nqp2::dom::SelectionRule;
using nqp2::platform::ComGuarded;
using nqp2::platform::Guarded;
using nqp2::platform::IoError;
using nqp2::platform::IoStatus;
using nqp2::platform::OutputDebugStringW;
using nqp2::platform::PathOnDisk;
using nqp2::platform::TextFromUtf8;
using nqp2::platform::Utf8FromText;

namespace {

// Looked for in the process's current folder.
constexpr const wchar_t* kRenderSchema = L"render.xsd";

// The two differ in the white space before their line breaks: kept, hosts rely on it.
constexpr const wchar_t* kFileError =
    L"Error:\nCode = 0x%x\t\t\t \nSource = Line : %ld; Char : %ld\t\t\t \n"
    L"Error Description = %s\n";
constexpr const wchar_t* kTextError =
    L"Error:\nCode = 0x%x\t\t\t\t\t\nSource = Line : %ld; Char : %ld\t\t\t\t\t\n"
    L"Error Description = %s\n";

void Tell(const wchar_t* pattern, const ParseError& error) {
    CString text;
    text.Format(pattern, error.errorCode, error.line, error.linepos, TextFromUtf8(error.reason));
    OutputDebugStringW(text);
}

} // namespace

int CNQXmlParser::LoadXml(CString path) {
    return Guarded(0, [&] {
        EnsureDocument();
        if (!m_pDoc->LoadFile(PathOnDisk(path))) {
            Tell(kFileError, m_pDoc->LastError());
            return 0;
        }
        BindRoot(L":P2Main");
        return 1;
    });
}

int CNQXmlParser::SetXml(_bstr_t xml) {
    return Guarded(0, [&] {
        EnsureDocument();
        if (!m_pDoc->LoadText(Utf8FromText(xml.Text().View()))) {
            Tell(kTextError, m_pDoc->LastError());
            return 0;
        }
        RequireRenderSchema();
        m_pCurrentNode = m_pDoc->Content()->Share(m_pDoc->Content()->Root());
        return 1;
    });
}

void CNQXmlParser::RequireRenderSchema() {
    std::string schema;
    const IoStatus status =
        nqp2::platform::Files().Read(PathOnDisk(kRenderSchema), nqp2::dom::kLargestSchema, schema);
    if (status.error == IoError::NotFound || status.error == IoError::Denied) {
        return;
    }
    if (!status) {
        throw _com_error(E_FAIL);
    }
    const ParseError error = Validate(*m_pDoc->DocumentNode(), schema);
    if (error.errorCode != 0) {
        CString text;
        text.Format(L"Error code: %d\nReason: %s", static_cast<std::int32_t>(error.errorCode),
                    TextFromUtf8(error.reason));
        OutputDebugStringW(text);
        throw _com_error(E_FAIL);
    }
}

int CNQXmlParser::AddXmlFragment(_bstr_t xml) {
    return Guarded(0, [&] {
        Document part(SelectionRule::Names::Namespace);
        if (!part.LoadText(Utf8FromText(xml.Text().View()))) {
            Tell(kTextError, part.LastError());
            return 0;
        }
        if (m_pCurrentNode == nullptr) {
            throw _com_error(E_POINTER);
        }
        nqp2::dom::Tree& tree = *m_pCurrentNode->tree;
        tree.Tidy();
        return tree.Insert(*m_pCurrentNode, tree.Copy(*part.Content()->Root()), nullptr) ? 1 : 0;
    });
}

void CNQXmlParser::ReadRoot(_bstr_t prefixSuffix) {
    ComGuarded([&] { BindRoot(prefixSuffix.Text()); });
}

void CNQXmlParser::BindRoot(const CString& prefixSuffix) {
    Node* const root = m_pDoc != nullptr ? m_pDoc->Content()->Root() : nullptr;
    if (root == nullptr) {
        throw _com_error(E_POINTER);
    }
    std::vector<Node*> attributes;
    CString declarations;
    for (Node* each = root->FirstAttribute(); each != nullptr; each = each->Next()) {
        attributes.push_back(each);
        // Three characters are compared, so that names like "xml:lang" count: kept.
        if (!each->Name().starts_with("xml")) {
            continue;
        }
        CString name = TextFromUtf8(each->Name());
        if (name == L"xmlns") {
            name += prefixSuffix;
        }
        declarations += name + L"='" + TextFromUtf8(each->Content()) + L"' ";
    }
    m_pRootAttributes = std::make_shared<nqp2::dom::NodeList>(root->tree->shared_from_this(),
                                                              std::move(attributes));
    BindPrefixes(declarations);
}

std::int32_t CNQXmlParser::SetSelectNamespace(_bstr_t decl) {
    return ComGuarded(E_OUTOFMEMORY, [&] { return BindPrefixes(decl.Text()); });
}

std::int32_t CNQXmlParser::BindPrefixes(const CString& declarations) {
    if (m_pDoc == nullptr) {
        throw _com_error(E_POINTER);
    }
    return m_pDoc->SetSelectionNamespaces(Utf8FromText(declarations.View())) ? S_OK : E_FAIL;
}

int CNQXmlParser::SaveXml(CString path) {
    return Guarded(0, [&] { return m_bReady != 0 && m_pDoc->Save(PathOnDisk(path)) ? 1 : 0; });
}

_bstr_t CNQXmlParser::GetXml() {
    return Guarded(_bstr_t(L""), [&] {
        return m_bReady != 0 ? _bstr_t(TextFromUtf8(Serialize(*m_pDoc->DocumentNode())))
                             : _bstr_t(L"");
    });
}

IXMLDOMDocumentPtr CNQXmlParser::GetDocumentPtr() noexcept {
    return m_bReady != 0 ? m_pDoc : nullptr;
}

int CNQXmlParser::GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing) {
    return Guarded(0, [&] {
        if (m_bReady == 0) {
            return 0;
        }
        val = _variant_t();
        const IXMLDOMNodePtr node = nqp2::xml::NodeAt(m_pDoc, xpath);
        if (node == nullptr) {
            return bIgnoreMissing != 0 ? 1 : 0;
        }
        val = nqp2::xml::TextOf(*node);
        return 1;
    });
}

_variant_t CNQXmlParser::GetNodeVal(CString xpath, int bIgnoreMissing) {
    return Guarded(_variant_t::Null(), [&] {
        _variant_t value;
        return GetNodeVal(_bstr_t(xpath), value, bIgnoreMissing) != 0 ? value : _variant_t::Null();
    });
}

CString CNQXmlParser::GetNodeText(CString xpath, int bIgnoreMissing) {
    return Guarded(CString(), [&] { return GetNodeVal(xpath, bIgnoreMissing).Text(); });
}

CString CNQXmlParser::GetNodeAttribute(CString xpath, CString attribute) {
    return Guarded(CString(), [&] {
        const IXMLDOMNodePtr node = nqp2::xml::NodeAt(m_pDoc, _bstr_t(xpath));
        return node != nullptr ? nqp2::xml::AttributeOf(*node, attribute) : CString();
    });
}

CNQXmlParserNode CNQXmlParser::GetNode(_bstr_t xpath) {
    return ComGuarded(CNQXmlParserNode(), [&] {
        CNQXmlParserNode handle;
        handle.SetNode(nqp2::xml::NodeAt(m_pDoc, xpath));
        return handle;
    });
}

CNQXmlParserNode CNQXmlParser::GetNodeList(_bstr_t xpath) {
    return ComGuarded(CNQXmlParserNode(), [&] {
        CNQXmlParserNode handle;
        handle.SetNodeList(nqp2::xml::NodesAt(m_pDoc, xpath));
        return handle;
    });
}

CNQXmlParserNode CNQXmlParser::FindParamNode(_bstr_t xpath, CString name) {
    return ComGuarded(CNQXmlParserNode(), [&] {
        CNQXmlParserNode handle;
        handle.SetNode(nqp2::xml::ParamNodeAt(m_pDoc, xpath, name));
        return handle;
    });
}
