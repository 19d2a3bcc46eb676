// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/base64.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace nqp2::xml {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kLineBreak = "\r\n";
constexpr int kGroupBytes = 3;
constexpr int kGroupCharacters = 4;
constexpr int kGroupsPerLine = 19;
constexpr int kBitsPerCharacter = 6;

/// Appends the first `characters` characters of one group of up to three bytes.
void AppendGroup(std::string& out, const unsigned char* data, int bytes, int characters) {
    std::uint32_t bits = 0;
    for (int i = 0; i < kGroupBytes; ++i) {
        bits = (bits << 8U) | (i < bytes ? data[i] : 0U);
    }
    for (int i = 0; i < characters; ++i) {
        const int shift = kBitsPerCharacter * (kGroupCharacters - 1 - i);
        out.push_back(kAlphabet[(bits >> static_cast<unsigned>(shift)) & 0x3FU]);
    }
}

int ValueOf(char ch) {
    const std::size_t position = kAlphabet.find(ch);
    return position == std::string_view::npos ? -1 : static_cast<int>(position);
}

} // namespace

std::string EncodeBase64(const unsigned char* data, int length) {
    std::string out;
    if (data == nullptr || length <= 0 ||
        length > std::numeric_limits<std::int32_t>::max() / kGroupCharacters) {
        return out;
    }
    const int groups = length / kGroupBytes;
    const int lines = groups / kGroupsPerLine + 1;
    for (int line = 0; line < lines; ++line) {
        const int first = line * kGroupsPerLine;
        for (int group = first; group < std::min(first + kGroupsPerLine, groups); ++group) {
            AppendGroup(out, data + group * kGroupBytes, kGroupBytes, kGroupCharacters);
        }
        out.append(kLineBreak);
    }
    // Only the last break is taken back: a text of full lines keeps the one before it.
    out.resize(out.size() - kLineBreak.size());
    const int rest = length % kGroupBytes;
    if (rest > 0) {
        AppendGroup(out, data + groups * kGroupBytes, rest, rest + 1);
        out.append(static_cast<std::size_t>(kGroupBytes - rest), '=');
    }
    return out;
}

std::string DecodeBase64(std::string_view text) {
    std::string out;
    std::uint32_t bits = 0;
    int held = 0;
    for (const char ch : text.substr(0, text.find('\0'))) {
        const int value = ValueOf(ch);
        if (value < 0) {
            continue;
        }
        bits = (bits << kBitsPerCharacter) | static_cast<std::uint32_t>(value);
        held += kBitsPerCharacter;
        if (held >= 8) {
            held -= 8;
            out.push_back(static_cast<char>((bits >> static_cast<unsigned>(held)) & 0xFFU));
        }
    }
    return out;
}

} // namespace nqp2::xml
