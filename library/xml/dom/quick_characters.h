// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// What the quick tokenizer knows about single characters, and how it decodes them in place.
namespace nqp2::dom::quick {

// What a byte may be part of. The byte 0, which ends the text, is part of nothing.
inline constexpr std::uint8_t kNameStart = 1;
inline constexpr std::uint8_t kNameRest = 2;
inline constexpr std::uint8_t kPlainText =
    4; ///< goes into a text, comment or CDATA section as it is
inline constexpr std::uint8_t kPlainValue = 8; ///< goes into an attribute's value as it is
inline constexpr std::uint8_t kBlank = 16;

inline constexpr std::array<std::uint8_t, 256> kClasses = [] {
    std::array<std::uint8_t, 256> classes{};
    const auto add = [&](std::string_view bytes, std::uint8_t what) {
        for (const char ch : bytes) {
            classes[static_cast<unsigned char>(ch)] |= what;
        }
    };
    for (std::size_t ch = ' '; ch < 0x80; ++ch) {
        classes[ch] = kPlainText | kPlainValue;
    }
    for (const char special : {'<', '&'}) {
        classes[static_cast<unsigned char>(special)] = 0;
    }
    classes['"'] = kPlainText;
    classes['\''] = kPlainText;
    classes[']'] = kPlainValue;
    add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_", kNameStart | kNameRest);
    add("0123456789-.", kNameRest);
    add("\t\n", kPlainText);
    add(" \t\n\r", kBlank);
    return classes;
}();

inline bool Is(char ch, std::uint8_t what) {
    return (kClasses[static_cast<unsigned char>(ch)] & what) != 0;
}

/// How many plain bytes of text there are from `at` on, before `end`, which is none.
inline std::size_t PlainTextLength(const char* at, const char* end) {
    const char* const start = at;
#ifdef __SSE2__
    constexpr std::ptrdiff_t kBlock = sizeof(__m128i);
    for (; end - at >= kBlock; at += kBlock) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const auto are = [bytes](char ch) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(ch)); };
        // Signed: what is beyond ASCII is less as well.
        const __m128i low = _mm_andnot_si128(_mm_or_si128(are('\n'), are('\t')),
                                             _mm_cmplt_epi8(bytes, _mm_set1_epi8(' ')));
        const __m128i marks = _mm_or_si128(are('<'), _mm_or_si128(are('&'), are(']')));
        const auto special = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(low, marks)));
        if (special != 0) {
            return static_cast<std::size_t>(at - start) +
                   static_cast<std::size_t>(std::countr_zero(special));
        }
    }
#endif
    while (Is(*at, kPlainText)) {
        ++at;
    }
    return static_cast<std::size_t>(at - start);
}

inline bool IsBlank(std::string_view text) {
    for (const char ch : text) {
        if (!Is(ch, kBlank)) {
            return false;
        }
    }
    return true;
}

/// The bytes of the character beyond ASCII at `at`, 0 where there is none that XML allows. Reads
/// no byte behind one that does not go on a character.
inline std::size_t LengthOfCharacter(const char* at) {
    const auto byte = [at](int i) { return static_cast<unsigned char>(at[i]); };
    const auto goesOn = [&](int i) { return (byte(i) & 0xC0U) == 0x80U; };
    const unsigned char first = byte(0);
    if (first < 0xC2 || first > 0xF4 || !goesOn(1)) {
        return 0;
    }
    if (first < 0xE0) {
        return 2;
    }
    if (!goesOn(2)) {
        return 0;
    }
    if (first < 0xF0) {
        const bool isOverlong = first == 0xE0 && byte(1) < 0xA0;
        const bool isSurrogate = first == 0xED && byte(1) > 0x9F;
        const bool isNoCharacter = first == 0xEF && byte(1) == 0xBF && byte(2) > 0xBD;
        return isOverlong || isSurrogate || isNoCharacter ? 0 : 3;
    }
    const bool isOutOfRange =
        (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F);
    return isOutOfRange || !goesOn(3) ? 0 : 4;
}

/// What is read is written back without what abbreviates something (references, line ends),
/// in the same place, which is never shorter than the result.
class Rewriter {
public:
    explicit Rewriter(char* begin) : m_begin(begin), m_end(begin), m_run(begin) {}

    /// Ends the run of bytes that stay as they are at `at`; `ch` replaces what is up to `next`.
    void Replace(const char* at, char ch, const char* next) {
        KeepRunUpTo(at);
        *m_end++ = ch;
        m_run = next;
    }
    std::string_view Finish(const char* at) {
        KeepRunUpTo(at);
        return {m_begin, static_cast<std::size_t>(m_end - m_begin)};
    }

private:
    void KeepRunUpTo(const char* at) {
        const auto length = static_cast<std::size_t>(at - m_run);
        if (m_end != m_run) {
            std::memmove(m_end, m_run, length);
        }
        m_end += length;
    }

    char* m_begin;
    char* m_end;       ///< of what was written
    const char* m_run; ///< where what is not yet written begins
};

} // namespace nqp2::dom::quick
