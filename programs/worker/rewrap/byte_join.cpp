// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/failure.h"
#include "worker/base/media_module.h"
#include "worker/rewrap/containers.h"
#include "worker/rewrap/joined_file.h"
#include "worker/rewrap/lpcm.h"
#include "worker/rewrap/picture_check.h"
#include "worker/rewrap/recording_input.h"
#include "worker/rewrap/stream_file.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace nqp2::worker::rewrap {
namespace {

constexpr const char* kLpcm = "pcm_bluray";

/// A transport stream that a camera has split between any two bytes.
class ByteJoin final : public RecordingInput {
public:
    ByteJoin(const Request& request, const std::function<bool()>& goesOn)
        : m_request(request), m_joined(request.parts, goesOn) {
        Begin();
        m_bytes = m_joined.Size();
    }

    std::string FirstPicture() override {
        std::string first;
        MediaUnit unit;
        while (first.empty() && Next(unit)) {
            first = unit.stream == 0 ? std::string(unit.bytes) : "";
        }
        Begin();
        return first;
    }

    bool Next(MediaUnit& unit) override {
        while (m_file->Next(unit)) {
            if (unit.stream < m_trackOf.size() && m_trackOf[unit.stream] != kNone) {
                unit.stream = m_trackOf[unit.stream];
                Check(unit);
                Unpack(unit);
                return true;
            }
        }
        End();
        return false;
    }

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    /// What has been seen of a track.
    struct Seen {
        std::optional<std::uint64_t> damaged; ///< where a unit is that may only be beside a join
        int sinceDamage = 0;                  ///< units
        int sinceJoin = 0;                    ///< units
        std::int64_t due = kNoTime;           ///< when the next unit is decoded
        std::int64_t coded = kNoTime;
        std::uint64_t position = 0;
        std::int64_t samples = 0;
    };

    void Begin();
    void Expect(const MediaStream& picture);
    void AddTrack(const MediaStream& stream, const std::string& firstUnit);
    std::string FirstUnit(std::size_t stream);
    void Check(MediaUnit& unit);
    void CheckDamage(const MediaUnit& unit, Seen& seen) const;
    void CheckClock(const MediaUnit& unit, Seen& seen) const;
    void CheckPicture(const MediaUnit& unit);
    void Unpack(MediaUnit& unit);
    void End();
    [[nodiscard]] const std::string& PartName(std::uint64_t position) const {
        return m_request.parts[m_joined.PartAt(position)].name;
    }

    [[nodiscard]] copy::Failure Damaged(std::uint64_t position) const {
        return copy::Failure(PartName(position) + " is damaged or cut off.");
    }

