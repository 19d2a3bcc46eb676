// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_reading.h"

#include "catalogue/clip_facts.h"
#include "catalogue/hash_lists.h"
#include "catalogue/medium.h"
#include "catalogue/take_gaps.h"
#include "catalogue/words.h"
#include "console/console.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"
#include "NQP2ParserU/TextBytes.h"
#include "offload/mhl/hash_format.h"
#include "platform/host_name.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <new>
#include <set>
#include <utility>

namespace nqp2::catalogue {
namespace {

constexpr struct {
    CardKind kind;
    const char* word;
} kKinds[] = {{CardKind::P2, "p2"}, {CardKind::Avchd, "avchd"}, {CardKind::Camera, "camera"}};

std::int64_t Now() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

class Reading {
public:
    Reading(const SeenCard& card, ReadingRemarks& remarks)
        : m_card(card), m_remarks(remarks), m_files(card.found.root), m_metadata(card.found.root),
          m_isP2(card.found.kind == CardKind::P2) {
        if (m_isP2) {
            m_stamps = ClipStamps(card.state);
        }
    }

    CardContents Run(const std::vector<HoldingRecord>& known) {
        const std::vector<std::string> changed = Changed(known);
        // One by one is slower than all at once.
        if (!m_isP2 || known.empty() || changed.size() * 2 > m_stamps.size()) {
            m_contents.unchanged.clear();
            ReadAll();
        } else {
            ReadOnly(changed);
        }
        ReadLists();
        ReadIngests();
        m_contents.generations = GenerationsOf(m_card.path);
        AddTakeGaps(m_contents, m_report.takes, m_isP2);
        Describe();
        return std::move(m_contents);
    }

private:
    /// The names of clips that are new or not as they were; the others stay.
    std::vector<std::string> Changed(const std::vector<HoldingRecord>& known) {
        std::set<std::string> same;
        for (const HoldingRecord& holding : known) {
            const std::string name = Capitals(holding.name);
            const auto stamp = m_stamps.find(name);
            if (stamp != m_stamps.end() && stamp->second.digest == holding.stamp) {
                same.insert(name);
                m_contents.unchanged.push_back(holding);
            }
        }
        std::vector<std::string> changed;
        for (const auto& [name, stamp] : m_stamps) {
            if (!same.contains(name)) {
                changed.push_back(stamp.name);
            }
        }
        return changed;
    }

    void ReadAll() {
        const CString& root = m_card.found.root;
        ReadyParser parser;
        std::int64_t result = 0;
        if (m_isP2) {
            m_report.files = &m_files;
            result = parser->LoadClipEx(root, m_clips, 0, m_report);
        } else {
            result = parser->LoadAVCHDClip(root, m_clips, m_report);
        }
        if (result != 0) {
            throw tool::Failure(m_card.path, "cannot be read", "it has no clips' folder");
        }
        m_remarks.skippedFiles = std::count_if(
            m_report.skipped.begin(), m_report.skipped.end(),
            [](const SkippedFile& each) { return each.reason != SkipReason::Companion; });
        for (std::int64_t i = 0; i < m_clips.GetSize(); ++i) {
            TakeClip(m_clips[i], i < m_report.told.GetSize() ? m_report.told[i] : ClipTold());
        }
    }

    void ReadOnly(const std::vector<std::string>& names) {
        ReadyParser parser;
        for (const std::string& name : names) {
            _tag_P2Clip clip;
            if (parser->LoadClipInfo(m_card.found.root, TextFromBytes(name), clip) == 0) {
                clip.ClipName = TextFromBytes(name);
                TakeClip(clip, {});
            } else {
                ++m_remarks.skippedFiles;
            }
        }
    }

    void TakeClip(const _tag_P2Clip& clip, const ClipTold& told) {
        ClipMetadata metadata;
        CString problem;
        if (m_metadata.Read(clip, metadata, problem) == MetadataStatus::Unreadable) {
            ++m_remarks.unreadClips;
        }
        CArray<ClipFile> files;
        if (!m_files.Read(clip, files)) {
            throw std::bad_alloc();
        }
        const ClipFacts facts = {clip, told, metadata, files};
        CardClip kept = ClipOf(facts);
        const auto stamp = m_stamps.find(Capitals(kept.holding.name));
        kept.holding.stamp = stamp == m_stamps.end() ? "" : stamp->second.digest;
        std::vector<GapRecord> gaps = FileGapsOf(facts, m_card.path);
        m_contents.gaps.insert(m_contents.gaps.end(), gaps.begin(), gaps.end());
        m_contents.read.push_back(std::move(kept));
    }

