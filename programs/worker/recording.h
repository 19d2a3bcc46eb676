// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/recorded_clip.h"

#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace nqp2::worker {

/// Fails for what Recording could not write.
void CheckRecordingParameters(const RecordingParameters& parameters);

/// Clips that are being written onto a card from one stream: mostly one, and another one that is
/// linked to it whenever a file has reached the size that cards can hold. What was recorded is kept
/// when the object goes, up to the last whole frame, unless Drop is called. Everything throws a
/// Failure. One thread at a time.
class Recording {
public:
    /// `expectedFrames`: 0 when it is not known. Fails when they do not fit.
    Recording(const RecordingParameters& parameters, std::uint32_t expectedFrames,
              eP2_VIDEO_STANDARD standard);
    ~Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    /// Access units of video, of one size and one behind the other, and the interleaved PCM that
    /// belongs to them; each may be empty. A failure leaves what came before, frame by frame.
    void Add(std::string_view video, std::string_view sound, std::size_t units = 1);
    /// Completes what is under way. A failure tells of the first clip that could not be completed.
    void Finish();
    /// Removes what is under way; clips that were completed before stay.
    void Drop();

    /// The clips that were completed, and those under way.
    [[nodiscard]] std::vector<CString> ClipNames() const;
    /// Bytes of the access unit that came last; 0 before the first.
    [[nodiscard]] std::size_t LastUnitSize() const { return m_lastUnitSize; }

private:
    void CheckSpace(std::uint32_t frames, eP2_VIDEO_STANDARD standard) const;
    void CheckUnit(std::string_view unit) const;
    /// Begins the clip behind the last one.
    void BeginNext();
    void AddFrame(std::string_view unit, std::string_view samples);
    void AddVideo(std::string_view unit);
    void AddSound(std::string_view samples);
    /// Completes clips, all but the last, to which nothing more will come, beside the recording.
    void CompleteFull();
    /// Takes the first clip out of the row, with what it has to say of the others.
    std::unique_ptr<ClipMaker> TakeFirst(Relations& relations);
    void WaitForOther();
    /// Runs the completion of a clip and remembers how it ended.
    void Complete(const ClipMaker& clip, const std::function<void()>& completion);

    /// Sound may be that many clips ahead of the video, or behind it.
    static constexpr std::size_t kMostClipsAtOnce = 2;

    RecordingParameters m_parameters;
    const RecordingFormat* m_format;
    CardFolders m_card;
    std::deque<std::unique_ptr<ClipMaker>> m_clips; ///< not completed yet
    std::unique_ptr<ClipMaker> m_otherClip;         ///< is being completed
    std::future<void> m_other;
    std::vector<CString> m_completed;
    std::optional<RelatedClip> m_top;      ///< the recording's first clip
    std::optional<RelatedClip> m_previous; ///< the one before those
    std::exception_ptr m_trouble;          ///< the first
    std::size_t m_lastUnitSize = 0;
    bool m_isOver = false;
};

} // namespace nqp2::worker
