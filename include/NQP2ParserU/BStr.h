// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

/// The automation string: wide text that can also be null. Value semantics.
class _bstr_t {
public:
    /// A null string.
    _bstr_t() = default;
    // NOLINTBEGIN(google-explicit-constructor): hosts pass plain text where these are expected
    /// A null pointer gives a null string.
    _bstr_t(const wchar_t* text) : m_text(text), m_null(text == nullptr) {}
    /// The same characters; never null, the empty text included.
    _bstr_t(const CString& text) : m_text(text), m_null(false) {}

    /// The characters, or a null pointer for a null string.
    operator const wchar_t*() const { return m_null ? nullptr : m_text.GetString(); }
    // NOLINTEND(google-explicit-constructor)
    /// The characters as a text; empty for a null string.
    [[nodiscard]] const CString& Text() const { return m_text; }
    /// Elements (code points), 0 for a null string.
    [[nodiscard]] unsigned length() const { return static_cast<unsigned>(m_text.GetLength()); }
    /// True for a null string, not for an empty one.
    bool operator!() const { return m_null; }

private:
    CString m_text;
    bool m_null = true;
};