    void ReadLists() {
        ReadyParser parser;
        ScanReport report;
        if (m_isP2) {
            parser->LoadCardEdls(m_card.found.root, m_lists, report);
        } else {
            parser->LoadCardPlaylists(m_card.found.root, m_lists, report);
        }
        for (const tag_P2EDL& list : m_lists) {
            const ListRecord record = {KeptText(list.Name), m_isP2 ? "edl" : "playlist",
                                       KeptText(list.FrameRate), list.Duration};
            m_contents.lists.push_back(record);
            std::int64_t ordinal = 0;
            for (const tag_P2EDLClipTrackEvent& event : list.Events) {
                const CString& identifier =
                    event.GlobalClipID.IsEmpty() ? event.Clip.GlobalClipID : event.GlobalClipID;
                m_contents.events.push_back({record.name, ++ordinal, IdentityOf(identifier),
                                             KeptText(event.ClipName), KeptText(event.P2SerialNo),
                                             event.Offset, event.SourceIn, event.SourceOut});
            }
        }
    }

    void ReadIngests() {
        IngestList list;
        LoadIngestList(m_card.found.root, list);
        std::set<std::string> names;
        for (const auto& [clip, segments] : list) {
            const std::string name = KeptText(clip);
            names.insert(Capitals(name));
            for (const tag_P2SegInfo& segment : segments) {
                m_contents.ingests.push_back({name, segment.InPoint, segment.OutPoint});
            }
        }
        for (CardClip& each : m_contents.read) {
            each.holding.isIngested = names.contains(Capitals(each.holding.name)) ? 1 : 0;
        }
        for (HoldingRecord& each : m_contents.unchanged) {
            each.isIngested = names.contains(Capitals(each.name)) ? 1 : 0;
        }
    }

    void Describe() {
        CardRecord& card = m_contents.card;
        const Medium medium = MediumOf(m_card.found);
        card.mediumKey = medium.key;
        card.isMedium = medium.isOwn ? 1 : 0;
        for (const auto& [kind, word] : kKinds) {
            card.kind = m_card.found.kind == kind ? word : card.kind;
        }
        card.volume = KeptText(m_card.found.serialNo);
        card.volumeLabel = KeptText(m_card.found.label);
        card.serial = SerialOf(m_contents, m_lists);
        card.host = KeptText(platform::HostName());
        card.place = StoredPath(m_card.path);
        card.contents = ContentsDigest();
        card.state = m_card.state.digest;
        card.clips =
            static_cast<std::int64_t>(m_contents.read.size() + m_contents.unchanged.size());
        card.bytes = static_cast<std::int64_t>(m_card.state.bytes);
        card.added = card.changed = card.seen = Now();
    }

    /// Of the clips' identifiers and names, in whichever order they came.
    std::string ContentsDigest() {
        std::set<std::string> clips;
        for (const CardClip& each : m_contents.read) {
            clips.insert(IdentityOf(TextFromBytes(each.holding.identifier)) + '\n' +
                         each.holding.name);
        }
        for (const HoldingRecord& each : m_contents.unchanged) {
            clips.insert(IdentityOf(TextFromBytes(each.identifier)) + '\n' + each.name);
        }
        mhl::Hasher hasher(mhl::HashFormat::Xxh128);
        for (const std::string& clip : clips) {
            hasher.Add(std::to_string(clip.size()) + ':' + clip);
        }
        return clips.empty() ? "" : hasher.Value().Text(mhl::HashFormat::Xxh128);
    }

    const SeenCard& m_card;
    ReadingRemarks& m_remarks;
    ClipFileReader m_files;
    ClipMetadataReader m_metadata;
    bool m_isP2;
    std::map<std::string, ClipStamp> m_stamps;
    CArray<_tag_P2Clip> m_clips;
    CArray<tag_P2EDL> m_lists;
    ScanReport m_report;
    CardContents m_contents;
};

} // namespace

SeenCard LookAt(const FoundCard& found) {
    const std::string path = PosixPath(found.root);
    return {found, path, StateOf(path)};
}

CardContents ReadCard(const SeenCard& card, const std::vector<HoldingRecord>& known,
                      ReadingRemarks& remarks) {
    return Reading(card, remarks).Run(known);
}

} // namespace nqp2::catalogue
