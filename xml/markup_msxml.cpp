// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "platform/diagnostics.h"
#include "platform/PathText.h"
#include "platform/unicode.h"
#include "xml/document_creation.h"
#include "xml/dom/document.h"

#include <exception>
#include <string>

using nqp2::platform::MessageBoxW;
using nqp2::platform::TextFromUtf8;
using nqp2::platform::Utf8FromText;

namespace {

std::string Described(const nqp2::dom::ParseError& error) {
    std::string text = error.reason;
    if (error.line > 0) {
        text += " (line " + std::to_string(error.line) + ", column " +
                std::to_string(error.linepos) + ")";
    }
    return text;
}

} // namespace

CMarkupMSXML::CMarkupMSXML() {
    x_CreateInstance();
}

CMarkupMSXML::CMarkupMSXML(const wchar_t* szDoc) {
    if (x_CreateInstance() >= 0) {
        SetDoc(szDoc);
    }
}

CMarkupMSXML::CMarkupMSXML(const CMarkupMSXML& other) = default;
CMarkupMSXML& CMarkupMSXML::operator=(const CMarkupMSXML& other) = default;
CMarkupMSXML::~CMarkupMSXML() = default;

HRESULT CMarkupMSXML::x_CreateInstance() {
    m_pParentPos = nullptr;
    m_pDoc = nullptr;
    const HRESULT result = nqp2::xml::CreateReaderDocument(m_pDoc);
    if (result == REGDB_E_CLASSNOTREG) {
        MessageBoxW(L"MSXML not registered");
    } else if (result < 0) {
        MessageBoxW(L"Unable to create MSXML instance");
    }
    m_pParentPos = m_pDoc != nullptr ? m_pDoc->DocumentNode() : nullptr;
    return result;
}

int CMarkupMSXML::x_Replace(const std::function<bool(nqp2::dom::Document&)>& load) {
    if (m_pDoc == nullptr) {
        return 0;
    }
    // The cursor lets go of the old tree first, so that its memory can serve the new one.
    ResetMainPos();
    m_pParentPos = nullptr;
    bool loaded = false;
    try {
        loaded = load(*m_pDoc);
    } catch (const std::exception& error) {
        m_pDoc->Fail(error.what());
    }
    ResetPos();
    return loaded ? 1 : x_ParseError();
}

int CMarkupMSXML::SetDoc(const wchar_t* szDoc) {
    ResetPos();
    if (szDoc == nullptr || *szDoc == L'\0') {
        return x_CreateInstance() >= 0 ? 1 : 0;
    }
    return x_Replace(
        [&](nqp2::dom::Document& document) { return document.LoadText(Utf8FromText(szDoc)); });
}

int CMarkupMSXML::Load(const wchar_t* szFileName) {
    return x_Replace([&](nqp2::dom::Document& document) {
        return document.LoadFile(nqp2::PosixPath(CString(szFileName)));
    });
}

int CMarkupMSXML::LoadBytes(std::string_view bytes) {
    return x_Replace([&](nqp2::dom::Document& document) { return document.LoadBytes(bytes); });
}

int CMarkupMSXML::LoadXml(const wchar_t* sz) {
    return Load(sz);
}

int CMarkupMSXML::Save(const wchar_t* szFileName) {
    if (m_pDoc == nullptr) {
        return 0;
    }
    return m_pDoc->Save(nqp2::PosixPath(CString(szFileName))) ? 1 : 0;
}

int CMarkupMSXML::x_ParseError() {
    m_strError = TextFromUtf8(Described(m_pDoc->LastError()));
    m_strError.TrimRight(L"\r\n");
    return 0;
}

CString CMarkupMSXML::GetError() {
    return m_strError;
}
