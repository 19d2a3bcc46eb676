// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/failure.h"
#include "media/rates.h"
#include "media/track_texts.h"
#include "platform/file_system.h"
#include "worker/base/card_folder.h"
#include "worker/base/media_module.h"
#include "worker/rewrap/containers.h"
#include "worker/rewrap/part_reader.h"

#include <algorithm>
#include <map>
#include <set>

namespace nqp2::worker::rewrap {
namespace {

/// What the heads of a part's files tell.
struct PartFacts {
    MediaStream picture;
    PictureUnits units;
    std::vector<MediaStream> sounds;
    std::uint64_t bytes = 0;
};

std::uint64_t SizeOf(const std::string& path) {
    platform::FileInfo info;
    copy::Require(platform::Files().Stat(path, info), "read", path);
    return info.size;
}

PartFacts FactsOf(const Part& part, const std::function<bool()>& goesOn) {
    PartFacts facts;
    const StreamFile video(part.video, goesOn);
    facts.picture = video.Streams()[video.Picture()];
    if (EssenceOf(facts.picture, part.name) == Essence::AvcIntra) {
        facts.units = UnitsOf(part.video, goesOn);
    }
    facts.bytes = SizeOf(part.video);
    for (const MediaStream& each : video.Streams()) {
        if (part.sounds.empty() && each.kind == StreamKind::Sound) {
            facts.sounds.push_back(each);
        }
    }
    for (const std::string& path : part.sounds) {
        const StreamFile sound(path, goesOn);
        const std::size_t stream = sound.First(StreamKind::Sound);
        if (stream == sound.Streams().size()) {
            throw copy::Failure(path + " holds no sound.");
        }
        facts.sounds.push_back(sound.Streams()[stream]);
        facts.bytes += SizeOf(path);
    }
    return facts;
}

/// What all parts must have in common, in words.
std::string FormatText(const PartFacts& facts) {
    const MediaStream& picture = facts.picture;
    const bool isInterlaced = picture.order != FieldOrder::Progressive;
    std::string text =
        picture.codec + " " + picture.pixels + " " +
        Shown(media::PictureText(
            picture.width, picture.height,
            picture.rate.frames > 0 ? media::FindRate(picture.rate, isInterlaced) : nullptr));
    for (const MediaStream& sound : facts.sounds) {
        text.append(", ").append(Shown(media::SoundText(sound.channels, sound.hertz)));
        text.append(" ").append(sound.codec);
    }
    return text;
}

/// Parts whose pictures are intra: picture n is at n / rate, sample n at n / 48,000, whatever the
/// files' own clocks say.
class FrameJoin final : public RecordingInput {
public:
    FrameJoin(const Request& request, const std::function<bool()>& goesOn)
        : m_request(request), m_goesOn(goesOn) {
        Survey();
    }

    std::string FirstPicture() override {
        PartReader reader(m_request.parts.front(), PictureEssence(), m_units.front(), m_rate, 0,
                          m_goesOn);
        MediaUnit unit;
        return reader.NextPicture(unit) ? std::string(unit.bytes) : std::string();
    }

    bool Next(MediaUnit& unit) override {
        while (m_reader != nullptr || m_next < m_request.parts.size()) {
            if (m_reader == nullptr) {
                OpenPart();
            }
            if (m_track < m_tracks.size()) {
                if (TakeSound(unit)) {
                    return true;
                }
                ++m_track;
            } else if (m_isDraining) {
                EndPart();
            } else if (TakePicture(unit)) {
                return true;
            }
        }
        return false;
    }

private:
    void Survey();
    void MakeTracks(const PartFacts& facts);
    void OpenPart();
    void EndPart();
    void Place(MediaUnit& unit);
    [[nodiscard]] copy::Failure Unordered() const {
        return copy::Failure(Current().name +
                             " does not tell the order in which its pictures are shown.");
    }
    bool TakePicture(MediaUnit& unit);
    bool TakeSound(MediaUnit& unit);
    std::string_view Interleaved(std::int64_t samples);
    [[nodiscard]] Essence PictureEssence() const {
        return EssenceOf(m_tracks.front(), m_request.parts.front().name);
    }
    [[nodiscard]] const Part& Current() const { return m_request.parts[m_next - 1]; }
    /// Samples of the longest frame.
    [[nodiscard]] std::int64_t FrameSamples() const {
        return kSampleRate * std::int64_t{m_rate.seconds} / m_rate.frames + 1;
    }

