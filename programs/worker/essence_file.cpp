// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/essence_file.h"

#include <algorithm>
#include <new>
#include <utility>

namespace nqp2::worker {
namespace {

/// Samples of sound that belong to so many frames of video, rounded.
std::int64_t SamplesUpTo(std::int64_t frames, const FrameRate& rate) {
    return (frames * kSampleRate * rate.seconds + rate.frames / 2) / rate.frames;
}

} // namespace

EssenceFile::EssenceFile(const platform::Folder& folder, const std::string& name,
                         FrameRate videoRate, std::int32_t sampleBytes)
    : m_name(name), m_path(folder.Path() + "/" + name), m_videoRate(videoRate),
      m_sampleBytes(sampleBytes), m_digest(XXH3_createState()) {
    if (m_digest == nullptr || XXH3_128bits_reset(m_digest.get()) != XXH_OK) {
        throw std::bad_alloc();
    }
}

EssenceFile::~EssenceFile() = default;

Outcome EssenceFile::Failed(const std::string& reason) const {
    return m_failure ? Failure("This essence cannot be put into " + m_path + ": " + reason + ".")
                     : Failure("write", m_path, m_failure);
}

template <class Mux>
Outcome EssenceFile::Begin(platform::Folder& folder, Mux&& mux) {
    const MediaModule* module = nullptr;
    if (Outcome outcome = LoadMediaModule(module); !outcome) {
        return outcome;
    }
    if (const auto status = folder.Create(m_name, m_writer); !status) {
        return Failure("write", m_path, status);
    }
    std::string reason;
    m_muxer = mux(*module, reason);
    return m_muxer != nullptr ? Outcome() : Failed(reason);
}

Outcome EssenceFile::CreateVideo(platform::Folder& folder, const std::string& name,
                                 const VideoFormat& format, std::unique_ptr<EssenceFile>& file) {
    file.reset(new EssenceFile(folder, name, format.rate, 0));
    return file->Begin(folder, [&](const MediaModule& module, std::string& reason) {
        return module.MuxVideo(format, *file, reason);
    });
}

Outcome EssenceFile::CreateSound(platform::Folder& folder, const std::string& name,
                                 const SoundFormat& format, std::unique_ptr<EssenceFile>& file) {
    file.reset(new EssenceFile(folder, name, format.videoRate, format.bits / 8));
    return file->Begin(folder, [&](const MediaModule& module, std::string& reason) {
        return module.MuxSound(format, *file, reason);
    });
}

bool EssenceFile::WriteAt(std::uint64_t position, std::string_view bytes) {
    const bool isAhead = position == m_size && m_ahead.starts_with(bytes);
    if (!isAhead) {
        if (platform::IoStatus status = m_writer->WriteAt(position, bytes); !status) {
            m_failure = m_failure ? std::move(status) : m_failure;
            return false;
        }
    }
    m_ahead.remove_prefix(isAhead ? bytes.size() : m_ahead.size());
    m_size = std::max(m_size, position + bytes.size());
    return true;
}

std::size_t EssenceFile::NextSoundSize() const {
    const std::int64_t samples =
        SamplesUpTo(m_units + 1, m_videoRate) - SamplesUpTo(m_units, m_videoRate);
    return static_cast<std::size_t>(samples * m_sampleBytes);
}

Outcome EssenceFile::Add(std::string_view bytes) {
    if (m_sampleBytes == 0) {
        return Put(bytes);
    }
    m_sound.append(bytes);
    std::size_t taken = 0;
    Outcome outcome;
    for (std::size_t size = NextSoundSize(); outcome && m_sound.size() - taken >= size;
         size = NextSoundSize()) {
        outcome = Put(std::string_view(m_sound).substr(taken, size));
        taken += outcome ? size : 0;
        if (!outcome) {
            break;
        }
    }
    m_sound.erase(0, taken);
    return outcome;
}

/// The muxer knows no way back from a unit that could not be written. All but the first are the
/// bytes at the file's end and nothing else: they are written before it hears of them.
Outcome EssenceFile::Put(std::string_view unit) {
    if (m_units != 0) {
        if (const auto status = m_writer->WriteAt(m_size, unit); !status) {
            static_cast<void>(m_writer->Resize(m_size)); // gives back what part of it took
            return Failure("write", m_path, status);
        }
        m_ahead = unit;
    }
    const Outcome put = m_muxer->Put(unit);
    m_ahead = {};
    if (!put) {
        return Failed(put.error);
    }
    if (m_units == 0) {
        m_essenceStart = m_size - unit.size();
    }
    XXH3_128bits_update(m_digest.get(), unit.data(), unit.size());
    ++m_units;
    m_essenceSize += unit.size();
    return {};
}

std::uint64_t EssenceFile::SoundUntil(std::int64_t frames) const {
    const auto wanted = static_cast<std::uint64_t>(SamplesUpTo(frames, m_videoRate)) *
                        static_cast<std::uint64_t>(m_sampleBytes);
    const std::uint64_t there = m_essenceSize + m_sound.size();
    return wanted - std::min(wanted, there);
}

void EssenceFile::AddSilence(std::int64_t frames) {
    bool isRoom = true;
    while (isRoom && (!m_sound.empty() || m_units < frames)) {
        m_sound.resize(NextSoundSize(), '\0');
        isRoom = static_cast<bool>(Put(m_sound));
        m_sound.clear();
    }
}

Outcome EssenceFile::Finish(std::int64_t frames) {
    if (m_sampleBytes != 0) {
        AddSilence(frames);
    }
    if (const Outcome finished = m_muxer->Finish(); !finished) {
        return Failed(finished.error);
    }
    if (const platform::IoStatus status = m_writer->Flush(); !status) {
        return Failure("write", m_path, status);
    }
    return Verify();
}

Outcome EssenceFile::Verify() {
    const XXH128_hash_t written = XXH3_128bits_digest(m_digest.get());
    XXH3_128bits_reset(m_digest.get());
    std::string block(std::size_t{1} << 20U, '\0');
    for (std::uint64_t done = 0; done < m_essenceSize;) {
        const auto wanted = std::min<std::uint64_t>(block.size(), m_essenceSize - done);
        std::size_t count = 0;
        const platform::IoStatus status = m_writer->ReadAt(m_essenceStart + done, block.data(),
                                                           static_cast<std::size_t>(wanted), count);
        if (!status) {
            return Failure("read back", m_path, status);
        }
        if (count == 0) {
            break; // the digests differ
        }
        XXH3_128bits_update(m_digest.get(), block.data(), count);
        done += count;
    }
    return XXH128_isEqual(written, XXH3_128bits_digest(m_digest.get())) != 0
               ? Outcome()
               : Failure("What the medium gives back of " + m_path + " is not what was written.");
}

Outcome EssenceFile::Commit() {
    const platform::IoStatus status = m_writer->Commit();
    return status ? Outcome() : Failure("name the file", m_path, status);
}

} // namespace nqp2::worker
