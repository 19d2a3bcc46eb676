// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/guid_text.h"

#include "platform/number_text.h"

#include <array>
#include <cstring>
#include <stdexcept>
#include <unistd.h>

namespace nqp2::platform {
namespace {

constexpr std::wstring_view kPattern = L"00000000-0000-0000-0000-000000000000";

/// The sixteen bytes in the order of the text form.
using TextBytes = std::array<std::uint8_t, 16>;

/// The value of a hexadecimal digit, or -1.
int DigitValue(wchar_t ch) {
    if (IsDigit(ch)) {
        return static_cast<int>(ch - L'0');
    }
    if (ch >= L'a' && ch <= L'f') {
        return static_cast<int>(ch - L'a') + 10;
    }
    return ch >= L'A' && ch <= L'F' ? static_cast<int>(ch - L'A') + 10 : -1;
}

/// Reads a text of exactly the pattern's length.
bool ReadDigits(std::wstring_view text, TextBytes& bytes) {
    std::size_t digits = 0;
    for (std::size_t i = 0; i < kPattern.size(); ++i) {
        if (kPattern[i] == L'-') {
            if (text[i] != L'-') {
                return false;
            }
            continue;
        }
        const int value = DigitValue(text[i]);
        if (value < 0) {
            return false;
        }
        std::uint8_t& byte = bytes[digits++ / 2];
        byte = static_cast<std::uint8_t>(byte * 16 + value);
    }
    return true;
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
    const auto& tail = guid.Data4;
    CString text;
    text.Format(L"%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", guid.Data1, guid.Data2,
                guid.Data3, tail[0], tail[1], tail[2], tail[3], tail[4], tail[5], tail[6], tail[7]);
    return text;
}

bool GuidFromText(std::wstring_view text, GUID& guid) {
    TextBytes bytes{};
    if (text.size() != kPattern.size() || !ReadDigits(text, bytes)) {
        guid = GUID();
        return false;
    }
    guid = FromTextBytes(bytes);
    return true;
}

} // namespace nqp2::platform
