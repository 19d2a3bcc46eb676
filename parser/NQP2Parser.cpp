// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "parser/NQP2Parser.h"

#include "media/card_status.h"
#include "media/identifier.h"
#include "platform/guard.h"
#include "platform/module.h"
#include "xml/MarkupMSXML.h"
#include "xml/NQXmlParser.h"

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

CNQP2Parser::CNQP2Parser() {
    InitP2CmgrDll();
}

CNQP2Parser::~CNQP2Parser() {
    if (m_hP2Cmgr != nullptr) {
        nqp2::platform::FreeModule(m_hP2Cmgr);
    }
}

CNQP2Parser& CNQP2Parser::operator=(const CNQP2Parser& other) = default;

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
        m_pfnDDP2CLogSense = nullptr;
    }
}

__int64 CNQP2Parser::Init() {
    return Guarded(kRead, [&] {
        if (m_pXmlBuilder == nullptr) {
            m_pXmlBuilder = new CNQXmlParser;
        }
        if (m_pMarkup == nullptr) {
            m_pMarkup = new CMarkupMSXML;
        }
        return kRead;
    });
}

__int64 CNQP2Parser::Release() {
    delete m_pXmlBuilder;
    m_pXmlBuilder = nullptr;
    delete m_pMarkup;
    m_pMarkup = nullptr;
    return kRead;
}

void CNQP2Parser::SetImpCallBack(ImpCallBack /*callback*/, void* /*context*/) {}

int CNQP2Parser::SetSystemType(eP2_VIDEO_STANDARD /*standard*/) {
    return 1;
}

CString CNQP2Parser::GetLastError() {
    return {};
}

int CNQP2Parser::GetP2BaseClipInfo(const CString& /*path*/, NQP2BaseClipInfo& /*info*/) {
    return 0;
}

CString CNQP2Parser::CreateUMID(_GUID guid) {
    return Guarded(CString(), [&] { return nqp2::media::IdentifierFromGuid(guid); });
}

GUID CNQP2Parser::GuidFromUMID(const CString& identifier) {
    return nqp2::media::GuidFromIdentifier(identifier);
}
