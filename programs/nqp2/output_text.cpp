// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/output_text.h"

#include "nqp2/console.h"

#include <algorithm>
#include <concepts>
#include <limits>

namespace nqp2::tool {
namespace {

constexpr std::size_t kBlock = std::size_t{32} * 1024;

/// Has its highest bit set where the character is not plain. Nothing but sums, in the character's
/// own width: so compilers look at many characters at once.
template <std::unsigned_integral Unit>
constexpr Unit Fault(Unit ch, Unit comma) {
    return static_cast<Unit>(ch | (ch - ' ') | ('~' - ch) | ((ch ^ '"') - 1) | ((ch ^ '\\') - 1) |
                             ((ch ^ comma) - 1));
}

template <std::unsigned_integral Unit>
constexpr bool IsFault(Unit faults) {
    return faults >> (std::numeric_limits<Unit>::digits - 1) != 0;
}

} // namespace

// No way out of the loops before their ends: most texts are plain.
bool IsPlain(std::string_view text) {
    unsigned char faults = 0;
    for (const char ch : text) {
        faults |= Fault(static_cast<unsigned char>(ch), static_cast<unsigned char>(','));
    }
    return !IsFault(faults);
}

std::size_t PrintableLength(std::string_view text) {
    const auto* const end =
        std::find_if_not(text.begin(), text.end(), [](char ch) { return ch >= ' ' && ch <= '~'; });
    return static_cast<std::size_t>(end - text.begin());
}

bool OutputText::PutIfPlain(std::wstring_view text, Commas commas) {
    const char32_t comma = commas == Commas::Quoted ? U',' : U'"';
    char* const place = Room(text.size());
    char32_t faults = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        faults |= Fault(static_cast<char32_t>(text[i]), comma);
        place[i] = static_cast<char>(text[i]);
    }
    m_size += IsFault(faults) ? 0 : text.size();
    return !IsFault(faults);
}

void OutputText::Flush() {
    m_console->Write(Text());
    m_size = 0;
}

void OutputText::MakeRoom(std::size_t size) {
    if (m_console != nullptr && m_size > 0) {
        Flush();
    }
    m_block.resize(
        std::max({kBlock, m_size + size, m_console == nullptr ? 2 * m_block.size() : 0}));
}

} // namespace nqp2::tool
