// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/essence_file.h"

#include "platform/guard.h"
#include "worker/base/media_loader.h"

#include <algorithm>
#include <utility>

namespace nqp2::worker {
namespace {

/// Samples of sound that belong to so many frames of video, rounded.
std::int64_t SamplesUpTo(std::int64_t frames, const FrameRate& rate) {
    return (frames * kSampleRate * rate.seconds + rate.frames / 2) / rate.frames;
}

std::unique_ptr<platform::FileWriter> Begun(platform::Folder& folder, const std::string& name,
                                            const std::string& path) {
    LoadMediaModule();
    std::unique_ptr<platform::FileWriter> writer;
    copy::Require(folder.Create(name, writer), "write", path);
    return writer;
}

} // namespace

EssenceFile::EssenceFile(platform::Folder& folder, const std::string& name, FrameRate videoRate,
                         std::int32_t sampleBytes)
    : m_name(name), m_path(platform::PathIn(folder.Path(), name)), m_videoRate(videoRate),
      m_sampleBytes(sampleBytes), m_writer(Begun(folder, m_name, m_path)),
      m_essence(*m_writer, m_path) {}

EssenceFile::EssenceFile(platform::Folder& folder, const std::string& name,
                         const VideoFormat& format)
    : EssenceFile(folder, name, format.rate, 0) {
    Require(LoadMediaModule().MuxVideo(format, *this, m_muxer));
}

EssenceFile::EssenceFile(platform::Folder& folder, const std::string& name,
                         const SoundFormat& format)
    : EssenceFile(folder, name, format.videoRate, format.bits / 8) {
    Require(LoadMediaModule().MuxSound(format, *this, m_muxer));
}

EssenceFile::~EssenceFile() = default;

void EssenceFile::Require(const MediaFault& fault) const {
    if (fault.empty()) {
        return;
    }
    copy::Require(m_failure, "write", m_path);
    throw copy::Failure("This essence cannot be put into " + m_path + ": " + fault + ".");
}

bool EssenceFile::WriteAt(std::uint64_t position, std::string_view bytes) noexcept {
    const bool isSame = bytes.data() == m_ahead.data() && bytes.size() <= m_ahead.size();
    const bool isAhead = position == m_size && (isSame || m_ahead.starts_with(bytes));
    const bool isWritten = isAhead || platform::Guarded(false, [&] {
                               if (!m_ends.Note(position, bytes, EssenceEnd())) {
                                   return false;
                               }
                               platform::IoStatus status = m_writer->WriteAt(position, bytes);
                               if (!status && m_failure) {
                                   m_failure = std::move(status);
                                   return false;
                               }
                               return static_cast<bool>(status);
                           });
    if (isWritten) {
        m_ahead.remove_prefix(isAhead ? bytes.size() : m_ahead.size());
        m_size = std::max(m_size, position + bytes.size());
    }
    return isWritten;
}

std::size_t EssenceFile::NextSoundSize() const {
    const std::int64_t samples =
        SamplesUpTo(m_units + 1, m_videoRate) - SamplesUpTo(m_units, m_videoRate);
    return static_cast<std::size_t>(samples * m_sampleBytes);
}

void EssenceFile::Add(std::string_view bytes) {
    if (m_sampleBytes == 0) {
        Put(bytes);
        return;
    }
    struct Taken {
        std::string& sound;
        std::size_t size = 0;
        ~Taken() { sound.erase(0, size); }
    };
    m_sound.append(bytes);
    Taken taken{m_sound};
    for (std::size_t size = NextSoundSize(); m_sound.size() - taken.size >= size;
         size = NextSoundSize()) {
        Put(std::string_view(m_sound).substr(taken.size, size));
        taken.size += size;
    }
}

/// The muxer knows no way back from a unit that could not be written. All but the first are the
/// bytes at the file's end and nothing else: they are written before it is given them.
void EssenceFile::Put(std::string_view unit) {
    if (m_units != 0) {
        if (const auto status = m_writer->WriteAt(m_size, unit); !status) {
            static_cast<void>(m_writer->Resize(m_size)); // gives back what part of it took
            throw copy::Failure("write", m_path, status);
        }
        m_ahead = unit;
    }
    const MediaFault fault = m_muxer->Put(unit);
    m_ahead = {};
    Require(fault);
    if (m_units == 0) {
        m_essence.BeginAt(m_size - unit.size());
        m_ends.BeginEssence(EssenceStart());
    }
    m_essence.Add(unit);
    ++m_units;
}

std::uint64_t EssenceFile::SoundUntil(std::int64_t frames) const {
    const auto wanted = static_cast<std::uint64_t>(SamplesUpTo(frames, m_videoRate)) *
                        static_cast<std::uint64_t>(m_sampleBytes);
    const std::uint64_t there = EssenceSize() + m_sound.size();
    return wanted - std::min(wanted, there);
}

void EssenceFile::AddSilence(std::int64_t frames) {
    try {
        while (!m_sound.empty() || m_units < frames) {
            m_sound.resize(NextSoundSize(), '\0');
            Put(m_sound);
            m_sound.clear();
        }
    } catch (const copy::Failure&) {
        m_sound.clear(); // no room for more: the file ends with what it has
    }
}

void EssenceFile::Finish(std::int64_t frames) {
    if (m_sampleBytes != 0) {
        AddSilence(frames);
    }
    Require(m_muxer->Finish());
    copy::Require(m_writer->Flush(), "write", m_path);
    m_essence.Finish();
    m_ends.Check(*m_writer, m_path, EssenceEnd());
}

void EssenceFile::Commit() {
    copy::Require(m_writer->Commit(), "name the file", m_path);
}

} // namespace nqp2::worker
