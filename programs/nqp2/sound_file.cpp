// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/sound_file.h"

#include "console/console.h"

#include <sndfile.h>
#include <vector>

namespace nqp2::tool {
namespace {

constexpr std::uint16_t kPcm = 1;

/// Bits of the samples; 0 for those that would be recorded otherwise than they are.
std::uint16_t BitsOf(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_16:
        return 16;
    case SF_FORMAT_PCM_24:
        return 24;
    default:
        return 0;
    }
}

} // namespace

void SoundFile::Close::operator()(SNDFILE* file) const {
    sf_close(file);
}

SoundFile::SoundFile(const std::string& path) : m_path(path) {
    RequireRegularFile(path);
    SF_INFO info = {};
    m_file.reset(sf_open(path.c_str(), SFM_READ, &info));
    if (m_file == nullptr) {
        throw Failure(path, "is no sound file",
                      std::string(sf_strerror(nullptr)) + " --bare takes bare samples");
    }
    m_format.wBitsPerSample = BitsOf(info.format);
    if (m_format.wBitsPerSample == 0) {
        throw Failure(path, "is no PCM sound of 16 or 24 bits", "nothing else is recorded");
    }
    m_format.wFormatTag = kPcm;
    m_format.nChannels = static_cast<std::uint16_t>(info.channels);
    m_format.nSamplesPerSec = static_cast<std::uint32_t>(info.samplerate);
    m_format.nBlockAlign =
        static_cast<std::uint16_t>(m_format.nChannels * (m_format.wBitsPerSample / 8U));
    m_format.nAvgBytesPerSec = m_format.nSamplesPerSec * m_format.nBlockAlign;
}

SoundFile::SoundFile(const std::string& path, const WAVEFORMATEX& bare)
    : m_path(path), m_format(bare), m_bare(path) {}

std::string SoundFile::Read(std::size_t samples) {
    const std::size_t block = m_format.nBlockAlign;
    std::string bytes;
    if (m_bare) {
        bytes = m_bare->Read(samples * block);
        bytes.resize(bytes.size() - bytes.size() % block);
        return bytes;
    }
    std::vector<int> values(samples * m_format.nChannels);
    const sf_count_t frames =
        sf_readf_int(m_file.get(), values.data(), static_cast<sf_count_t>(samples));
    if (sf_error(m_file.get()) != SF_ERR_NO_ERROR) {
        throw Failure(m_path, "cannot be read", sf_strerror(m_file.get()));
    }
    values.resize(static_cast<std::size_t>(frames) * m_format.nChannels);
    bytes.resize(values.size() * block / m_format.nChannels);
    char* to = bytes.data();
    for (const int value : values) { // the sample is at the top of its 32 bits
        for (unsigned bit = 32U - m_format.wBitsPerSample; bit < 32; bit += 8) {
            *to++ = static_cast<char>(static_cast<unsigned>(value) >> bit);
        }
    }
    return bytes;
}

} // namespace nqp2::tool
