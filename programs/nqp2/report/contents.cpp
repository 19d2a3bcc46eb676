// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/contents.h"

#include "nqp2/clip_remarks.h"
#include "nqp2/scan_report_output.h"
#include "nqp2/shown_clip.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/ReadyParser.h"
#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
#include <filesystem>
#include <future>
#include <map>
#include <set>
#include <system_error>
#include <utility>

namespace nqp2::report {
namespace {

using Segments = std::vector<tag_P2SegInfo>;

/// Stretches of a clip as they follow each other, joined where they touch, and none beyond it.
Segments Joined(Segments segments, std::int32_t duration) {
    std::sort(segments.begin(), segments.end(),
              [](const tag_P2SegInfo& left, const tag_P2SegInfo& right) {
                  return left.InPoint < right.InPoint;
              });
    Segments joined;
    for (const tag_P2SegInfo& each : segments) {
        const tag_P2SegInfo segment = {std::max(each.InPoint, 0),
                                       std::min(each.OutPoint, duration - 1)};
        if (segment.InPoint > segment.OutPoint) {
            continue;
        }
        if (!joined.empty() && segment.InPoint - 1 <= joined.back().OutPoint) {
            joined.back().OutPoint = std::max(joined.back().OutPoint, segment.OutPoint);
        } else {
            joined.push_back(segment);
        }
    }
    return joined;
}

/// What was taken in of each clip, by its name in capitals.
std::map<CString, Segments> ReadIngestList(const tool::CardScan& scan, CardContents& contents) {
    std::map<CString, Segments> byName;
    IngestList list;
    IngestResult result;
    if (!LoadIngestList(scan.card.Root(), list, result)) {
        contents.remarks.push_back(
            "The list of what was taken in cannot be read: " + tool::RealPath(result.path) +
            (result.reason.IsEmpty() ? "" : ": ") + BytesFromText(result.reason));
    }
    for (auto& [name, segments] : list) {
        Segments& known = byName[CString(name).MakeUpper()];
        known.insert(known.end(), segments.begin(), segments.end());
    }
    return byName;
}

void ReadEdits(const tool::CardScan& scan, CardContents& contents) {
    const bool isP2 = scan.kind == CardKind::P2;
    ReadyParser parser;
    CArray<tag_P2EDL> edits;
    ScanReport report;
    // What fails has no such lists; what cannot be read is in the report.
    static_cast<void>(isP2 ? parser->LoadCardEdls(scan.card.Root(), edits, report)
                           : parser->LoadCardPlaylists(scan.card.Root(), edits, report));
    for (tag_P2EDL& edit : edits) {
        contents.edits.push_back({std::move(edit), !isP2});
    }
    std::stable_sort(contents.edits.begin(), contents.edits.end(),
                     [](const EditContents& left, const EditContents& right) {
                         return left.edit.Name.CompareNoCase(right.edit.Name) < 0;
                     });
    contents.skipped.Append(report.skipped);
}

void ReadSpace(CardContents& contents) {
    std::error_code error;
    const auto space = std::filesystem::space(contents.scan->card.Folder(), error);
    if (!error) {
        contents.freeBytes = space.available;
        contents.volumeBytes = space.capacity;
    }
}

/// Reads one clip after the other, all but its files.
class ClipReader {
public:
    ClipReader(const tool::CardScan& scan, CardContents& contents, tool::MediaDescriber& describer)
        : m_scan(scan), m_taken(ReadIngestList(scan, contents)), m_describer(describer) {}

