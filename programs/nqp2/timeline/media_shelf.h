// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/timeline/builders.h"
#include "nqp2/timeline/model.h"
#include "nqp2/timeline/reel_names.h"
#include "NQP2ParserU/ClipMetadata.h"

#include <map>
#include <memory>
#include <string>

namespace nqp2::timeline {

/// Makes the media of a timeline from the clips of its card, each once.
class MediaShelf {
public:
    /// All must outlive it.
    MediaShelf(const CardView& card, const BuildOptions& options, Remarks& remarks);

    /// The media of a clip.
    std::size_t Of(const _tag_P2Clip& clip);
    /// That of a clip that is not on the card, as the list names it; it becomes at least as long.
    std::size_t Missing(const tag_P2EDLClipTrackEvent& event, const FrameRate& rate,
                        std::int64_t length);
    [[nodiscard]] const Media& At(std::size_t index) const { return m_sources->media[index]; }
    /// Gives the media to the timeline of these events. No more are asked for.
    void Finish(Timeline& timeline);

private:
    std::size_t AddFile(const std::string& path, bool isThere, bool hasPicture, int channels);
    void AddFiles(const _tag_P2Clip& clip, Media& media);
    void AddSound(const _tag_P2Clip& clip, const CArray<ClipFile>& files, Media& media);
    void UseProxySound(const _tag_P2Clip& clip, Media& media);
    void AddMetadata(const _tag_P2Clip& clip, Media& media);
    void TellLacking(const Media& media);
    std::size_t Keep(Media media);

    const CardView& m_card;
    const BuildOptions& m_options;
    Remarks& m_remarks;
    std::shared_ptr<Sources> m_sources = std::make_shared<Sources>();
    ClipMetadataReader m_metadata;
    std::map<CString, std::size_t> m_clips; ///< media by the names of clips in capitals
    std::map<CString, std::size_t> m_missing;
    std::map<CString, TakePlace> m_takes;
    ReelNames m_reels;
};

} // namespace nqp2::timeline
