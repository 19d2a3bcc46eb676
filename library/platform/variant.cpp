// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/Variant.h"

#include "NQP2ParserU/ComError.h"

// Out of line so that every module that throws or catches it shares one type description.
_com_error::~_com_error() = default;

CString _variant_t::Text() const {
    return vt == VT_BSTR ? m_text.Text() : CString();
}

CString _variant_t::ToText() const {
    CString text;
    switch (vt) {
    case VT_EMPTY:
        return text;
    case VT_BSTR:
        return m_text.Text();
    case VT_BOOL:
        return m_whole != 0 ? L"-1" : L"0";
    case VT_I4:
    case VT_UI4:
    case VT_I8:
        return CString(nqp2::WholeText(m_whole));
    case VT_UI8:
        return CString(nqp2::WholeText(static_cast<std::uint64_t>(m_whole)));
    case VT_R8:
        text.Format(L"%.15g", m_real);
        return text;
    default:
        throw _com_error(DISP_E_TYPEMISMATCH);
    }
}