    const Request& m_request;
    const std::function<bool()>& m_goesOn;
    FrameRate m_rate;
    std::vector<PictureUnits> m_units; ///< by part
    std::size_t m_next = 0;            ///< part that comes next
    std::unique_ptr<PartReader> m_reader;
    std::int64_t m_frames = 0;
    bool m_isReordered = false;  ///< a picture of this part was not shown in its turn
    std::int64_t m_shownSum = 0; ///< by how much they were not: in the end 0
    std::size_t m_track = 0;     ///< whose sound is due
    bool m_isDraining = false;
    std::vector<std::int64_t> m_samples; ///< so far, by track
    std::string m_interleaved;
};

void FrameJoin::MakeTracks(const PartFacts& facts) {
    m_rate = RateOf(facts.picture, m_request, m_request.parts.front().name);
    MediaStream picture = facts.picture;
    picture.rate = m_rate;
    picture.tick = {m_rate.seconds, m_rate.frames};
    m_tracks.push_back(picture);
    for (const MediaStream& each : facts.sounds) {
        if (EssenceOf(each, m_request.parts.front().name) != Essence::Pcm ||
            each.hertz != static_cast<std::int32_t>(kSampleRate)) {
            throw copy::Failure(m_request.parts.front().name + " has sound that is no PCM of " +
                                std::to_string(kSampleRate) + " Hz.");
        }
        MediaStream sound = each;
        sound.tick = {1, static_cast<std::int32_t>(kSampleRate)};
        sound.details = nullptr;
        const bool isMore = m_request.oneTrack && m_tracks.size() == 2;
        if (!isMore) {
            m_tracks.push_back(sound);
        } else if (m_tracks[1].bits != sound.bits) {
            throw copy::Failure("Channels of different widths cannot be one track.");
        } else {
            m_tracks[1].channels += sound.channels;
        }
    }
    m_samples.assign(m_tracks.size(), 0);
}

void FrameJoin::Survey() {
    std::map<std::string, std::pair<PartFacts, std::string>> known; // by the picture's file
    std::string format;
    bool isCounted = true;
    for (const Part& part : m_request.parts) {
        auto found = known.find(part.video);
        if (found == known.end()) {
            const PartFacts facts = FactsOf(part, m_goesOn);
            found = known.emplace(part.video, std::pair(facts, FormatText(facts))).first;
        }
        const auto& [facts, text] = found->second;
        m_units.push_back(facts.units);
        if (m_tracks.empty()) {
            format = text;
            MakeTracks(facts);
        } else if (text != format) {
            std::string problem = part.name + " is of another format than ";
            (problem += m_request.parts.front().name) += ": ";
            ((problem += text) += " instead of ") += format;
            throw copy::Failure(problem + ".");
        }
        if (!facts.picture.isIntra && (part.first != 0 || part.frames != 0)) {
            throw copy::Failure(part.name + " is cut at a picture that is not intra.");
        }
        const std::int64_t all = FramesOf(facts.picture, m_rate);
        const std::int64_t rest = std::max<std::int64_t>(all - part.first, 0);
        const std::int64_t taken = part.frames != 0 ? part.frames : rest;
        isCounted = isCounted && taken > 0;
        m_expectedFrames += static_cast<std::uint64_t>(taken);
        m_bytes += all > 0 ? static_cast<std::uint64_t>(static_cast<double>(facts.bytes) *
                                                        static_cast<double>(std::min(taken, all)) /
                                                        static_cast<double>(all))
                           : facts.bytes;
    }
    m_expectedFrames = isCounted ? m_expectedFrames : 0;
}

void FrameJoin::OpenPart() {
    const Part& part = m_request.parts[m_next++];
    const std::int64_t samples =
        SamplesUpTo(m_frames + part.frames, m_rate) - SamplesUpTo(m_frames, m_rate);
    m_reader = std::make_unique<PartReader>(part, PictureEssence(), m_units[m_next - 1], m_rate,
                                            samples, m_goesOn);
    m_track = m_tracks.size();
    m_isDraining = false;
    m_isReordered = false;
    m_shownSum = 0;
}

/// Of reordered pictures the file tells when each is shown, and has to tell it of all.
void FrameJoin::Place(MediaUnit& unit) {
    const std::int64_t number = m_frames++;
    const std::int64_t inPart = m_reader->Frames() - 1;
    const std::int64_t shown = m_tracks.front().delay == 0 ? inPart : m_reader->FrameOf(unit.shown);
    unit.shown = number - inPart + shown;
    unit.coded = number - m_tracks.front().delay;
    m_isReordered = m_isReordered || shown != inPart;
    m_shownSum += shown - inPart;
    if (shown < 0 || unit.shown < unit.coded) {
        throw Unordered();
    }
}

bool FrameJoin::TakePicture(MediaUnit& unit) {
    m_track = 1;
    if (!m_reader->NextPicture(unit)) {
        m_isDraining = true;
        return false;
    }
    Place(unit);
    unit.stream = 0;
    unit.duration = 1;
    unit.isKey = unit.isKey || m_tracks.front().isIntra;
    return true;
}

/// While there are pictures, the sound up to the end of the last one; then the part's rest, which
/// must not be more than a frame.
bool FrameJoin::TakeSound(MediaUnit& unit) {
    std::vector<SoundFeed>& feeds = m_reader->Feeds();
    const std::size_t first = m_track - 1;
    const std::size_t end = m_request.oneTrack ? feeds.size() : m_track;
    const std::int64_t due = SamplesUpTo(m_frames, m_rate) + (m_isDraining ? FrameSamples() : 0);
    const std::int64_t most = std::max<std::int64_t>(due - m_samples[m_track], 0);
    std::int64_t samples = most;
    for (std::size_t i = first; i < end; ++i) {
        m_reader->Fill(feeds[i], most + (m_isDraining ? 1 : 0));
        if (m_isDraining && feeds[i].Available() > most) {
            throw copy::Failure(Current().name + " has sound that is longer than its pictures.");
        }
        samples = std::min(samples, feeds[i].Available());
    }
    if (samples <= 0) {
        return false;
    }
    unit = {};
    unit.bytes = end - first == 1 ? feeds[first].Out(samples) : Interleaved(samples);
    unit.stream = m_track;
    unit.shown = unit.coded = m_samples[m_track];
    unit.duration = samples;
    unit.isKey = true;
    m_samples[m_track] += samples;
    return true;
}

std::string_view FrameJoin::Interleaved(std::int64_t samples) {
    std::vector<SoundFeed>& feeds = m_reader->Feeds();
    std::size_t frame = 0;
    for (const SoundFeed& feed : feeds) {
        frame += feed.SampleBytes();
    }
    m_interleaved.resize(frame * static_cast<std::size_t>(samples));
    std::size_t offset = 0;
    for (SoundFeed& feed : feeds) {
        const std::size_t size = feed.SampleBytes();
        const std::string_view bytes = feed.Out(samples);
        for (std::size_t i = 0; i < static_cast<std::size_t>(samples); ++i) {
            bytes.copy(m_interleaved.data() + i * frame + offset, size, i * size);
        }
        offset += size;
    }
    return m_interleaved;
}

void FrameJoin::EndPart() {
    const Part& part = Current();
    if (m_shownSum != 0 || m_isReordered != (m_tracks.front().delay > 0)) {
        throw Unordered();
    }
    for (std::size_t track = 1; track < m_tracks.size(); ++track) {
        if (m_samples[track] + FrameSamples() < SamplesUpTo(m_frames, m_rate)) {
            throw copy::Failure(part.name + " has sound that is shorter than its pictures.");
        }
    }
    std::int64_t left = 0;
    for (const SoundFeed& feed : m_reader->Feeds()) {
        left = std::max(left, feed.Available());
    }
    if (left > 0) {
        m_remarks.push_back("The channels of " + part.name + " are not of one length: " +
                            std::to_string(left) + " samples at its end are left out.");
    }
    if (part.first == 0 && part.frames == 0) {
        CheckPromise(m_reader->Frames(), part.promised, part.name, 0, m_remarks);
    }
    m_reader.reset();
}

} // namespace

std::unique_ptr<RecordingInput> JoinFrames(const Request& request,
                                           const std::function<bool()>& goesOn) {
    return std::make_unique<FrameJoin>(request, goesOn);
}

} // namespace nqp2::worker::rewrap
