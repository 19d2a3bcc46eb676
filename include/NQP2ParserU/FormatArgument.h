// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <concepts>
#include <cstdint>
#include <string_view>

class CString;

namespace nqp2 {

/// One typed argument of CString::Format; remembers the width so that a negative number
/// printed with an unsigned conversion shows its own width.
class FormatArgument {
public:
    /// What the argument is, by which a conversion decides how to write it.
    enum class Kind { Signed, Unsigned, Real, Character, Text };

    ///@{
    /// Remembers the value; a text is not copied and must outlive this. Null is the empty text.
    template <std::signed_integral T>
    FormatArgument(T value) // NOLINT(google-explicit-constructor)
        : m_kind(Kind::Signed), m_bytes(sizeof(T)), m_signed(value) {}
    template <std::unsigned_integral T>
    FormatArgument(T value) // NOLINT(google-explicit-constructor)
        : m_kind(Kind::Unsigned), m_bytes(sizeof(T)), m_unsigned(value) {}
    FormatArgument(double value) // NOLINT(google-explicit-constructor)
        : m_kind(Kind::Real), m_bytes(sizeof(value)), m_real(value) {}
    FormatArgument(wchar_t value) // NOLINT(google-explicit-constructor)
        : m_kind(Kind::Character), m_bytes(sizeof(value)), m_signed(value) {}
    FormatArgument(const wchar_t* value) // NOLINT(google-explicit-constructor)
        : m_kind(Kind::Text), m_text(value != nullptr ? value : L"") {}
    template <class T>
    requires std::same_as<T, CString>
    FormatArgument(const T& value) // NOLINT(google-explicit-constructor)
        : m_kind(Kind::Text), m_text(value.View()) {}
    ///@}

    /// Which of the values below counts.
    [[nodiscard]] Kind GetKind() const { return m_kind; }
    /// Width in bytes of an integer argument.
    [[nodiscard]] std::size_t GetBytes() const { return m_bytes; }
    /// The value of a signed number or a character; else 0.
    [[nodiscard]] std::int64_t Signed() const { return m_signed; }
    /// The value of an unsigned number; else 0.
    [[nodiscard]] std::uint64_t Unsigned() const { return m_unsigned; }
    /// The value of a real number; else 0.
    [[nodiscard]] double Real() const { return m_real; }
    /// The characters of a text; else empty.
    [[nodiscard]] std::wstring_view Text() const { return m_text; }

private:
    Kind m_kind;
    std::size_t m_bytes = 0;
    std::int64_t m_signed = 0;
    std::uint64_t m_unsigned = 0;
    double m_real = 0.0;
    std::wstring_view m_text;
};

} // namespace nqp2
