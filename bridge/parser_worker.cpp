// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/ask_proxy.h"
#include "parser/NQP2Parser.h"

using nqp2::bridge::AskProxy;

using Proxy = CTNQ264BitSupport;

void CNQP2Parser::SetImpCallBack(ImpCallBack callback, void* context) {
    AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.SetImpCallBack(callback, context); });
}

int CNQP2Parser::SetSystemType(eP2_VIDEO_STANDARD standard) noexcept {
    AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.SetSystemType(standard); });
    return 1; // whatever came of it: kept, hosts rely on it
}

CString CNQP2Parser::GetLastError() noexcept {
    CString text;
    AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.GetLastError(text); });
    return text;
}

__int64 CNQP2Parser::GetP2SerialNumber(CString path, CString& serial) {
    return nqp2::bridge::ZeroWhenDone(
        AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.GetP2SerialNumber(path, serial); }));
}

int CNQP2Parser::GetP2BaseClipInfo(const CString& path, NQP2BaseClipInfo& info) {
    return AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.GetP2BaseClipInfo(path, info); });
}
