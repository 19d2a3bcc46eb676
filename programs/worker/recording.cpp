// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording.h"

#include "capacity/recording_cost.h"
#include "platform/guard.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

namespace nqp2::worker {
namespace {

constexpr std::uint16_t kPcm = 1;
constexpr std::uint16_t kMostChannels = 16;
/// Sound may be that many clips ahead of the video, or behind it.
constexpr std::size_t kMostClipsAtOnce = 2;

bool IsSound(const WAVEFORMATEX& wave) {
    const bool bits = wave.wBitsPerSample == 16 || wave.wBitsPerSample == 24;
    return wave.wFormatTag == kPcm && wave.nSamplesPerSec == kSampleRate && bits &&
           wave.nChannels <= kMostChannels;
}

} // namespace

Outcome CheckRecordingParameters(const RecordingParameters& parameters) {
    const RecordingFormat* const format = FindRecordingFormat(parameters.codeType);
    if (format == nullptr) {
        return Failure("Code type " + std::to_string(parameters.codeType) + " cannot be recorded.");
    }
    if (parameters.wave.nChannels != 0 && !IsSound(parameters.wave)) {
        return Failure("Sound is recorded as PCM of 16 or 24 bits at 48 kHz, up to 16 channels.");
    }
    if (parameters.dropFrame && !CanDropFrames(*format)) {
        return Failure("Timecodes of this rate drop no frames.");
    }
    CardFolders card;
    Outcome outcome = OpenCard(parameters.cardRoot, card);
    if (outcome && !parameters.clipName.IsEmpty()) {
        outcome = CheckRecordingName(parameters.clipName);
    }
    return outcome ? CheckMetadataTexts(parameters) : outcome;
}

Recording::Recording(RecordingParameters parameters, CardFolders card)
    : m_parameters(std::move(parameters)), m_format(FindRecordingFormat(m_parameters.codeType)),
      m_card(std::move(card)) {}

Outcome Recording::Start(const RecordingParameters& parameters, std::uint32_t expectedFrames,
                         eP2_VIDEO_STANDARD standard, std::unique_ptr<Recording>& recording) {
    CardFolders card;
    Outcome outcome = CheckRecordingParameters(parameters);
    if (outcome) {
        outcome = OpenCard(parameters.cardRoot, card);
    }
    if (!outcome) {
        return outcome;
    }
    static_cast<void>(card.root->RemoveAbandoned()); // claims of killed workers
    std::unique_ptr<Recording> started(new Recording(parameters, std::move(card)));
    outcome = started->CheckSpace(expectedFrames, standard);
    if (outcome) {
        outcome = started->BeginNext();
    }
    if (outcome) {
        recording = std::move(started);
    }
    return outcome;
}

Recording::~Recording() {
    platform::Guarded(false, [this] { return static_cast<bool>(Finish()); });
}

Outcome Recording::CheckSpace(std::uint32_t frames, eP2_VIDEO_STANDARD standard) const {
    const bool wideAudio = m_parameters.wave.wBitsPerSample == 24;
    const std::int64_t space =
        capacity::CostOf(m_format->type, wideAudio, standard).Space(std::int64_t{frames});
    std::uint64_t free = 0;
    if (const auto status = m_card.contents->UsableSpace(free); !status) {
        return Failure("ask for the free space of", m_card.contents->Path(), status);
    }
    return frames == 0 || static_cast<std::uint64_t>(std::max<std::int64_t>(space, 0)) <= free
               ? Outcome()
               : Failure("There is too little space in " + m_card.contents->Path() + " for " +
                         std::to_string(frames) + " frames.");
}

Outcome Recording::BeginNext() {
    const bool isFirst = m_clips.empty() && !m_previous;
    const bool isChosen = isFirst && !m_parameters.clipName.IsEmpty();
    const CString last = m_clips.empty() ? CString() : m_clips.back()->Name();
    ClaimedName name;
    Outcome outcome = isChosen ? ClaimName(m_card, m_parameters.clipName, name)
                               : ClaimFreeName(m_card, last, name);
    if (outcome) {
        const std::int64_t before = m_clips.empty() ? 0 : m_clips.back()->FramesUntilFull();
        std::unique_ptr<ClipMaker> clip;
        outcome = ClipMaker::Begin(m_card, m_parameters, std::move(name), before, clip);
        if (outcome) {
            m_clips.push_back(std::move(clip));
        }
    }
    return outcome;
}

Outcome Recording::CheckUnit(std::string_view unit) const {
    const bool isFirst = m_lastUnitSize == 0;
    if (Outcome outcome = CheckAccessUnit(*m_format, unit, isFirst); !outcome) {
        return outcome;
    }
    if (!isFirst && unit.size() != m_lastUnitSize) {
        return Failure("An access unit of " + std::to_string(unit.size()) +
                       " bytes follows one of " + std::to_string(m_lastUnitSize) +
                       "; all of a clip have one size.");
    }
    return {};
}

Outcome Recording::AddVideo(std::string_view unit) {
    Outcome outcome = CheckUnit(unit);
    if (outcome && m_clips.back()->IsFull()) {
        outcome = BeginNext();
    }
    if (!outcome) {
        return outcome;
    }
    const auto clip = std::find_if(m_clips.begin(), m_clips.end(),
                                   [](const auto& each) { return !each->IsFull(); });
    outcome = (*clip)->AddVideo(unit);
    if (outcome) {
        m_lastUnitSize = unit.size();
    } else if ((*clip)->Frames() == 0 && clip != m_clips.begin()) {
        m_clips.erase(clip, m_clips.end()); // the next frame may begin it anew
    }
    return outcome;
}

Outcome Recording::AddSound(std::string_view samples) {
    const std::size_t sample = m_parameters.wave.wBitsPerSample / 8U;
    const std::size_t channels = m_parameters.wave.nChannels;
    if (channels == 0 || samples.size() % (sample * channels) != 0) {
        return Failure(std::to_string(samples.size()) +
                       " bytes of sound are not whole samples of " + std::to_string(channels) +
                       " channels.");
    }
    Outcome outcome;
    while (outcome && !samples.empty()) {
        auto clip = std::find_if(m_clips.begin(), m_clips.end(),
                                 [](const auto& each) { return each->SoundRoom() != 0; });
        if (clip != m_clips.end()) {
            const std::string_view part = samples.substr(0, (*clip)->SoundRoom());
            samples.remove_prefix(part.size());
            outcome = (*clip)->AddSound(part);
        } else if (m_clips.size() < kMostClipsAtOnce) {
            outcome = BeginNext();
        } else {
            outcome = Failure("The sound is a whole clip ahead of the video.");
        }
    }
    return outcome;
}

Outcome Recording::Add(std::string_view video, std::string_view sound) {
    Outcome outcome = video.empty() ? Outcome() : AddVideo(video);
    CompleteFull();
    if (outcome && !sound.empty()) {
        outcome = AddSound(sound);
    }
    CompleteFull();
    return outcome;
}

void Recording::Note(const ClipMaker& clip, const Outcome& outcome) {
    if (outcome) {
        m_completed.push_back(clip.Name());
    } else if (m_trouble) {
        m_trouble = outcome;
    }
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

void Recording::WaitForOther() {
    if (m_other.valid()) {
        Note(*m_otherClip, m_other.get());
    }
    m_otherClip.reset();
}

std::unique_ptr<ClipMaker> Recording::TakeFirst(Relations& relations) {
    std::unique_ptr<ClipMaker> clip = std::move(m_clips.front());
    m_clips.pop_front();
    relations = m_parameters.relations;
    const bool isLast = m_clips.empty();
    if (m_previous) {
        relations.previous = m_previous;
        relations.top = relations.top ? relations.top : m_top;
    }
    if (!isLast) {
        relations.next = m_clips.front()->Self();
    }
    if (m_previous || !isLast) {
        relations.offsetInShot = clip->FramesBefore();
    }
    m_previous = clip->Self();
    m_top = m_top ? m_top : m_previous;
    return clip;
}

/// To flush and read back gigabytes takes longer than a stream can wait.
void Recording::CompleteFull() {
    while (m_clips.size() > 1 && m_clips[0]->IsFull() && m_clips[1]->Frames() != 0 &&
           (m_clips[0]->SoundRoom() == 0 || m_parameters.wave.nChannels == 0 ||
            m_clips.size() > kMostClipsAtOnce)) {
        WaitForOther();
        Relations relations;
        m_otherClip = TakeFirst(relations);
        const auto complete = [clip = m_otherClip.get(), relations] {
            return platform::Guarded(Failure("Out of memory."),
                                     [&] { return clip->Finish(relations); });
        };
        try {
            m_other = std::async(std::launch::async, complete);
        } catch (const std::system_error&) { // no thread for it
            Note(*m_otherClip, complete());
            m_otherClip.reset();
        }
    }
}

Outcome Recording::Finish() {
    if (m_isOver) {
        return {};
    }
    m_isOver = true;
    while (!m_clips.empty() && m_clips.back()->Frames() == 0) {
        m_clips.pop_back();
    }
    if (m_clips.empty()) {
        m_trouble = Failure("No frame was recorded.");
    }
    WaitForOther();
    while (!m_clips.empty()) {
        Relations relations;
        const std::unique_ptr<ClipMaker> clip = TakeFirst(relations);
        Note(*clip, clip->Finish(relations));
    }
    return m_trouble;
}

void Recording::Drop() {
    m_isOver = true;
    m_clips.clear();
    WaitForOther();
}

} // namespace nqp2::worker
