// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/proof.h"

#include "copy/failure.h"
#include "worker/rewrap/stream_file.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace nqp2::worker::rewrap {
namespace {

constexpr double kTolerance = 0.002; ///< seconds; times in MKV are whole milliseconds

[[noreturn]] void Differs(const OutputFile& output, const std::string& what) {
    throw copy::Failure("What was written into " + output.Name() +
                        " is not what was read: " + what + ".");
}

/// Each picture of AVC-Intra is one unit of the file, and needs nothing of another to be placed.
MediaLook LookAt(const PlannedFile& plan) {
    return plan.essence.front() == Essence::AvcIntra ? MediaLook::Plain : MediaLook::First;
}

/// Reads one written file.
class Proof {
public:
    Proof(const PlannedFile& plan, const std::vector<MediaStream>& tracks, OutputFile& output)
        : m_plan(plan), m_tracks(tracks), m_output(output),
          m_file(output, plan.reader, LookAt(plan), [&output] { output.Require({}); }) {
        FindTracks();
    }

    void ReadAll(const std::function<void(std::size_t)>& step) {
        MediaUnit unit;
        while (m_file.Next(unit)) {
            const std::size_t track =
                unit.stream < m_trackOf.size() ? m_trackOf[unit.stream] : m_tracks.size();
            if (track < m_tracks.size()) {
                if (unit.isDamaged) {
                    Differs(m_output, "a unit of it is damaged");
                }
                m_found[track]->Add(unit, m_output.Name());
                step(unit.bytes.size());
            }
        }
    }

    void Compare(const std::vector<std::unique_ptr<Tally>>& wanted) const {
        for (std::size_t i = 0; i < m_tracks.size(); ++i) {
            const std::string track = "track " + std::to_string(i + 1) + " has ";
            if (const std::string difference = wanted[i]->DifferenceTo(*m_found[i]);
                !difference.empty()) {
                Differs(m_output, track + difference);
            }
            const double shift = (wanted[i]->Start() - wanted.front()->Start()) -
                                 (m_found[i]->Start() - m_found.front()->Start());
            if (std::abs(shift) > kTolerance) {
                Differs(m_output, track + "another place in time");
            }
        }
        CompareLength(wanted.front()->Count());
        CompareTexts();
    }

    [[nodiscard]] std::uint64_t Count(std::size_t track) const { return m_found[track]->Count(); }

private:
    void FindTracks() {
        const std::vector<MediaStream>& streams = m_file.Streams();
        m_trackOf.assign(streams.size(), m_tracks.size());
        m_found.resize(m_tracks.size());
        std::size_t sounds = 0;
        for (std::size_t i = 0; i < streams.size(); ++i) {
            const bool isPicture = streams[i].kind == StreamKind::Picture && m_found[0] == nullptr;
            const std::size_t track = isPicture                              ? 0
                                      : streams[i].kind == StreamKind::Sound ? ++sounds
                                                                             : m_tracks.size();
            if (track < m_tracks.size()) {
                MediaStream facts = streams[i];
                facts.rate = m_tracks[track].rate; // containers round
                m_trackOf[i] = track;
                m_found[track] = std::make_unique<Tally>(m_plan.essence[track], facts);
            }
        }
        if (sounds + 1 != m_tracks.size() || m_found[0] == nullptr) {
            Differs(m_output, "it has " + std::to_string(sounds) + " tracks of sound");
        }
    }

    void CompareLength(std::uint64_t frames) const {
        const MediaStream& picture = m_file.Streams()[m_file.Picture()];
        const double frame = 1 / m_tracks.front().rate.PerSecond();
        const double length =
            static_cast<double>(picture.length) * picture.tick.numerator / picture.tick.denominator;
        if (picture.length != 0 && std::abs(length - static_cast<double>(frames) * frame) > frame) {
            Differs(m_output, "it is " + std::to_string(length) + " seconds long");
        }
    }

    void CompareTexts() const {
        const MediaReader& reader = m_file.Reader();
        const std::string& timecode = m_plan.file.timecode;
        if (!timecode.empty() && reader.Timecode() != timecode) {
            Differs(m_output, "its timecode is \"" + reader.Timecode() + "\"");
        }
        const auto& marks = m_plan.file.marks;
        const bool isSame = std::equal(
            marks.begin(), marks.end(), reader.Marks().begin(), reader.Marks().end(),
            [](const MediaMark& one, const MediaMark& other) {
                return std::abs(static_cast<double>(one.start - other.start)) <= kTolerance * 1000;
            });
        if (!isSame) {
            Differs(m_output, "it has other chapters");
        }
    }

    const PlannedFile& m_plan;
    const std::vector<MediaStream>& m_tracks;
    OutputFile& m_output;
    StreamFile m_file;
    std::vector<std::size_t> m_trackOf; ///< by stream
    std::vector<std::unique_ptr<Tally>> m_found;
};

} // namespace

void ProveWritten(const PlannedFile& plan, const std::vector<MediaStream>& tracks,
                  const std::vector<std::unique_ptr<Tally>>& wanted, OutputFile& output,
                  RewrapResult& result, const std::function<void(std::size_t)>& step) {
    Proof proof(plan, tracks, output);
    proof.ReadAll(step);
    proof.Compare(wanted);
    result.bytes = output.Size();
    result.frames = static_cast<std::uint32_t>(proof.Count(0));
    result.soundTracks = static_cast<std::uint32_t>(tracks.size() - 1);
    for (std::size_t i = 1; i < tracks.size(); ++i) {
        result.samples = i == 1 ? proof.Count(i) : std::min(result.samples, proof.Count(i));
    }
}

} // namespace nqp2::worker::rewrap
