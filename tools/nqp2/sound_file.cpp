// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/sound_file.h"

#include "tools/nqp2/console.h"
#include "tools/nqp2/little_endian.h"

#include <algorithm>
#include <string_view>

namespace nqp2::tool {
namespace {

constexpr std::size_t kFileHead = 12;
constexpr std::size_t kChunkHead = 8;
constexpr std::uint16_t kPcm = 1;
constexpr std::uint16_t kExtensible = 0xFFFE; ///< the true format begins 24 bytes on
constexpr std::uint32_t kUnknownSize = 0xFFFFFFFF;

WAVEFORMATEX FormatOf(std::string_view chunk) {
    const auto half = [chunk](std::size_t at) {
        return static_cast<std::uint16_t>(LittleEndian(chunk, at, 2));
    };
    WAVEFORMATEX format;
    format.wFormatTag = half(0) == kExtensible ? half(24) : half(0);
    format.nChannels = half(2);
    format.nSamplesPerSec = LittleEndian(chunk, 4, 4);
    format.nAvgBytesPerSec = LittleEndian(chunk, 8, 4);
    format.nBlockAlign = half(12);
    format.wBitsPerSample = half(14);
    return format;
}

void Skip(InputFile& file, std::uint64_t count) {
    constexpr std::uint64_t kSkipPiece = 65536;
    std::size_t skipped = 1;
    while (count > 0 && skipped > 0) {
        skipped = file.Read(static_cast<std::size_t>(std::min(count, kSkipPiece))).size();
        count -= skipped;
    }
}

} // namespace

SoundFile::SoundFile(const std::string& path, const WAVEFORMATEX& bare)
    : m_file(path), m_format(bare), m_ahead(m_file.Read(kFileHead)) {
    if (m_ahead.starts_with("RIFF") && m_ahead.ends_with("WAVE")) {
        m_ahead.clear();
        m_format = {};
        ReadChunks(path);
    }
    const unsigned bytes = m_format.nChannels * (m_format.wBitsPerSample / 8U);
    if (m_format.wFormatTag != kPcm || bytes == 0 || m_format.nBlockAlign != bytes) {
        throw Failure(path, "is no PCM sound", "16 or 24 bits at 48 kHz are recorded");
    }
}

/// Up to the samples, in front of which the format stands.
void SoundFile::ReadChunks(const std::string& path) {
    constexpr std::size_t kFormatSize = 40;
    while (true) {
        const std::string head = m_file.Read(kChunkHead);
        const std::uint32_t size = LittleEndian(head, 4, 4);
        if (head.size() < kChunkHead) {
            throw Failure(path, "is no sound file", "it holds no samples");
        }
        if (head.starts_with("data")) {
            // A program that wrote into a pipe did not know the size.
            m_left = size == kUnknownSize || size == 0 ? m_left : size;
            return;
        }
        std::uint64_t rest = std::uint64_t{size} + size % 2;
        if (head.starts_with("fmt ")) {
            const std::string chunk = m_file.Read(std::min<std::size_t>(size, kFormatSize));
            m_format = FormatOf(chunk);
            rest -= chunk.size();
        }
        Skip(m_file, rest);
    }
}

std::string SoundFile::Read(std::size_t samples) {
    const auto count = static_cast<std::size_t>(
        std::min<std::uint64_t>(m_left, std::uint64_t{samples} * m_format.nBlockAlign));
    std::string bytes = m_ahead.substr(0, count);
    m_ahead.erase(0, bytes.size());
    bytes += m_file.Read(count - bytes.size());
    bytes.resize(bytes.size() - bytes.size() % m_format.nBlockAlign);
    m_left -= bytes.size();
    return bytes;
}

} // namespace nqp2::tool