    void Read(ClipContents& contents) {
        const _tag_P2Clip& clip = *contents.clip;
        ReadMetadata(clip, contents);
        tool::ShownClip shown = {clip, {}, {}};
        shown.told = m_scan.ToldOf(clip);
        shown.metadata = &contents.metadata;
        contents.start = BytesFromText(StartOf(shown));
        contents.told = shown.told;
        const auto taken = m_taken.find(CString(clip.ClipName).MakeUpper());
        contents.isListed = taken != m_taken.end();
        if (contents.isListed) {
            contents.taken = Joined(taken->second, clip.Duration);
        }
    }

private:
    void ReadMetadata(const _tag_P2Clip& clip, ClipContents& contents) {
        CString problem;
        const MetadataStatus status = m_metadata.Read(clip, contents.metadata, problem);
        if (status == MetadataStatus::Unreadable) {
            contents.unread = BytesFromText(problem);
        } else if (status == MetadataStatus::NoFile && !clip.VideoPath.IsEmpty()) {
            m_describer.Describe(clip.VideoPath, contents.metadata, contents.unread);
        }
        contents.remarks = tool::RemarksOn(clip, &contents.metadata);
        contents.metadata.others.RemoveAll(); // many, and not shown
    }

    const tool::CardScan& m_scan;
    std::map<CString, Segments> m_taken;
    ClipMetadataReader m_metadata;
    tool::MediaDescriber& m_describer;
};

void ReadFiles(CardContents& card) {
    CArray<ClipFile> files;
    for (ClipContents& clip : card.clips) {
        card.scan->files->Read(*clip.clip, files);
        for (const ClipFile& file : files) {
            card.bytes += file.size;
            if (file.state != ClipFileState::Present) {
                clip.lacking.Add(file);
            }
        }
    }
}

/// All but files and pictures.
void ReadCard(CardContents& card, tool::MediaDescriber& describer) {
    ClipReader reader(*card.scan, card, describer);
    for (ClipContents& clip : card.clips) {
        reader.Read(clip);
        for (const std::string& remark : clip.remarks) {
            card.remarks.push_back(BytesFromText(clip.clip->ClipName) + ": " + remark);
        }
    }
    ReadEdits(*card.scan, card);
    ReadSpace(card);
}

} // namespace

std::vector<CardContents> ReadContents(const tool::CardScans& scans, const tool::ClipOrder& clips,
                                       tool::MediaDescriber& describer) {
    std::vector<CardContents> all(scans.cards.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i].scan = &scans.cards[i];
        all[i].skipped = scans.cards[i].report.skipped;
    }
    for (const _tag_P2Clip* clip : clips) {
        const auto card = static_cast<std::size_t>(&scans.CardOf(*clip) - scans.cards.data());
        all[card].clips.emplace_back().clip = clip;
    }
    // Neither needs the other, and a clip's files are not among what the rest of it is. Without a
    // thread they come last.
    auto files = std::async(std::launch::async | std::launch::deferred,
                            [&] { std::for_each(all.begin(), all.end(), ReadFiles); });
    for (CardContents& card : all) {
        ReadCard(card, describer);
    }
    files.get();
    return all;
}

void MarkTakes(const CArray<JoinedTake>& takes, std::vector<CardContents>& cards) {
    std::set<const _tag_P2Clip*> incomplete;
    for (const JoinedTake& take : takes) {
        for (const TakeSegment& segment : take.segments) {
            const auto card = static_cast<std::size_t>(segment.card);
            if (!take.complete && segment.clip >= 0 && card < cards.size()) {
                incomplete.insert(&cards[card].scan->clips[segment.clip]);
            }
        }
    }
    for (CardContents& card : cards) {
        for (ClipContents& clip : card.clips) {
            clip.isTakeWhole = incomplete.count(clip.clip) == 0;
        }
    }
}

bool IsWhole(const ClipContents& clip) {
    return nqp2::IsWhole(clip.lacking) && clip.unread.empty();
}

std::int64_t FramesTaken(const ClipContents& clip) {
    std::int64_t frames = 0;
    for (const tag_P2SegInfo& segment : clip.taken) {
        frames += std::int64_t{segment.OutPoint} - segment.InPoint + 1;
    }
    return frames;
}

} // namespace nqp2::report
