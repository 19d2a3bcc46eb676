// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/timeline/builders.h"
#include "nqp2/timeline/model.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/ClipMetadata.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

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
    /// All that were made. No more are asked for.
    std::shared_ptr<const Sources> Finish() { return std::move(m_sources); }

private:
    std::size_t AddFile(const std::string& path, bool isThere, bool hasPicture, int channels);
    void AddFiles(const _tag_P2Clip& clip, Media& media);
    void AddSound(const _tag_P2Clip& clip, const CArray<ClipFile>& files, Media& media);
    void UseProxySound(const _tag_P2Clip& clip, Media& media);
    void AddMetadata(const _tag_P2Clip& clip, Media& media);
    void TellLacking(const Media& media);
    std::size_t Keep(Media media);
    std::string FreeReel(const std::string& name);

    const CardView& m_card;
    const BuildOptions& m_options;
    Remarks& m_remarks;
    std::shared_ptr<Sources> m_sources = std::make_shared<Sources>();
    ClipFileReader m_files;
    ClipMetadataReader m_metadata;
    std::map<CString, std::size_t> m_clips; ///< media by the names of clips in capitals
    std::map<CString, std::size_t> m_missing;
    std::map<CString, TakePlace> m_takes;
    std::set<std::string> m_taken = {"AX", "BARS", "BL", "BLACK"}; ///< reels; these mean no tape
    std::map<std::string, int> m_reels; ///< how often the beginning of each was tried
};

/// The timecode of a clip's first frame as a frame count.
std::int64_t StartOfClip(const _tag_P2Clip& clip, const FrameRate& rate, CardKind kind);

} // namespace nqp2::timeline
