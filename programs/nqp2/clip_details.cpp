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
#include <new>
#include <utility>

namespace nqp2::tool {

ClipDetails::ClipDetails(Console& console, const CardScans& cards, ClipReading wanted,
                         MediaDescriber& describer)
    : m_console(console), m_wanted(wanted), m_describer(describer), m_takes(cards.Takes()) {
    m_cards.reserve(cards.cards.size());
    for (const CardScan& card : cards.cards) {
        m_cards.push_back({&card, OutputPath(card.card.Folder())});
        if (!card.clips.IsEmpty()) {
            m_byFirstClip.emplace(&card.clips[0], &m_cards.back());
        }
    }
    IndexTakes();
}

void ClipDetails::IndexTakes() {
    for (const JoinedTake& take : m_takes) {
        for (const TakeSegment& segment : take.segments) {
            if (segment.clip >= 0) {
                const CardScan& card = *m_cards[static_cast<std::size_t>(segment.card)].card;
                m_places.emplace(&card.clips[segment.clip], ShownTake{&take, &segment});
            }
        }
    }
}

const ClipDetails::KnownCard& ClipDetails::KnownCardOf(const _tag_P2Clip& clip) const {
    return *std::prev(m_byFirstClip.upper_bound(&clip))->second;
}

const CardScan& ClipDetails::CardOf(const _tag_P2Clip& clip) const {
    return *KnownCardOf(clip).card;
}

ShownClip ClipDetails::Of(const _tag_P2Clip& clip) const {
    const KnownCard& known = KnownCardOf(clip);
    ShownClip shown = {clip, known.folder, known.card->label};
    shown.zones = known.card->ZonesOf(clip);
    shown.hasTimecode = known.card->HasTimecode(clip);
    if (!m_places.empty()) {
        const auto place = m_places.find(&clip);
        shown.take = place == m_places.end() ? nullptr : &place->second;
    }
    return shown;
}

void ClipDetails::Remark(const _tag_P2Clip& clip, std::vector<std::string>&& remarks) {
    m_isRemarked = true; // a list shows each of its clips
    if (!remarks.empty()) {
        m_remarked.push_back({KnownCardOf(clip).folder, clip.ClipName, std::move(remarks)});
    }
}

const std::vector<RemarkedClip>& ClipDetails::Remarked(const ClipOrder& clips) {
    if (!m_isRemarked) {
        for (const _tag_P2Clip* const clip : clips) {
            Remark(*clip, RemarksOn(*clip, nullptr));
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

const ClipMetadata* ClipDetails::ToShow(const _tag_P2Clip& clip, ReadMetadata& read) {
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

bool ClipDetails::ReadFiles(const _tag_P2Clip& clip, CArray<ClipFile>& files) noexcept {
    const KnownCard& known = KnownCardOf(clip);
    if (!known.card->files->Read(clip, files)) {
        return false;
    }
    m_isAsked = true; // a list shows each of its clips
    try {
        BrokenClip broken = {known.folder, clip.ClipName, {}};
        for (const ClipFile& file : files) {
            if (!IsSound(file)) {
                broken.files.Add(file);
            }
        }
        if (!IsWhole(broken.files)) {
            m_broken.push_back(std::move(broken));
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

void ClipDetails::AskAll(const ClipOrder& clips) {
    if (m_isAsked) {
        return;
    }
    CArray<ClipFile> files;
    for (const _tag_P2Clip* const clip : clips) {
        if (!ReadFiles(*clip, files)) {
            throw std::bad_alloc();
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
    for (const KnownCard& known : m_cards) {
        CArray<LooseFile> files;
        if (!known.card->files->LooseFiles(files, known.card->card.Top())) {
            ++m_unread;
            m_console.Message(
                fmt::format("nqp2: {}: not all folders were looked into for other files",
                            known.card->card.Folder()));
        }
        all.Append(files);
    }
    return all;
}

} // namespace nqp2::tool
