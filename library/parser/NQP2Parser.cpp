// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQP2Parser.h"

#include "bridge/worker_proxy.h"
#include "clips/card_reader.h"
#include "media/card_status.h"
#include "media/identifier.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/NQXmlParser.h"
#include "platform/guard.h"
#include "platform/module.h"

using nqp2::media::kRead;
using nqp2::platform::Guarded;

namespace {

// The system folder is asked for with a buffer of this many characters; a longer one is not used.
constexpr int kMaxSystemFolder = 255;

template <class Function>
Function EntryPoint(nqp2::platform::ModuleHandle module, const char* name) {
    return reinterpret_cast<Function>(nqp2::platform::ModuleEntry(module, name));
}

} // namespace

CNQP2Parser::CNQP2Parser() noexcept {
    MakeProxy();
    // Registers for progress at once; the function to be called is set later.
    SetImpCallBack(nullptr, nullptr);
    Guarded([&] { InitP2CmgrDll(); }); // a host's lookup of the system folder may throw
}

CNQP2Parser::~CNQP2Parser() {
    CloseProxy();
    if (m_hP2Cmgr != nullptr) {
        nqp2::platform::FreeModule(m_hP2Cmgr);
    }
}

CNQP2Parser& CNQP2Parser::operator=(const CNQP2Parser& other) noexcept {
    if (m_pSupport != other.m_pSupport) {
        if (other.m_pSupport != nullptr) {
            other.m_pSupport->AddHolder();
        }
        DropProxy();
        m_pSupport = other.m_pSupport;
    }
    m_pXmlBuilder = other.m_pXmlBuilder;
    m_pMarkup = other.m_pMarkup;
    m_hP2Cmgr = other.m_hP2Cmgr;
    m_pfnDDP2CInit = other.m_pfnDDP2CInit;
    m_pfnDDP2CLogSense = other.m_pfnDDP2CLogSense;
    return *this;
}

void CNQP2Parser::MakeProxy() {
    Guarded([&] {
        if (m_pSupport == nullptr) {
            m_pSupport = new CTNQ264BitSupport;
            // Without a worker the operations that need one say so.
            static_cast<void>(m_pSupport->Open());
        }
    });
}

void CNQP2Parser::CloseProxy() noexcept {
    if (m_pSupport != nullptr) {
        Guarded([&] { m_pSupport->Close(); });
        DropProxy();
    }
}

// Nobody reaches a proxy without holder any more, so that it is closed as well.
void CNQP2Parser::DropProxy() noexcept {
    if (m_pSupport != nullptr && m_pSupport->DropHolder()) {
        Guarded([&] { m_pSupport->Close(); });
        delete m_pSupport;
    }
    m_pSupport = nullptr;
}

void CNQP2Parser::InitP2CmgrDll() {
    const CString folder = nqp2::platform::SystemFolder();
    if (folder.IsEmpty() || folder.GetLength() >= kMaxSystemFolder) {
        return;
    }
    m_hP2Cmgr = nqp2::platform::LoadModule(folder + L"\\p2cmgr.dll");
    if (m_hP2Cmgr == nullptr) {
        return;
    }
    m_pfnDDP2CInit = EntryPoint<decltype(m_pfnDDP2CInit)>(m_hP2Cmgr, "DDP2CInit");
    m_pfnDDP2CLogSense = EntryPoint<decltype(m_pfnDDP2CLogSense)>(m_hP2Cmgr, "DDP2CLogSense");
    if (m_pfnDDP2CInit == nullptr) {
        nqp2::platform::FreeModule(m_hP2Cmgr);
        m_hP2Cmgr = nullptr;
        m_pfnDDP2CLogSense = nullptr; // it would lead into what was just unloaded
    }
}

__int64 CNQP2Parser::Init() {
    return Guarded(kRead, [&] {
        MakeProxy();
        if (m_pXmlBuilder == nullptr) {
            m_pXmlBuilder = new CNQXmlParser;
        }
        if (m_pMarkup == nullptr) {
            m_pMarkup = new nqp2::clips::CardReader;
        }
        return kRead;
    });
}

__int64 CNQP2Parser::Release() noexcept {
    CloseProxy();
    delete m_pXmlBuilder;
    m_pXmlBuilder = nullptr;
    delete m_pMarkup;
    m_pMarkup = nullptr;
    return kRead;
}

CString CNQP2Parser::CreateUMID(_GUID guid) {
    return Guarded(CString(), [&] { return nqp2::media::IdentifierFromGuid(guid); });
}

GUID CNQP2Parser::GuidFromUMID(const CString& identifier) {
    return Guarded(GUID(), [&] { return nqp2::media::GuidFromIdentifier(identifier); });
}
