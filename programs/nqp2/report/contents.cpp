// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/contents.h"

#include "nqp2/clip_order.h"
#include "nqp2/scan_report_output.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/ReadyParser.h"
#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
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

/// Reads one clip after the other.
class ClipReader {
public:
    explicit ClipReader(const tool::CardScan& scan, CardContents& contents)
        : m_scan(scan), m_contents(contents), m_taken(ReadIngestList(scan, contents)),
          m_files(scan.card.Root()) {}

    ClipContents Read(const _tag_P2Clip& clip) {
        ClipContents contents;
        contents.clip = &clip;
        ReadMetadata(clip, contents);
        contents.start = BytesFromText(StartOf(clip, contents.metadata));
        ReadFiles(clip, contents);
        const auto taken = m_taken.find(CString(clip.ClipName).MakeUpper());
        contents.isListed = taken != m_taken.end();
        if (contents.isListed) {
            contents.taken = Joined(taken->second, clip.Duration);
        }
        return contents;
    }

private:
    void ReadMetadata(const _tag_P2Clip& clip, ClipContents& contents) {
        CString problem;
        if (m_metadata.Read(clip, contents.metadata, problem) == MetadataStatus::Unreadable) {
            contents.unread = BytesFromText(problem);
        }
    }

    [[nodiscard]] CString StartOf(const _tag_P2Clip& clip, const ClipMetadata& metadata) const {
        const CString told = IsoDate(metadata.shoot.startDate);
        const auto index = &clip - m_scan.clips.GetData();
        const bool hasZone = index < m_scan.report.zones.GetSize();
        return !told.IsEmpty() ? told
               : hasZone       ? IsoDate(clip.StartDate, m_scan.report.zones[index].start)
                               : IsoDate(clip.StartDate);
    }

    void ReadFiles(const _tag_P2Clip& clip, ClipContents& contents) {
        CArray<ClipFile> files;
        m_files.Read(clip, files);
        for (const ClipFile& file : files) {
            m_contents.bytes += file.size;
            if (file.state != ClipFileState::Present) {
                contents.lacking.push_back(file);
            }
        }
    }

    const tool::CardScan& m_scan;
    CardContents& m_contents;
    std::map<CString, Segments> m_taken;
    ClipMetadataReader m_metadata;
    ClipFileReader m_files;
};

} // namespace

std::vector<CardContents> ReadContents(const tool::CardScans& scans) {
    std::vector<CardContents> all(scans.cards.size());
    std::vector<std::unique_ptr<ClipReader>> readers;
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i].scan = &scans.cards[i];
        all[i].skipped = scans.cards[i].report.skipped;
        readers.push_back(std::make_unique<ClipReader>(scans.cards[i], all[i]));
        ReadEdits(scans.cards[i], all[i]);
        ReadSpace(all[i]);
    }
    for (const _tag_P2Clip* clip : tool::OrderedClips(scans, "name")) {
        const auto card = static_cast<std::size_t>(&scans.CardOf(*clip) - scans.cards.data());
        all[card].clips.push_back(readers[card]->Read(*clip));
    }
    return all;
}

bool IsWhole(const ClipContents& clip) {
    CArray<ClipFile> lacking;
    for (const ClipFile& file : clip.lacking) {
        lacking.Add(file);
    }
    return nqp2::IsWhole(lacking) && clip.unread.empty();
}

std::int64_t FramesTaken(const ClipContents& clip) {
    std::int64_t frames = 0;
    for (const tag_P2SegInfo& segment : clip.taken) {
        frames += std::int64_t{segment.OutPoint} - segment.InPoint + 1;
    }
    return frames;
}

} // namespace nqp2::report
