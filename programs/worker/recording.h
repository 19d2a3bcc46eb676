// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/recorded_clip.h"

#include <cstdint>
#include <deque>
#include <future>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace nqp2::worker {

/// Fails for what Recording could not write.
Outcome CheckRecordingParameters(const RecordingParameters& parameters);

/// Clips that are being written onto a card from one stream: mostly one, and another one that is
/// linked to it whenever a file has reached the size that cards can hold. What was recorded is kept
/// when the object goes, up to the last whole frame, unless Drop is called. One thread at a time.
class Recording {
public:
    /// `expectedFrames`: 0 when nobody knows. Fails when they do not fit.
    static Outcome Start(const RecordingParameters& parameters, std::uint32_t expectedFrames,
                         eP2_VIDEO_STANDARD standard, std::unique_ptr<Recording>& recording);
    ~Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    /// One access unit of video and interleaved PCM, each of which may be empty. A failure leaves
    /// what came before.
    Outcome Add(std::string_view video, std::string_view sound);
    /// Completes what is under way. A failure tells of the first clip that could not be completed.
    Outcome Finish();
    /// Removes what is under way; clips that were completed before stay.
    void Drop();

    /// The clips that were completed, and those under way.
    [[nodiscard]] std::vector<CString> ClipNames() const;
    /// Bytes of the access unit that came last; 0 before the first.
    [[nodiscard]] std::size_t LastUnitSize() const { return m_lastUnitSize; }

private:
    Recording(RecordingParameters parameters, CardFolders card);
    Outcome CheckSpace(std::uint32_t frames, eP2_VIDEO_STANDARD standard) const;
    Outcome CheckUnit(std::string_view unit) const;
    /// Begins the clip behind the last one.
    Outcome BeginNext();
    Outcome AddVideo(std::string_view unit);
    Outcome AddSound(std::string_view samples);
    /// Completes clips, all but the last, to which nothing more will come, beside the recording.
    void CompleteFull();
    /// Takes the first clip out of the row, with what it has to say of the others.
    std::unique_ptr<ClipMaker> TakeFirst(Relations& relations);
    void WaitForOther();
    /// Remembers how the completion of a clip ended.
    void Note(const ClipMaker& clip, const Outcome& outcome);

    RecordingParameters m_parameters;
    const RecordingFormat* m_format;
    CardFolders m_card;
    std::deque<std::unique_ptr<ClipMaker>> m_clips; ///< not completed yet
    std::unique_ptr<ClipMaker> m_otherClip;         ///< is being completed
    std::future<Outcome> m_other;
    std::vector<CString> m_completed;
    std::optional<RelatedClip> m_top;      ///< the recording's first clip
    std::optional<RelatedClip> m_previous; ///< the one before those
    Outcome m_trouble;                     ///< the first
    std::size_t m_lastUnitSize = 0;
    bool m_isOver = false;
};

} // namespace nqp2::worker
