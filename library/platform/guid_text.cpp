// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/guid_text.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <unistd.h>

namespace nqp2::platform {
namespace {

/// How many of the bytes are between two hyphens.
constexpr std::size_t kGroupBytes[] = {4, 2, 2, 2, 6};

/// The sixteen bytes in the order of the text form.
using TextBytes = std::array<std::uint8_t, 16>;

constexpr const wchar_t* kDigits = L"0123456789abcdef";
constexpr int kNoDigit = -1;

/// The values of hexadecimal digits.
constexpr std::array<std::int8_t, 128> kDigitValues = [] {
    std::array<std::int8_t, 128> values{};
    values.fill(kNoDigit);
    constexpr std::size_t kSmall = 0x20; // set in digits and small letters
    for (std::size_t value = 0; value < 16; ++value) {
        const std::size_t code = value < 10 ? 0x30 + value : 0x41 + value - 10;
        values[code] = values[code | kSmall] = static_cast<std::int8_t>(value);
    }
    return values;
}();

template <class Char>
int DigitValue(Char ch) {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse): a negative one becomes large, and is no digit
    const auto code = static_cast<std::make_unsigned_t<Char>>(ch);
    return code < kDigitValues.size() ? kDigitValues[code] : kNoDigit;
}

/// False for a text that is not twice as many digits.
template <class Char>
bool ReadDigits(std::basic_string_view<Char> digits, std::span<std::uint8_t> bytes) {
    if (digits.size() != bytes.size() * 2) {
        return false;
    }
    int seen = 0; // negative once one was none
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const int high = DigitValue(digits[2 * i]);
        const int low = DigitValue(digits[2 * i + 1]);
        seen |= high | low;
        bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return seen >= 0;
}

GUID FromTextBytes(const TextBytes& bytes) {
    GUID guid;
    guid.Data1 = std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
                 std::uint32_t{bytes[2]} << 8U | bytes[3];
    guid.Data2 = static_cast<std::uint16_t>(bytes[4] << 8U | bytes[5]);
    guid.Data3 = static_cast<std::uint16_t>(bytes[6] << 8U | bytes[7]);
    std::memcpy(guid.Data4, &bytes[8], sizeof(guid.Data4));
    return guid;
}

TextBytes ToTextBytes(const GUID& guid) {
    TextBytes bytes{};
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[i] = static_cast<std::uint8_t>(guid.Data1 >> (24 - 8 * i));
    }
    for (std::size_t i = 0; i < 2; ++i) {
        bytes[4 + i] = static_cast<std::uint8_t>(guid.Data2 >> (8 - 8 * i));
        bytes[6 + i] = static_cast<std::uint8_t>(guid.Data3 >> (8 - 8 * i));
    }
    std::memcpy(&bytes[8], guid.Data4, sizeof(guid.Data4));
    return bytes;
}

template <class Char>
GUID FromDigits(std::basic_string_view<Char> digits) {
    TextBytes bytes{};
    return ReadDigits(digits, bytes) ? FromTextBytes(bytes) : GUID();
}

} // namespace

GUID NewGuid() {
    TextBytes bytes{};
    if (getentropy(bytes.data(), bytes.size()) != 0) {
        throw std::runtime_error("no random bytes from the system");
    }
    bytes[6] = (bytes[6] & 0x0FU) | 0x40U; // version 4
    bytes[8] = (bytes[8] & 0x3FU) | 0x80U; // variant of RFC 4122
    return FromTextBytes(bytes);
}

CString GuidText(const GUID& guid) {
    std::array<wchar_t, 36> text{};
    wchar_t* next = text.data();
    const TextBytes bytes = ToTextBytes(guid);
    const std::uint8_t* byte = bytes.data();
    for (const std::size_t length : kGroupBytes) {
        if (byte != bytes.data()) {
            *next++ = L'-';
        }
        for (const std::uint8_t* const end = byte + length; byte != end; ++byte) {
            *next++ = kDigits[*byte >> 4U];
            *next++ = kDigits[*byte & 0x0FU];
        }
    }
    return CString(std::wstring_view(text.data(), text.size()));
}

bool GuidFromText(std::wstring_view text, GUID& guid) {
    guid = GUID();
    TextBytes bytes{};
    std::span<std::uint8_t> left(bytes);
    for (const std::size_t length : kGroupBytes) {
        const bool isFirst = left.size() == bytes.size();
        if (!isFirst && !text.starts_with(L'-')) {
            return false;
        }
        text.remove_prefix(isFirst ? 0 : 1);
        if (!ReadDigits(text.substr(0, 2 * length), left.first(length))) {
            return false;
        }
        text.remove_prefix(2 * length);
        left = left.subspan(length);
    }
    if (!text.empty()) {
        return false;
    }
    guid = FromTextBytes(bytes);
    return true;
}

GUID GuidFromDigits(std::wstring_view digits) {
    return FromDigits(digits);
}

GUID GuidFromDigits(std::string_view digits) {
    return FromDigits(digits);
}

} // namespace nqp2::platform
