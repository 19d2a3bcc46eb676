// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/wire.h"

#include "platform/unicode.h"

#include <cstring>
#include <string_view>

namespace nqp2::bridge {
namespace {

constexpr std::uint64_t kUnit = sizeof(char16_t);
constexpr std::uint64_t kTerminator = 1; ///< unit behind each text

} // namespace

void SizeCounter::Raw(const void* /*source*/, std::size_t size) {
    Add(size);
}

void SizeCounter::Text(const CString& text) {
    const std::uint64_t units = platform::Utf16FromText(text.View()).size();
    Add(sizeof(std::uint32_t) + kUnit * (units + kTerminator));
}

void SizeCounter::Run(const unsigned char* data, std::uint32_t length) {
    m_figure += sizeof(length) + std::uint64_t{length};
    m_image += sizeof(length) + (data != nullptr ? std::uint64_t{length} : 0);
}

void SizeCounter::OptionalBytes(const unsigned char* data, std::uint64_t count,
                                std::size_t /*behind*/) {
    Add(data != nullptr ? count : 0);
}

void SizeCounter::Add(std::uint64_t size) {
    m_image += size;
    m_figure += size;
}

WireWriter::WireWriter(unsigned char* buffer, std::uint64_t capacity)
    : m_target(buffer), m_capacity(capacity) {}

void WireWriter::Raw(const void* source, std::uint64_t size) {
    if (m_failed || size > m_capacity - m_written) {
        m_failed = true;
        return;
    }
    if (size > 0) {
        std::memcpy(m_target + m_written, source, size);
        m_written += size;
    }
}

void WireWriter::Flag(bool flag) {
    const std::uint8_t byte = flag ? 1 : 0;
    Raw(&byte, sizeof byte);
}

void WireWriter::Text(const CString& text) {
    const std::u16string units = platform::Utf16FromText(text.View());
    Count(static_cast<std::uint32_t>(units.size()));
    Raw(units.c_str(), kUnit * (units.size() + kTerminator));
}

void WireWriter::Run(const unsigned char* data, std::uint32_t length) {
    Count(length);
    OptionalBytes(data, length, 0);
}

void WireWriter::OptionalBytes(const unsigned char* data, std::uint64_t count,
                               std::size_t /*behind*/) {
    if (data != nullptr) {
        Raw(data, count);
    }
}

WireReader::WireReader(unsigned char* buffer, std::uint64_t length)
    : m_source(buffer), m_length(length) {}

void WireReader::Raw(void* target, std::size_t size) {
    if (const unsigned char* const source = Take(size)) {
        std::memcpy(target, source, size);
    }
}

void WireReader::Flag(bool& flag) {
    std::uint8_t byte = 0;
    Raw(&byte, sizeof byte);
    m_failed = m_failed || byte > 1;
    flag = byte == 1;
}

void WireReader::Text(CString& text) {
    const std::uint64_t count = Count(kUnit);
    unsigned char* const source = Take(kUnit * (count + kTerminator));
    if (source == nullptr) {
        return;
    }
    std::memset(source + kUnit * count, 0, kUnit);
    // Converted from a copy: the conversion reads twice and must see the same both times.
    std::u16string units(count, u'\0');
    std::memcpy(units.data(), source, kUnit * count);
    text = platform::TextFromUtf16(units);
}

void WireReader::Run(const unsigned char*& data, std::uint32_t& length) {
    length = Count(1);
    data = length > 0 ? Take(length) : nullptr;
}

void WireReader::OptionalBytes(const unsigned char*& data, std::uint64_t count,
                               std::size_t behind) {
    const bool present = count > 0 && Left() != behind;
    data = present ? Take(count) : nullptr;
}

unsigned char* WireReader::Take(std::uint64_t size) {
    if (m_failed || size > Left()) {
        m_failed = true;
        return nullptr;
    }
    unsigned char* const taken = m_source + m_read;
    m_read += size;
    return taken;
}

std::uint32_t WireReader::Count(std::uint64_t least) {
    std::uint32_t count = 0;
    Raw(&count, sizeof(count));
    if (count > Left() / least) {
        m_failed = true;
        return 0;
    }
    return count;
}

} // namespace nqp2::bridge
