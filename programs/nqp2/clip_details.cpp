// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_details.h"

#include "console/console.h"
#include "nqp2/card.h"
#include "nqp2/clip_file_fields.h"
#include "nqp2/clip_remarks.h"
#include "nqp2/media_describer.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <iterator>
#include <utility>

namespace nqp2::tool {

/// A card with its readers.
struct ClipDetails::Reader {
    explicit Reader(const CardScan& scanned)
        : card(scanned), folder(OutputPath(scanned.card.Folder())),
          metadataReader(scanned.card.Root()) {}

    const CardScan& card;
    std::string folder;
    ClipMetadataReader metadataReader;
    CArray<ClipFile> files; ///< of the clip that was asked for last
};

ClipDetails::ClipDetails(Console& console, const CardScans& cards, ClipReading wanted,
                         MediaDescriber& describer)
    : m_console(console), m_wanted(wanted), m_describer(describer), m_takes(cards.Takes()),
      m_ahead([this](const _tag_P2Clip& clip, ReadMetadata& read) {
          return ReadMetadataOf(clip, read);
      }) {
    for (const CardScan& card : cards.cards) {
        m_readers.push_back(std::make_unique<Reader>(card));
        if (!card.clips.IsEmpty()) {
            m_byFirstClip.emplace(&card.clips[0], m_readers.back().get());
        }
    }
    IndexTakes();
}

ClipDetails::~ClipDetails() = default;

void ClipDetails::IndexTakes() {
    for (const JoinedTake& take : m_takes) {
        for (const TakeSegment& segment : take.segments) {
            if (segment.clip >= 0) {
                const CardScan& card = m_readers[static_cast<std::size_t>(segment.card)]->card;
                m_places.emplace(&card.clips[segment.clip], ShownTake{&take, &segment});
            }
        }
    }
}

ClipDetails::Reader& ClipDetails::ReaderOf(const _tag_P2Clip& clip) {
    return *std::prev(m_byFirstClip.upper_bound(&clip))->second;
}

void ClipDetails::Expect(const ClipOrder& clips) {
    if (m_wanted.metadata) {
        m_ahead.Begin(clips);
    }
}

ShownClip ClipDetails::Of(const _tag_P2Clip& clip) {
    Reader& reader = ReaderOf(clip);
    ShownClip shown = {clip, reader.folder, reader.card.label};
    shown.zones = reader.card.ZonesOf(clip);
    if (!m_places.empty()) {
        const auto place = m_places.find(&clip);
        shown.take = place == m_places.end() ? nullptr : &place->second;
    }
    shown.metadata = m_wanted.metadata ? Metadata(clip) : nullptr;
    shown.files = m_wanted.files ? &Files(reader, clip) : nullptr;
    m_remarks = RemarksOn(clip, shown.metadata);
    shown.remarks = &m_remarks;
    m_isRemarked = true; // a list shows each of its clips
    if (!m_remarks.empty()) {
        m_remarked.push_back({reader.folder, clip.ClipName, m_remarks});
    }
    return shown;
}

std::size_t ClipDetails::ReadMetadataOf(const _tag_P2Clip& clip, ReadMetadata& read) noexcept {
    ClipMetadataReader& reader = ReaderOf(clip).metadataReader;
    read.status = reader.Read(clip, read.metadata, read.problem);
    return reader.SizeOfLast();
}

const std::vector<RemarkedClip>& ClipDetails::Remarked(const ClipOrder& clips) {
    if (!m_isRemarked) {
        for (const _tag_P2Clip* const clip : clips) {
            if (std::vector<std::string> remarks = RemarksOn(*clip, nullptr); !remarks.empty()) {
                m_remarked.push_back({ReaderOf(*clip).folder, clip->ClipName, std::move(remarks)});
            }
        }
        m_isRemarked = true;
    }
    return m_remarked;
}

/// Of a camera file, which alone could tell.
MetadataStatus ClipDetails::Describe(const _tag_P2Clip& clip, ClipMetadata& metadata,
                                     std::string& problem) {
    if (m_describer.Describe(clip.VideoPath, metadata, problem)) {
        return MetadataStatus::Read;
    }
    return problem.empty() ? MetadataStatus::NoFile : MetadataStatus::Unreadable;
}

const ClipMetadata* ClipDetails::Metadata(const _tag_P2Clip& clip) {
    ReadMetadata& read = m_ahead.Of(clip);
    MetadataStatus status = read.status;
    std::string problem = BytesFromText(read.problem);
    if (status == MetadataStatus::NoFile && !clip.VideoPath.IsEmpty()) {
        status = Describe(clip, read.metadata, problem);
    }
    if (status == MetadataStatus::Unreadable) {
        ++m_unread;
        m_console.Message(
            fmt::format("nqp2: {}: metadata not read ({})",
                        RealPath(clip.XmlPath.IsEmpty() ? clip.VideoPath : clip.XmlPath), problem));
    }
    return status == MetadataStatus::Read ? &read.metadata : nullptr;
}

const CArray<ClipFile>& ClipDetails::Files(Reader& reader, const _tag_P2Clip& clip) {
    if (!reader.card.files->Read(clip, reader.files)) {
        throw std::bad_alloc();
    }
    m_isAsked = true; // a list shows each of its clips
    BrokenClip broken = {reader.folder, clip.ClipName, {}};
    for (const ClipFile& file : reader.files) {
        if (!IsSound(file)) {
            broken.files.Add(file);
        }
    }
    if (!IsWhole(broken.files)) {
        m_broken.push_back(std::move(broken));
    }
    return reader.files;
}

void ClipDetails::AskAll(const ClipOrder& clips) {
    if (!m_isAsked) {
        for (const _tag_P2Clip* const clip : clips) {
            Files(ReaderOf(*clip), *clip);
        }
    }
}

const std::vector<BrokenClip>& ClipDetails::Broken(const ClipOrder& clips) {
    AskAll(clips);
    return m_broken;
}

CArray<LooseFile> ClipDetails::OtherFiles(const ClipOrder& clips) {
    AskAll(clips);
    CArray<LooseFile> all;
    for (const std::unique_ptr<Reader>& reader : m_readers) {
        CArray<LooseFile> files;
        if (!reader->card.files->LooseFiles(files, reader->card.card.Top())) {
            ++m_unread;
            m_console.Message(
                fmt::format("nqp2: {}: not all folders were looked into for other files",
                            reader->card.card.Folder()));
        }
        all.Append(files);
    }
    return all;
}

} // namespace nqp2::tool
