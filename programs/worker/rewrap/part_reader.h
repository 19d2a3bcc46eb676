// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/rewrap/picture_check.h"
#include "worker/rewrap/recording_input.h"
#include "worker/rewrap/sound_feed.h"
#include "worker/rewrap/stream_file.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace nqp2::worker::rewrap {

/// How the units of a file's picture are had.
struct PictureUnits {
    MediaLook look = MediaLook::Again;
    /// Those of the container could be several pictures, of which the first one is only one.
    bool areSingle = false;
};
/// AVC-Intra is read as its container has it where the first unit of that is a whole picture: to
/// look for the end of each takes as long as all else.
PictureUnits UnitsOf(const std::string& video, const std::function<bool()>& goesOn);

/// The pictures and the sound of one part whose pictures are intra: of all of it or of a stretch.
class PartReader {
public:
    /// The stretch's sound begins at the sample of its first picture; a stretch has
    /// `stretchSamples`. `part` and `goesOn` outlive it.
    PartReader(const Part& part, Essence essence, const PictureUnits& units, const FrameRate& rate,
               std::int64_t stretchSamples, const std::function<bool()>& goesOn);

    /// The next picture; false at the end of the stretch, or of a file that holds what it promises.
    bool NextPicture(MediaUnit& unit);
    /// One for each file of sound, else one for each stream of sound beside the picture.
    [[nodiscard]] std::vector<SoundFeed>& Feeds() { return m_feeds; }
    /// Reads until a feed has that many samples or ends; of sound beside the picture only what has
    /// been met, as long as pictures are left.
    void Fill(SoundFeed& feed, std::int64_t samples);
    [[nodiscard]] std::uint32_t Frames() const { return m_frames; } ///< so far
    /// Which picture is shown at that tick of the file; -1 for no time.
    [[nodiscard]] std::int64_t FrameOf(std::int64_t tick) const;

private:
    [[nodiscard]] bool IsWhole() const { return m_part.first == 0 && m_part.frames == 0; }
    /// Whether a unit of the picture belongs to the stretch.
    bool IsReached(const MediaUnit& unit);
    void RequireGood(const MediaUnit& unit);
    void RequireAll() const;
    /// Reads a unit beside the picture; false at the file's end.
    bool ReadOn(MediaUnit& unit);

    const Part& m_part;
    FrameRate m_rate;
    StreamFile m_video;
    std::size_t m_picture;
    PictureCheck m_check;
    std::vector<std::unique_ptr<StreamFile>> m_sounds;
    std::vector<SoundFeed> m_feeds;
    std::uint32_t m_frames = 0;
    bool m_isReached = false;
    bool m_isOver = false; ///< no more pictures
};

/// Pictures in a file by its head; 0: it does not tell.
std::int64_t FramesOf(const MediaStream& picture, const FrameRate& rate);

} // namespace nqp2::worker::rewrap
