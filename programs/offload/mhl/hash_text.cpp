// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Hexadecimal digits, and C4: the digest as one number in base 58.

#include "offload/mhl/hash_format.h"

#include <algorithm>
#include <cctype>
#include <limits>

namespace nqp2::mhl {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::string_view kC4Prefix = "c4";
constexpr std::string_view kC4Digits = "123456789ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz";
constexpr std::size_t kC4DigitCount = FactsOf(HashFormat::C4).characters - kC4Prefix.size();

// The number in words, the most significant first, and as many digits as a word takes at once.
constexpr std::size_t kWords = FactsOf(HashFormat::C4).bytes / sizeof(std::uint32_t);
using Number = std::array<std::uint32_t, kWords>;
constexpr unsigned kWordBits = 32;
constexpr std::size_t kDigitsAtOnce = 5;
constexpr std::uint32_t kBase = 58;
constexpr std::uint32_t kBaseAtOnce = kBase * kBase * kBase * kBase * kBase;
constexpr unsigned kByteBits = 8;
constexpr unsigned char kByteMask = 0xFF;
constexpr unsigned kNibbleBits = 4;
constexpr unsigned kNibbleMask = 0xF;

Number NumberOf(std::string_view digest) {
    Number number{};
    for (std::size_t i = 0; i < digest.size(); ++i) {
        std::uint32_t& word = number[i / sizeof(std::uint32_t)];
        word = (word << kByteBits) | static_cast<unsigned char>(digest[i]);
    }
    return number;
}

std::uint32_t DivideBy(std::uint32_t divisor, Number& number) {
    std::uint64_t rest = 0;
    for (std::uint32_t& word : number) {
        const std::uint64_t value = (rest << kWordBits) | word;
        word = static_cast<std::uint32_t>(value / divisor);
        rest = value % divisor;
    }
    return static_cast<std::uint32_t>(rest);
}

/// False when it does not fit.
bool MultiplyAndAdd(std::uint32_t factor, std::uint32_t summand, Number& number) {
    std::uint64_t carry = summand;
    for (auto word = number.rbegin(); word != number.rend(); ++word) {
        const std::uint64_t value = std::uint64_t{*word} * factor + carry;
        *word = static_cast<std::uint32_t>(value);
        carry = value >> kWordBits;
    }
    return carry == 0;
}

void AppendC4(std::string_view digest, std::string& text) {
    Number number = NumberOf(digest);
    std::array<char, kC4DigitCount> digits{};
    for (std::size_t left = digits.size(); left > 0;) {
        std::uint32_t group = DivideBy(kBaseAtOnce, number);
        for (std::size_t i = 0; i < kDigitsAtOnce && left > 0; ++i, group /= kBase) {
            digits[--left] = kC4Digits[group % kBase];
        }
    }
    text.append(kC4Prefix).append(digits.data(), digits.size());
}

std::string ParseC4(std::string_view text, Hashes& hashes) {
    if (!text.starts_with(kC4Prefix)) {
        return "does not begin with \"c4\"";
    }
    Number number{};
    for (const char ch : text.substr(kC4Prefix.size())) {
        const std::size_t digit = kC4Digits.find(ch);
        if (digit == std::string_view::npos) {
            return "has a character that is no digit of it";
        }
        if (!MultiplyAndAdd(kBase, static_cast<std::uint32_t>(digit), number)) {
            return "is larger than any";
        }
    }
    std::string digest;
    for (const std::uint32_t word : number) {
        for (unsigned shift = kWordBits; shift > 0;) {
            shift -= kByteBits;
            digest += static_cast<char>((word >> shift) & kByteMask);
        }
    }
    hashes.Set(HashFormat::C4, digest);
    return {};
}

std::string ParseHex(HashFormat format, std::string_view text, Hashes& hashes) {
    std::array<char, kAllDigestBytes> digest{};
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t digit = kHexDigits.find(text[i]);
        if (digit == std::string_view::npos) {
            return text[i] >= 'A' && text[i] <= 'F' ? "is written in capital letters"
                                                    : "has a character that is no digit of it";
        }
        char& byte = digest[i / 2];
        byte =
            static_cast<char>((unsigned{static_cast<unsigned char>(byte)} << kNibbleBits) | digit);
    }
    hashes.Set(format, std::string_view(digest.data(), text.size() / 2));
    return {};
}

} // namespace

void AppendHashText(HashFormat format, std::string_view digest, std::string& text) {
    if (format == HashFormat::C4) {
        AppendC4(digest, text);
        return;
    }
    for (const char each : digest) {
        const auto byte = static_cast<unsigned char>(each);
        text += kHexDigits[byte >> kNibbleBits];
        text += kHexDigits[byte & kNibbleMask];
    }
}

std::string Hashes::Text(HashFormat format) const {
    std::string text;
    if (Has(format)) {
        AppendHashText(format, Digest(format), text);
    }
    return text;
}

std::string ParseHashText(HashFormat format, std::string_view text, Hashes& hashes) {
    const std::size_t characters = FactsOf(format).characters;
    if (text.size() != characters) {
        return text.empty() ? "is empty"
                            : "has " + std::to_string(text.size()) + " characters instead of " +
                                  std::to_string(characters);
    }
    return format == HashFormat::C4 ? ParseC4(text, hashes) : ParseHex(format, text, hashes);
}

} // namespace nqp2::mhl
