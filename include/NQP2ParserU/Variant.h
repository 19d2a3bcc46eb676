// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// The automation variant.

#include "NQP2ParserU/BStr.h"
#include "NQP2ParserU/ComError.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/FixedTypes.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// Which of its types a variant holds.
using VARTYPE = std::uint16_t;
///@{
/// Nothing, null, a 32-bit number, a real number, text, a truth value, and whole numbers of 32 and
/// 64 bits: the types that a variant can hold.
inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_NULL = 1;
inline constexpr VARTYPE VT_I4 = 3;
inline constexpr VARTYPE VT_R8 = 5;
inline constexpr VARTYPE VT_BSTR = 8;
inline constexpr VARTYPE VT_BOOL = 11;
inline constexpr VARTYPE VT_UI4 = 19;
inline constexpr VARTYPE VT_I8 = 20;
inline constexpr VARTYPE VT_UI8 = 21;
///@}

namespace nqp2 {

/// A whole number of any type in decimal digits. Takes no memory.
class WholeText {
public:
    /// The digits of the number, behind "-" for a negative one.
    template <std::integral Number>
    explicit constexpr WholeText(Number value) noexcept {
        const bool isNegative = value < Number{0};
        auto left = static_cast<std::uint64_t>(value);
        left = isNegative ? 0 - left : left;
        do {
            m_text[--m_first] = static_cast<wchar_t>(L'0' + static_cast<wchar_t>(left % 10));
            left /= 10;
        } while (left > 0);
        if (isNegative) {
            m_text[--m_first] = L'-';
        }
    }

    // NOLINTNEXTLINE(google-explicit-constructor): stands where plain text does
    /// The digits, ended by a zero; they are this object's.
    operator const wchar_t*() const noexcept { return m_text + m_first; }

private:
    static constexpr std::size_t kLongest = 20;
    wchar_t m_text[kLongest + 1] = {};
    std::size_t m_first = kLongest;
};

} // namespace nqp2

/// The automation variant: empty, null, text, a whole number, a real number or a truth value.
class NQP2_API _variant_t {
public:
    /// Of type VT_EMPTY.
    _variant_t() = default;
    // NOLINTBEGIN(google-explicit-constructor): hosts pass plain values where these are expected
    ///@{
    /// A text; from null one that is null, and reads as "".
    _variant_t(const wchar_t* text) : vt(VT_BSTR), m_text(text) {}
    _variant_t(const CString& text) : vt(VT_BSTR), m_text(text) {}
    _variant_t(const _bstr_t& text) : vt(VT_BSTR), m_text(text) {}
    ///@}
    ///@{
    /// A number of that type: VT_I4, VT_I8 or VT_R8.
    _variant_t(std::int32_t value) : vt(VT_I4), m_whole(value) {}
    _variant_t(std::int64_t value) : vt(VT_I8), m_whole(value) {}
    _variant_t(double value) : vt(VT_R8), m_real(value) {}
    ///@}
    /// Whole numbers of all other types, unsigned ones included.
    template <std::integral Number>
    requires(!std::same_as<Number, bool>) _variant_t(Number value)
        : vt(TypeOf<Number>()), m_whole(static_cast<std::int64_t>(value)) {}
    /// Takes a bool only: a pointer of any other kind is no truth value.
    template <std::same_as<bool> Truth>
    _variant_t(Truth value) : vt(VT_BOOL), m_whole(value ? 1 : 0) {}
    // NOLINTEND(google-explicit-constructor)

    /// The value of type VT_NULL, which has no text.
    static _variant_t Null() noexcept {
        _variant_t null;
        null.vt = VT_NULL;
        return null;
    }

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
    template <class Number>
    static constexpr VARTYPE TypeOf() {
        constexpr bool kIsWide = sizeof(Number) > sizeof(std::int32_t);
        if constexpr (std::is_signed_v<Number> || sizeof(Number) < sizeof(std::int32_t)) {
            return kIsWide ? VT_I8 : VT_I4;
        } else {
            return kIsWide ? VT_UI8 : VT_UI4;
        }
    }

    _bstr_t m_text;
    std::int64_t m_whole = 0;
    double m_real = 0.0;
};
