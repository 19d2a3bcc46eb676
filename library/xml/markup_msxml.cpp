// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "platform/diagnostics.h"
#include "platform/guard.h"
#include "platform/place.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"

#include <exception>
#include <memory>
#include <new>
#include <string>

using nqp2::dom::Document;
using nqp2::platform::Guarded;
using nqp2::platform::MessageBoxW;
using nqp2::platform::PathOnDisk;
using nqp2::platform::TextFromUtf8;
using nqp2::platform::Utf8FromText;

namespace {

/// S_OK with a document, or why there is none.
HRESULT CreateDocument(IXMLDOMDocumentPtr& document) {
    try {
        document = std::make_shared<Document>(nqp2::dom::SelectionRule::Names::Qualified);
        return S_OK;
    } catch (const std::bad_alloc&) {
        ++nqp2::platform::timesOutOfMemory;
        return E_OUTOFMEMORY;
    }
}

} // namespace

CMarkupMSXML::CMarkupMSXML() noexcept {
    x_CreateInstance();
}

CMarkupMSXML::CMarkupMSXML(const wchar_t* szDoc) noexcept {
    if (x_CreateInstance() >= 0) {
        SetDoc(szDoc);
    }
}

CMarkupMSXML::CMarkupMSXML(const CMarkupMSXML& other) noexcept = default;
CMarkupMSXML& CMarkupMSXML::operator=(const CMarkupMSXML& other) noexcept = default;
CMarkupMSXML::~CMarkupMSXML() = default;

HRESULT CMarkupMSXML::x_CreateInstance() {
    return Guarded(E_OUTOFMEMORY, [&] {
        m_pParentPos = nullptr;
        m_pDoc = nullptr;
        const HRESULT result = CreateDocument(m_pDoc);
        m_pParentPos = m_pDoc != nullptr ? m_pDoc->DocumentNode() : nullptr;
        if (result == REGDB_E_CLASSNOTREG) {
            MessageBoxW(L"MSXML not registered");
        } else if (result < 0) {
            MessageBoxW(L"Unable to create MSXML instance");
        }
        return result;
    });
}

template <class Operation>
int CMarkupMSXML::x_Replace(const Operation& load) {
    if (m_pDoc == nullptr) {
        return 0;
    }
    // The cursor lets go of the old tree first, so that its memory can serve the new one.
    ResetMainPos();
    m_pParentPos = nullptr;
    bool loaded = false;
    try {
        loaded = load(*m_pDoc);
    } catch (const std::bad_alloc&) {
        m_pDoc->FailForMemory();
    } catch (const std::exception& error) {
        m_pDoc->Fail(error.what());
    } catch (...) {
        m_pDoc->Fail("the file cannot be looked for"); // a host's own lookup of a drive or path
    }
    ResetPos();
    return loaded ? 1 : x_ParseError();
}

int CMarkupMSXML::SetDoc(const wchar_t* szDoc) {
    return Guarded(0, [&] {
        ResetPos();
        if (szDoc == nullptr || *szDoc == L'\0') {
            return x_CreateInstance() >= 0 ? 1 : 0;
        }
        return x_Replace(
            [&](Document& document) { return document.LoadText(Utf8FromText(szDoc)); });
    });
}

int CMarkupMSXML::Load(const wchar_t* szFileName) {
    return Guarded(0, [&] {
        return x_Replace(
            [&](Document& document) { return document.LoadFile(PathOnDisk(szFileName)); });
    });
}

int CMarkupMSXML::x_LoadFile(const std::string& path) noexcept {
    return Guarded(
        0, [&] { return x_Replace([&](Document& document) { return document.LoadFile(path); }); });
}

int CMarkupMSXML::LoadBytes(std::string_view bytes) {
    return Guarded(0, [&] {
        return x_Replace([&](Document& document) { return document.LoadBytes(bytes); });
    });
}

int CMarkupMSXML::LoadXml(const wchar_t* sz) noexcept {
    return Load(sz);
}

int CMarkupMSXML::Save(const wchar_t* szFileName) {
    return Guarded(
        0, [&] { return m_pDoc != nullptr && m_pDoc->Save(PathOnDisk(szFileName)) ? 1 : 0; });
}

int CMarkupMSXML::x_ParseError() {
    return Guarded(0, [&] {
        m_strError.Empty();
        m_strError = TextFromUtf8(m_pDoc->LastError().reason);
        m_strError.TrimRight(L"\r\n");
        return 0;
    });
}

CString CMarkupMSXML::GetError() noexcept {
    return m_strError;
}
