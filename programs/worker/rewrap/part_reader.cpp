// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/part_reader.h"

#include "copy/failure.h"

#include <cmath>

namespace nqp2::worker::rewrap {
namespace {

std::int64_t FrameAt(std::int64_t ticks, const MediaStream& picture, const FrameRate& rate) {
    return std::llround(static_cast<double>(ticks) * picture.tick.numerator /
                        picture.tick.denominator * rate.PerSecond());
}

std::string FirstUnit(StreamFile& file, std::size_t stream) {
    MediaUnit unit;
    while (file.Next(unit)) {
        if (unit.stream == stream) {
            return std::string(unit.bytes);
        }
    }
    return {};
}

} // namespace

std::int64_t FramesOf(const MediaStream& picture, const FrameRate& rate) {
    return FrameAt(picture.length, picture, rate);
}

PictureUnits UnitsOf(const std::string& video, const std::function<bool()>& goesOn) {
    StreamFile cut(video, goesOn, MediaLook::Again);
    StreamFile plain(video, goesOn, MediaLook::Plain);
    const std::size_t picture = cut.Picture();
    if (FirstUnit(cut, picture) != FirstUnit(plain, picture)) {
        return {};
    }
    return {MediaLook::Plain, cut.Reader().IsCut(picture)};
}

PartReader::PartReader(const Part& part, Essence essence, const PictureUnits& units,
                       const FrameRate& rate, std::int64_t stretchSamples,
                       const std::function<bool()>& goesOn)
    : m_part(part), m_rate(rate), m_video(part.video, goesOn, units.look),
      m_picture(m_video.Picture()),
      m_check(essence, m_video.Streams()[m_picture], units.areSingle) {
    const std::int64_t first = SamplesUpTo(part.first, rate);
    const std::int64_t most = part.frames == 0 ? -1 : stretchSamples;
    for (const std::string& path : part.sounds) {
        StreamFile& file =
            *m_sounds.emplace_back(std::make_unique<StreamFile>(path, goesOn, MediaLook::Again));
        const std::size_t stream = file.First(StreamKind::Sound);
        if (stream == file.Streams().size()) {
            throw copy::Failure(path + " holds no sound.");
        }
        if (first > 0) {
            const Tick tick = file.Streams()[stream].tick;
            file.GoTo(stream, part.first * std::int64_t{rate.seconds} * tick.denominator /
                                  (std::int64_t{rate.frames} * tick.numerator));
        }
        m_feeds.emplace_back(file, stream, first, most);
    }
    for (std::size_t i = 0; part.sounds.empty() && i < m_video.Streams().size(); ++i) {
        if (m_video.Streams()[i].kind == StreamKind::Sound) {
            m_feeds.emplace_back(m_video, i, first, most);
        }
    }
    if (part.first > 0) {
        const Tick tick = m_video.Streams()[m_picture].tick;
        m_video.GoTo(m_picture, part.first * std::int64_t{rate.seconds} * tick.denominator /
                                    (std::int64_t{rate.frames} * tick.numerator));
    }
}

std::int64_t PartReader::FrameOf(std::int64_t tick) const {
    return tick == kNoTime ? -1 : FrameAt(tick, m_video.Streams()[m_picture], m_rate);
}

bool PartReader::IsReached(const MediaUnit& unit) {
    if (m_isReached || m_part.first == 0) {
        m_isReached = true;
        return true;
    }
    const std::int64_t frame = FrameOf(unit.shown);
    if (frame < 0 || frame > m_part.first) {
        throw copy::Failure(m_part.name + " does not tell where picture " +
                            std::to_string(m_part.first) + " is.");
    }
    m_isReached = frame == m_part.first;
    return m_isReached;
}

bool PartReader::ReadOn(MediaUnit& unit) {
    if (!m_video.Next(unit)) {
        m_isOver = true;
        for (SoundFeed& feed : m_feeds) {
            if (&feed.File() == &m_video) {
                feed.End();
            }
        }
        return false;
    }
    for (SoundFeed& feed : m_feeds) {
        if (&feed.File() == &m_video && feed.Stream() == unit.stream) {
            feed.Take(unit);
        }
    }
    return true;
}

bool PartReader::NextPicture(MediaUnit& unit) {
    while (!m_isOver && (m_part.frames == 0 || m_frames < m_part.frames)) {
        if (!ReadOn(unit)) {
            break;
        }
        if (unit.stream != m_picture || !IsReached(unit)) {
            continue;
        }
        RequireGood(unit);
        ++m_frames;
        return true;
    }
    RequireAll();
    m_isOver = true;
    return false;
}

void PartReader::RequireGood(const MediaUnit& unit) {
    const bool isLost = unit.isDamaged || unit.bytes.empty();
    const std::string fault = isLost ? "" : m_check.FaultOf(unit.bytes);
    if (isLost || !fault.empty()) {
        throw DamagedAt(m_part.name, m_part.first + m_frames, fault);
    }
}

void PartReader::RequireAll() const {
    const std::int64_t told = FramesOf(m_video.Streams()[m_picture], m_rate);
    const std::int64_t wanted = m_part.frames != 0    ? m_part.frames
                                : told > m_part.first ? told - m_part.first
                                                      : 0;
    if (m_frames < wanted || m_frames == 0) {
        throw copy::Failure(m_part.name + " is cut off: " + std::to_string(wanted) +
                            " pictures are wanted of it, and " + std::to_string(m_frames) +
                            " are there.");
    }
}

void PartReader::Fill(SoundFeed& feed, std::int64_t samples) {
    MediaUnit unit;
    const bool isBeside = &feed.File() == &m_video;
    while (feed.Available() < samples && !feed.IsEnded() && (!isBeside || m_isOver)) {
        if (isBeside) {
            ReadOn(unit);
        } else if (!feed.File().Next(unit)) {
            feed.End();
        } else if (unit.stream == feed.Stream()) {
            feed.Take(unit);
        }
    }
}

} // namespace nqp2::worker::rewrap