    const Request& m_request;
    JoinedFile m_joined;
    std::unique_ptr<StreamFile> m_file;
    std::vector<std::size_t> m_trackOf; ///< by stream
    std::vector<LpcmFormat> m_lpcm;     ///< by track; no channels: it is something else
    std::vector<Seen> m_seen;           ///< by track
    std::int64_t m_start = 0;           ///< of the recording, on its own clock
    std::uint64_t m_frames = 0;
    std::optional<PictureCheck> m_check;
    bool m_isPromised = true; ///< how many pictures there are
    std::string m_samples;
};

std::string ByteJoin::FirstUnit(std::size_t stream) {
    StreamFile file(m_joined, "mpegts", MediaLook::First, [this] { m_joined.RequireNotStopped(); });
    MediaUnit unit;
    while (file.Next(unit)) {
        if (unit.stream == stream) {
            return std::string(unit.bytes);
        }
    }
    return {};
}

void ByteJoin::AddTrack(const MediaStream& stream, const std::string& firstUnit) {
    MediaStream track = stream;
    LpcmFormat lpcm;
    if (stream.codec == kLpcm) {
        lpcm = LpcmFormatOf(firstUnit);
        if (lpcm.channels == 0) {
            throw copy::Failure(m_request.parts.front().name +
                                " has LPCM that is not of one or two channels at 48,000 Hz.");
        }
        track.codec = lpcm.bits == 24 ? "pcm_s24le" : "pcm_s16le";
        track.channels = lpcm.channels;
        track.bits = lpcm.bits;
        track.tick = {1, static_cast<std::int32_t>(kSampleRate)};
        track.details = nullptr;
    }
    m_tracks.push_back(std::move(track));
    m_lpcm.push_back(lpcm);
}

void ByteJoin::Expect(const MediaStream& picture) {
    m_expectedFrames = 0;
    for (const Part& part : m_request.parts) {
        m_isPromised = m_isPromised && part.promised > 0;
        m_expectedFrames += part.promised;
    }
    if (!m_isPromised) {
        m_expectedFrames = static_cast<std::uint64_t>(
            static_cast<double>(picture.length) * picture.tick.numerator /
            picture.tick.denominator * m_tracks.front().rate.PerSecond());
    }
}

void ByteJoin::Begin() {
    m_file = std::make_unique<StreamFile>(m_joined, "mpegts", MediaLook::First,
                                          [this] { m_joined.RequireNotStopped(); });
    const std::size_t picture = m_file->Picture();
    const bool isFirst = m_tracks.empty();
    const auto& streams = m_file->Streams();
    m_trackOf.assign(streams.size(), kNone);
    m_trackOf[picture] = 0;
    if (isFirst) {
        AddTrack(streams[picture], {});
        m_tracks.front().rate = RateOf(streams[picture], m_request, m_request.parts.front().name);
    }
    m_start = streams[picture].start;
    std::size_t count = 1;
    for (std::size_t i = 0; i < streams.size(); ++i) {
        if (streams[i].kind == StreamKind::Sound && streams[i].channels > 0) {
            m_trackOf[i] = count++;
            m_start = std::min(m_start, streams[i].start);
            if (isFirst) {
                AddTrack(streams[i], streams[i].codec == kLpcm ? FirstUnit(i) : std::string());
            }
        }
    }
    if (m_start == kNoTime) {
        throw copy::Failure(m_request.parts.front().name + " does not tell when it begins.");
    }
    if (isFirst) {
        Expect(streams[picture]);
    }
    m_check.emplace(EssenceOf(m_tracks.front(), m_request.parts.front().name), m_tracks.front());
    m_seen.assign(m_tracks.size(), {});
    m_frames = 0;
}

/// Parts that were packed apart count their packets anew: beside a join the mark alone, which may
/// be that of a neighbour, is no fault.
void ByteJoin::CheckDamage(const MediaUnit& unit, Seen& seen) const {
    constexpr int kBeside = 2; // units
    const bool isJoin =
        seen.coded != kNoTime && m_joined.PartAt(seen.position) != m_joined.PartAt(unit.position);
    seen.sinceJoin = isJoin ? 0 : seen.sinceJoin + 1;
    if (isJoin) {
        seen.damaged.reset();
    } else if (seen.damaged && ++seen.sinceDamage > kBeside) {
        throw Damaged(*seen.damaged);
    }
    const bool isBehindJoin = m_joined.PartAt(unit.position) > 0 && seen.sinceJoin <= kBeside;
    if (unit.isDamaged && !seen.damaged && !isBehindJoin) {
        seen.damaged = unit.position;
        seen.sinceDamage = 0;
    }
}

/// At each join, and between any two units, the clock goes on by one of them.
void ByteJoin::CheckClock(const MediaUnit& unit, Seen& seen) const {
    constexpr double kMostOfFrame = 0.75; // clocks are rounded
    if (seen.coded != kNoTime) {
        const double tick = m_file->Streams()[0].tick.numerator /
                            static_cast<double>(m_file->Streams()[0].tick.denominator);
        const double frame = 1 / m_tracks.front().rate.PerSecond() / tick;
        const std::string parts = m_joined.PartAt(seen.position) == m_joined.PartAt(unit.position)
                                      ? PartName(unit.position)
                                      : PartName(seen.position) + " and " + PartName(unit.position);
        if (unit.coded <= seen.coded) {
            throw copy::Failure("The clock goes back in " + parts +
                                ": something is there twice, or the parts are in a wrong order.");
        }
        const auto late = static_cast<double>(unit.coded - seen.due);
        if (late > kMostOfFrame * frame) {
            throw copy::Failure("Something is missing in " + parts + ": the clock leaps by " +
                                std::to_string(std::llround(late * tick * 1000)) +
                                " milliseconds.");
        }
    }
    seen.coded = unit.coded;
    seen.position = unit.position;
    seen.due = unit.coded + unit.duration;
}

void ByteJoin::CheckPicture(const MediaUnit& unit) {
    if (const std::string fault = m_check->FaultOf(unit.bytes); !fault.empty()) {
        throw DamagedAt(PartName(unit.position), m_frames, fault);
    }
}

void ByteJoin::Check(MediaUnit& unit) {
    Seen& seen = m_seen[unit.stream];
    CheckDamage(unit, seen);
    if (unit.coded == kNoTime || unit.shown == kNoTime || unit.bytes.empty()) {
        throw copy::Failure(PartName(unit.position) + " does not tell the time of a unit.");
    }
    if (unit.stream == 0 && unit.duration <= 0) {
        const Tick tick = m_tracks.front().tick;
        unit.duration =
            std::llround(tick.denominator / (tick.numerator * m_tracks.front().rate.PerSecond()));
    }
    CheckClock(unit, seen);
    if (unit.stream == 0) {
        CheckPicture(unit);
        ++m_frames;
    }
    unit.shown -= m_start;
    unit.coded -= m_start;
}

/// PCM goes on sample by sample from where it begins: its own clock is that of packets.
void ByteJoin::Unpack(MediaUnit& unit) {
    const LpcmFormat& format = m_lpcm[unit.stream];
    if (format.channels == 0) {
        return;
    }
    if (!(LpcmFormatOf(unit.bytes) == format) || !UnpackLpcm(unit.bytes, format, m_samples)) {
        throw copy::Failure(PartName(unit.position) + " has LPCM that is not whole.");
    }
    Seen& seen = m_seen[unit.stream];
    const Tick tick = m_file->Streams()[0].tick;
    if (seen.samples == 0) {
        seen.samples = unit.shown * tick.numerator * kSampleRate / tick.denominator;
    }
    unit.bytes = m_samples;
    unit.shown = unit.coded = seen.samples;
    unit.duration =
        static_cast<std::int64_t>(m_samples.size()) / (format.channels * format.bits / 8);
    unit.isKey = true;
    seen.samples += unit.duration;
}

void ByteJoin::End() {
    constexpr std::uint64_t kSlack = 2; // pictures; a playlist's times are rounded
    for (const Seen& seen : m_seen) {
        if (seen.damaged) {
            throw Damaged(*seen.damaged);
        }
    }
    if (m_frames == 0) {
        throw copy::Failure(m_request.parts.front().name + " holds no picture.");
    }
    CheckPromise(m_frames, m_isPromised ? m_expectedFrames : 0,
                 m_request.parts.front().name +
                     (m_request.parts.size() > 1 ? " with what follows" : ""),
                 kSlack, m_remarks);
}

} // namespace

std::unique_ptr<RecordingInput> JoinBytes(const Request& request,
                                          const std::function<bool()>& goesOn) {
    return std::make_unique<ByteJoin>(request, goesOn);
}

} // namespace nqp2::worker::rewrap
