// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_files.h"
#include "avchd/clip_metadata.h"
#include "clips/clip_metadata.h"
#include "media/card_layout.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "platform/guard.h"
#include "platform/place.h"
#include "platform/unicode.h"

namespace nqp2 {

namespace {

/// Clip information tells one of two rasters by the same code; the record has that of the stream.
void TellRaster(const _tag_P2Clip& clip, ClipMetadata& metadata) {
    for (TrackMetadata& track : metadata.tracks) {
        const int end = track.format.Find(L' ');
        if (track.kind == L"video" && end > 0 && clip.ActivePixel > 0 && clip.ActiveLine > 0) {
            CString raster;
            raster.Format(L"%dx%d", clip.ActivePixel, clip.ActiveLine);
            track.format = raster + track.format.Mid(end);
        }
    }
}

MetadataStatus NoFile(CString& problem) {
    problem = L"the clip has no file that could tell";
    return MetadataStatus::NoFile;
}

/// Of what AVCHD files tell, whose texts are short.
std::size_t SizeOf(const ClipMetadata& metadata) {
    constexpr std::size_t kTextsOfEntry = 256;
    const std::int64_t entries =
        metadata.memos.GetSize() + metadata.tracks.GetSize() + metadata.others.GetSize();
    return sizeof(ClipMetadata) +
           static_cast<std::size_t>(entries) * (sizeof(MemoMetadata) + kTextsOfEntry);
}

} // namespace

struct ClipMetadataReader::State {
    explicit State(const CString& cardRoot) : root(cardRoot) {}

    MetadataStatus ReadP2(const _tag_P2Clip& clip, ClipMetadata& metadata, CString& problem) {
        if (clip.XmlPath.IsEmpty()) {
            return NoFile(problem);
        }
        const dom::ParseError error = files.Read(clip.XmlPath, metadata);
        problem = platform::TextFromUtf8(error.reason);
        size = files.SizeOfLast();
        return error.fault == dom::Fault::None ? MetadataStatus::Read : MetadataStatus::Unreadable;
    }

    MetadataStatus ReadAvchd(const _tag_P2Clip& clip, ClipMetadata& metadata, CString& problem) {
        const platform::Place card = CardOf(clip);
        const avchd::CardKind* const kind = avchd::KindOf(clip, card);
        if (kind == nullptr) {
            return NoFile(problem);
        }
        if (source == nullptr || card.Written() != folder) {
            source = std::make_unique<avchd::MetadataSource>(card);
            folder = card.Written();
        }
        metadata = {};
        const platform::IoStatus status = source->Read(*kind, clip.ClipName, metadata);
        problem = platform::TextFromUtf8(status.reason);
        if (status) {
            TellRaster(clip, metadata);
            size = SizeOf(metadata);
            return MetadataStatus::Read;
        }
        return status.error == platform::IoError::NotFound ? MetadataStatus::NoFile
                                                           : MetadataStatus::Unreadable;
    }

    /// The folder with the clip's streams and all that belongs to them.
    [[nodiscard]] platform::Place CardOf(const _tag_P2Clip& clip) const {
        return root.IsEmpty() || !clip.VideoPath.IsEmpty()
                   ? platform::Place(media::ContentsAbove(clip.VideoPath))
                   : avchd::ClipsFolder(platform::Place(media::WithDrive(root)));
    }

    CString root;
    std::size_t size = 0; ///< of what was read last
    clips::MetadataFileReader files;
    CString folder; ///< that `source` is for
    std::unique_ptr<avchd::MetadataSource> source;
};

ClipMetadataReader::ClipMetadataReader(const CString& root) noexcept
    : m_state(platform::Guarded(std::unique_ptr<State>(),
                                [&] { return std::make_unique<State>(root); })) {}

ClipMetadataReader::~ClipMetadataReader() = default;

MetadataStatus ClipMetadataReader::Read(const _tag_P2Clip& clip, ClipMetadata& metadata,
                                        CString& problem) noexcept {
    const MetadataStatus status = platform::Guarded(MetadataStatus::Unreadable, [&] {
        problem.Empty();
        if (m_state == nullptr) {
            return MetadataStatus::Unreadable;
        }
        m_state->size = 0;
        return clip.SourceKind == 0 ? m_state->ReadP2(clip, metadata, problem)
                                    : m_state->ReadAvchd(clip, metadata, problem);
    });
    if (status != MetadataStatus::Read) {
        metadata = {};
        platform::Guarded([&] {
            problem = problem.IsEmpty() ? CString(L"there is not enough memory") : problem;
        });
    }
    return status;
}

std::size_t ClipMetadataReader::SizeOfLast() const noexcept {
    return m_state != nullptr ? m_state->size : 0;
}

} // namespace nqp2
