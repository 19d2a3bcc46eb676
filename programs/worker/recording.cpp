// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording.h"

#include "capacity/recording_cost.h"
#include "platform/guard.h"

#include <algorithm>
#include <string>
#include <utility>

namespace nqp2::worker {
namespace {

constexpr std::uint16_t kPcm = 1;
constexpr std::uint16_t kMostChannels = 16;

/// Bytes of one sample of all channels.
std::size_t BlockOf(const WAVEFORMATEX& wave) {
    return wave.wBitsPerSample / 8U * std::size_t{wave.nChannels};
}

bool IsSound(const WAVEFORMATEX& wave) {
    const bool bits = wave.wBitsPerSample == 16 || wave.wBitsPerSample == 24;
    return wave.wFormatTag == kPcm && wave.nSamplesPerSec == kSampleRate && bits &&
           wave.nChannels <= kMostChannels;
}

} // namespace

void CheckRecordingParameters(const RecordingParameters& parameters) {
    const RecordingFormat* const format = FindRecordingFormat(parameters.codeType);
    if (format == nullptr) {
        throw copy::Failure("Code type " + std::to_string(parameters.codeType) +
                            " cannot be recorded.");
    }
    if (parameters.wave.nChannels != 0 && !IsSound(parameters.wave)) {
        throw copy::Failure(
            "Sound is recorded as PCM of 16 or 24 bits at 48 kHz, up to 16 channels.");
    }
    if (parameters.dropFrame && !CanDropFrames(*format)) {
        throw copy::Failure("Timecodes of this rate drop no frames.");
    }
    static_cast<void>(OpenCard(parameters.cardRoot));
    if (!parameters.clipName.IsEmpty()) {
        CheckRecordingName(parameters.clipName);
    }
    CheckMetadataTexts(parameters);
}

Recording::Recording(const RecordingParameters& parameters, std::uint32_t expectedFrames,
                     eP2_VIDEO_STANDARD standard)
    : m_parameters(parameters), m_format(FindRecordingFormat(parameters.codeType)) {
    CheckRecordingParameters(parameters);
    m_card = OpenCard(parameters.cardRoot);
    static_cast<void>(m_card.root->RemoveAbandoned()); // claims of killed workers
    CheckSpace(expectedFrames, standard);
    BeginNext();
}

Recording::~Recording() {
    platform::Guarded([this] { Finish(); });
}

void Recording::CheckSpace(std::uint32_t frames, eP2_VIDEO_STANDARD standard) const {
    const bool wideAudio = m_parameters.wave.wBitsPerSample == 24;
    const std::int64_t space =
        capacity::CostOf(m_format->type, wideAudio, standard).Space(std::int64_t{frames});
    const std::string& path = m_card.contents->Path();
    std::uint64_t free = 0;
    copy::Require(m_card.contents->UsableSpace(free), "ask for the free space of", path);
    if (frames != 0 && static_cast<std::uint64_t>(std::max<std::int64_t>(space, 0)) > free) {
        throw copy::Failure("There is too little space in " + path + " for " +
                            std::to_string(frames) + " frames.");
    }
}

void Recording::BeginNext() {
    const bool isFirst = m_clips.empty() && !m_previous;
    const bool isChosen = isFirst && !m_parameters.clipName.IsEmpty();
    const CString last = m_clips.empty() ? CString() : m_clips.back()->Name();
    const std::int64_t before = m_clips.empty() ? 0 : m_clips.back()->FramesUntilFull();
    ClaimedName name =
        isChosen ? ClaimName(m_card, m_parameters.clipName) : ClaimFreeName(m_card, last);
    m_clips.push_back(std::make_unique<ClipMaker>(m_card, m_parameters, std::move(name), before));
}

void Recording::CheckUnit(std::string_view unit) const {
    const bool isFirst = m_lastUnitSize == 0;
    CheckAccessUnit(*m_format, unit, isFirst);
    if (!isFirst && unit.size() != m_lastUnitSize) {
        throw copy::Failure("An access unit of " + std::to_string(unit.size()) +
                            " bytes follows one of " + std::to_string(m_lastUnitSize) +
                            "; all of a clip have one size.");
    }
}

void Recording::AddVideo(std::string_view unit) {
    CheckUnit(unit);
    if (m_clips.back()->IsFull()) {
        BeginNext();
    }
    const auto clip = std::find_if(m_clips.begin(), m_clips.end(),
                                   [](const auto& each) { return !each->IsFull(); });
    try {
        (*clip)->AddVideo(unit);
    } catch (const copy::Failure&) {
        if ((*clip)->Frames() == 0 && clip != m_clips.begin()) {
            m_clips.erase(clip, m_clips.end()); // the next frame may begin it anew
        }
        throw;
    }
    m_lastUnitSize = unit.size();
}

void Recording::AddSound(std::string_view samples) {
    const std::size_t block = BlockOf(m_parameters.wave);
    if (block == 0 || samples.size() % block != 0) {
        throw copy::Failure(std::to_string(samples.size()) +
                            " bytes of sound are not whole samples of " +
                            std::to_string(m_parameters.wave.nChannels) + " channels.");
    }
    while (!samples.empty()) {
        const auto clip = std::find_if(m_clips.begin(), m_clips.end(),
                                       [](const auto& each) { return each->SoundRoom() != 0; });
        if (clip != m_clips.end()) {
            const std::string_view part = samples.substr(0, (*clip)->SoundRoom());
            samples.remove_prefix(part.size());
            (*clip)->AddSound(part);
        } else if (m_clips.size() < kMostClipsAtOnce) {
            BeginNext();
        } else {
            throw copy::Failure("The sound is a whole clip ahead of the video.");
        }
    }
}

void Recording::Add(std::string_view video, std::string_view sound, std::size_t units) {
    if (units == 0 || video.size() % units != 0 || (units != 1 && video.empty())) {
        throw copy::Failure(std::to_string(video.size()) + " bytes of video are not " +
                            std::to_string(units) + " access units of one size.");
    }
    const std::size_t unit = video.size() / units;
    const std::size_t sample = std::max<std::size_t>(BlockOf(m_parameters.wave), 1);
    for (std::size_t i = 0; i < units; ++i) {
        const bool isLast = i + 1 == units;
        const std::size_t share = sound.size() / sample / (units - i) * sample;
        const std::string_view samples = sound.substr(0, isLast ? sound.size() : share);
        sound.remove_prefix(samples.size());
        AddFrame(video.substr(i * unit, unit), samples);
    }
}

void Recording::AddFrame(std::string_view unit, std::string_view samples) {
    const auto completeAfter = [this](const auto& add) {
        try {
            add();
        } catch (const copy::Failure&) {
            CompleteFull();
            throw;
        }
        CompleteFull();
    };
    completeAfter([&] {
        if (!unit.empty()) {
            AddVideo(unit);
        }
    });
    completeAfter([&] {
        if (!samples.empty()) {
            AddSound(samples);
        }
    });
}

std::vector<CString> Recording::ClipNames() const {
    std::vector<CString> names = m_completed;
    if (m_otherClip != nullptr) {
        names.push_back(m_otherClip->Name());
    }
    for (const auto& clip : m_clips) {
        names.push_back(clip->Name());
    }
    return names;
}

} // namespace nqp2::worker
