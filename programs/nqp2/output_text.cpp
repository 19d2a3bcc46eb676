// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/output_text.h"

#include "nqp2/console.h"

#include <algorithm>
#include <array>

namespace nqp2::tool {
namespace {

constexpr std::size_t kBlock = std::size_t{32} * 1024;

constexpr std::array<bool, 256> PlainCharacters() {
    std::array<bool, 256> plain = {};
    for (unsigned ch = ' '; ch <= '~'; ++ch) {
        plain[ch] = ch != '"' && ch != '\\' && ch != ',';
    }
    return plain;
}
constexpr std::array<bool, 256> kPlain = PlainCharacters();

} // namespace

// No way out of the loops before their ends: most texts are plain.
bool IsPlain(std::string_view text) {
    bool plain = true;
    for (const char ch : text) {
        plain &= kPlain[static_cast<unsigned char>(ch)];
    }
    return plain;
}

bool OutputText::PutIfPlain(std::wstring_view text) {
    char* place = Room(text.size());
    bool plain = true;
    for (const wchar_t ch : text) {
        const auto code = static_cast<unsigned char>(ch);
        plain &= kPlain[code] && static_cast<wchar_t>(code) == ch;
        *place++ = static_cast<char>(code);
    }
    m_size += plain ? text.size() : 0;
    return plain;
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
