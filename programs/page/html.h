// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace nqp2::page {

/// A name or text of the page's own: known when the program is compiled, so that nothing of a card
/// can be one.
class Own {
public:
    template <std::size_t Size>
    consteval Own(const char (&text)[Size]) // NOLINT(google-explicit-constructor)
        : m_text(text, Size - 1) {}

    [[nodiscard]] constexpr std::string_view Text() const { return m_text; }

private:
    std::string_view m_text;
};

/// The longest text of a card that is shown, in bytes; of a longer one the beginning is.
inline constexpr std::size_t kLongestText = 2000;

/// A page in the making. What is put into it is escaped, but for what the program itself knows:
/// harmless characters alone, bounded, with an ellipsis where it is cut.
class Html {
public:
    /// Begins an element, whose attributes follow.
    Html& Open(Own tag);
    /// An attribute of the element that was opened last, before anything is put into it.
    Html& With(Own name, Own value);
    Html& WithText(Own name, std::string_view value);
    Html& WithNumber(Own name, std::int64_t value);
    /// An attribute without a value.
    Html& With(Own name);
    /// Ends an element that was opened.
    Html& Close(Own tag);

    /// Text of the program's.
    Html& Text(Own text);
    /// Any text.
    Html& Shown(std::string_view text);
    /// A text of a card: it stands by itself in its own direction.
    Html& Foreign(std::string_view text);
    Html& Foreign(const CString& text);

    /// An element with text in it.
    Html& Element(Own tag, Own cls, Own text) {
        return Open(tag).With("class", cls).Text(text).Close(tag);
    }
    Html& ShownElement(Own tag, Own cls, std::string_view text) {
        return Open(tag).With("class", cls).Shown(text).Close(tag);
    }

    /// A picture as an attribute value that holds it.
    Html& WithJpeg(Own name, std::string_view jpeg);

    /// Where it has come to; puts another there, which is complete, when more has been put since.
    std::size_t Place();
    void Insert(std::size_t place, Html& part);

    /// What it has come to, complete.
    std::string Finish();

private:
    void Fill();

    std::string m_page;
    bool m_isOpen = false; ///< the last element's attributes may follow
};

/// Bytes in base 64.
std::string Base64(std::string_view bytes);

} // namespace nqp2::page
