// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/output_text.h"

#include "console/console.h"

#include <algorithm>
#include <concepts>
#include <limits>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

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

/// Copies the characters as bytes; whether all are plain.
bool CopyPlain(std::wstring_view text, char32_t comma, char* to) {
    char32_t faults = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        faults |= Fault(static_cast<char32_t>(text[i]), comma);
        to[i] = static_cast<char>(text[i]);
    }
    return !IsFault(faults);
}

#if defined(__SSE2__) && __SIZEOF_WCHAR_T__ == 4
constexpr std::size_t kLane = sizeof(__m128i);

/// The same of so many at once; sets the bits of those that are not plain.
void CopyLane(const wchar_t* from, char comma, char* to, __m128i& faults) {
    const auto four = [from](std::size_t i) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i));
    };
    // What has no byte becomes 0 or 255, which are not plain.
    const __m128i bytes =
        _mm_packus_epi16(_mm_packs_epi32(four(0), four(4)), _mm_packs_epi32(four(8), four(12)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    const auto are = [bytes](char ch) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(ch)); };
    const __m128i quoted = _mm_or_si128(are('"'), _mm_or_si128(are('\\'), are(comma)));
    // Signed: what is beyond ASCII is less as well.
    const __m128i controls = _mm_or_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(' ')), are('\x7F'));
    faults = _mm_or_si128(faults, _mm_or_si128(quoted, controls));
}

bool CopyPlainLanes(std::wstring_view text, char comma, char* to) {
    __m128i faults = _mm_setzero_si128();
    const std::size_t last = text.size() - kLane;
    for (std::size_t i = 0; i < last; i += kLane) {
        CopyLane(text.data() + i, comma, to + i, faults);
    }
    CopyLane(text.data() + last, comma, to + last, faults);
    return _mm_movemask_epi8(faults) == 0;
}
#endif

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
    const char comma = commas == Commas::Quoted ? ',' : '"';
    char* const place = Room(text.size());
#if defined(__SSE2__) && __SIZEOF_WCHAR_T__ == 4
    const bool isPlain = text.size() >= kLane
                             ? CopyPlainLanes(text, comma, place)
                             : CopyPlain(text, static_cast<char32_t>(comma), place);
#else
    const bool isPlain = CopyPlain(text, static_cast<char32_t>(comma), place);
#endif
    m_size += isPlain ? text.size() : 0;
    return isPlain;
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
