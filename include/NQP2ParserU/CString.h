// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// The text type.

#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/FormatArgument.h"

#include <cstddef>
#include <initializer_list>
#include <string_view>

/// Wide text with value semantics: one pointer in size, a copy shares the characters until one
/// of the copies is changed. An element is one code point (32 bits on Linux); an unpaired
/// surrogate may stand as an element of its own. Never null: the empty text is "".
/// Copies may be used from several threads; one object is used by one thread at a time.
class NQP2_API CString {
public:
    /// The empty text; takes no memory.
    CString() noexcept : m_text(kEmpty) {}
    /// Shares the characters of `other`; takes no memory.
    CString(const CString& other) noexcept;
    /// Takes the characters of `other`, which is empty afterwards.
    CString(CString&& other) noexcept : m_text(other.m_text) { other.m_text = kEmpty; }
    /// A null pointer gives the empty text.
    CString(const wchar_t* text); // NOLINT(google-explicit-constructor)
    /// The first `length` elements, zeros included.
    CString(const wchar_t* text, int length);
    /// Texts longer than INT_MAX elements throw std::length_error, here and in every operation.
    explicit CString(std::wstring_view text);
    /// The element, `repeat` times; empty for a count below 1.
    explicit CString(wchar_t ch, int repeat = 1);
    ///@{
    /// Becomes that text, as the constructor of that argument makes it.
    CString& operator=(const CString& other) noexcept;
    CString& operator=(CString&& other) noexcept;
    CString& operator=(const wchar_t* text);
    ///@}
    ~CString() {
        if (m_text != kEmpty) { // records consist of texts that are empty, most of them
            LetGo();
        }
    }

    /// The zero-terminated characters; valid until this object is changed or destroyed.
    // NOLINTNEXTLINE(google-explicit-constructor)
    operator const wchar_t*() const noexcept { return m_text; }
    /// The same as the conversion.
    [[nodiscard]] const wchar_t* GetString() const noexcept { return m_text; }
    /// All elements, zeros inside included; valid as long as the characters are.
    [[nodiscard]] std::wstring_view View() const noexcept;
    /// Elements (code points), zeros inside included.
    [[nodiscard]] int GetLength() const noexcept;
    /// True for the text without elements.
    [[nodiscard]] bool IsEmpty() const noexcept { return GetLength() == 0; }
    /// The element at `index`; the terminating zero at the length, and zero beyond it.
    [[nodiscard]] wchar_t GetAt(int index) const noexcept;
    /// The same as GetAt.
    wchar_t operator[](int index) const noexcept { return GetAt(index); }
    /// Changes one element; an index outside the text changes nothing.
    void SetAt(int index, wchar_t ch);
    /// Becomes the empty text.
    void Empty() noexcept {
        if (m_text != kEmpty) {
            LetGo();
            m_text = kEmpty;
        }
    }

    /// Room for at least `length` elements and the terminating zero, holding the present text, to
    /// be written to until ReleaseBuffer. Belongs to this object alone.
    wchar_t* GetBuffer(int length);
    /// Takes `length` elements of the buffer as the text.
    void ReleaseBuffer(int length);

    ///@{
    /// Appends; a null pointer appends nothing.
    CString& operator+=(const CString& text);
    CString& operator+=(const wchar_t* text);
    CString& operator+=(wchar_t ch);
    CString& Append(std::wstring_view text);
    ///@}

    ///@{
    /// Parts of the text; positions and counts are clamped to it.
    [[nodiscard]] CString Left(int count) const;
    [[nodiscard]] CString Right(int count) const;
    [[nodiscard]] CString Mid(int first) const;
    [[nodiscard]] CString Mid(int first, int count) const;
    ///@}

    /// Index of the first match at or after `start`, or -1. An empty part matches at `start`.
    [[nodiscard]] int Find(const wchar_t* part, int start = 0) const noexcept;
    /// The same for one element.
    [[nodiscard]] int Find(wchar_t ch, int start = 0) const noexcept;
    /// Index of the last match, or -1.
    [[nodiscard]] int ReverseFind(wchar_t ch) const noexcept;

    /// Below, equal to or above zero, by element value.
    [[nodiscard]] int Compare(const wchar_t* other) const noexcept;
    /// As Compare, without regard to letter case.
    [[nodiscard]] int CompareNoCase(const wchar_t* other) const noexcept;

    ///@{
    /// Changes the letter case of every element as Unicode maps it one for one, in every locale.
    CString& MakeUpper();
    CString& MakeLower();
    ///@}
    /// Trim removes blank, tab, line feed, vertical tab, form feed and carriage return.
    CString& Trim();
    ///@{
    /// As Trim, at the beginning or at the end alone.
    CString& TrimLeft();
    CString& TrimRight();
    ///@}
    /// Removes every trailing element that occurs in `set`.
    CString& TrimRight(const wchar_t* set);
    /// Replaces every occurrence of `from`, left to right; returns how many were replaced.
    int Replace(const wchar_t* from, const wchar_t* to);
    /// Deletes every occurrence of `ch`; returns how many were deleted.
    int Remove(wchar_t ch);

    /// Sets the text after a printf-like pattern (d i u x X c s S f F e E g G % with flags, width
    /// and precision; length modifiers are accepted and ignored, the argument's own type counts).
    /// An argument that does not fit its conversion is written in its natural form, a missing one
    /// as nothing: no pattern reads beyond the arguments. A conversion of any other letter stays
    /// as written and takes no argument. Widths and precisions end at 4096. The decimal point is
    /// "." in every locale.
    template <class... Arguments>
    void Format(const wchar_t* pattern, const Arguments&... arguments) {
        FormatList(pattern, {nqp2::FormatArgument(arguments)...});
    }

private:
    void FormatList(const wchar_t* pattern, std::initializer_list<nqp2::FormatArgument> arguments);
    void LetGo() noexcept;

    static wchar_t* const kEmpty; ///< every empty text's characters

    wchar_t* m_text;
};

///@{
/// One text behind the other; a null pointer is the empty text.
NQP2_API CString operator+(const CString& left, const CString& right);
NQP2_API CString operator+(const CString& left, const wchar_t* right);
NQP2_API CString operator+(const wchar_t* left, const CString& right);
NQP2_API CString operator+(const CString& left, wchar_t right);
///@}

///@{
/// By element value, zeros inside included; a pointer as Compare.
inline bool operator==(const CString& left, const CString& right) noexcept {
    return left.View() == right.View();
}
inline bool operator==(const CString& left, const wchar_t* right) noexcept {
    return left.Compare(right) == 0;
}
inline bool operator<(const CString& left, const CString& right) noexcept {
    return left.View() < right.View();
}
///@}

static_assert(sizeof(CString) == sizeof(void*), "records count on strings of one pointer");
