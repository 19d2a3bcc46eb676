// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/BStr.h"
#include "platform/Export.h"
#include "platform/FixedTypes.h"

#include <concepts>
#include <cstdint>

using VARTYPE = std::uint16_t;
inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_NULL = 1;
inline constexpr VARTYPE VT_I4 = 3;
inline constexpr VARTYPE VT_R8 = 5;
inline constexpr VARTYPE VT_BSTR = 8;
inline constexpr VARTYPE VT_BOOL = 11;
inline constexpr VARTYPE VT_I8 = 20;

/// The automation variant: empty, null, text, a whole number, a real number or a truth value.
class NQP2_API _variant_t {
public:
    _variant_t() = default;
    // NOLINTBEGIN(google-explicit-constructor): hosts pass plain values where these are expected
    _variant_t(const wchar_t* text) : vt(VT_BSTR), m_text(text) {}
    _variant_t(const CString& text) : vt(VT_BSTR), m_text(text) {}
    _variant_t(const _bstr_t& text) : vt(VT_BSTR), m_text(text) {}
    _variant_t(std::int32_t value) : vt(VT_I4), m_whole(value) {}
    _variant_t(std::int64_t value) : vt(VT_I8), m_whole(value) {}
    _variant_t(double value) : vt(VT_R8), m_real(value) {}
    /// Takes a bool only: a pointer of any other kind is no truth value.
    template <std::same_as<bool> Truth>
    _variant_t(Truth value) : vt(VT_BOOL), m_whole(value ? 1 : 0) {}
    // NOLINTEND(google-explicit-constructor)

    /// The type of what is held. Setting it to VT_EMPTY or VT_NULL hides the value from Text and
    /// ToText.
    VARTYPE vt = VT_EMPTY;

    /// The held text; empty unless `vt` is VT_BSTR. No conversion.
    [[nodiscard]] CString Text() const;
    /// The value as text: numbers in decimal (reals with up to 15 significant digits), truth
    /// values as "-1" and "0", empty as "".
    /// Throws _com_error (DISP_E_TYPEMISMATCH) for null and unknown types.
    [[nodiscard]] CString ToText() const;

private:
    _bstr_t m_text;
    std::int64_t m_whole = 0;
    double m_real = 0.0;
};
