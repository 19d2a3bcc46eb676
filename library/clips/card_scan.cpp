// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/card_scan.h"

#include "clips/clip_promises.h"
#include "clips/clip_reader.h"
#include "clips/clip_texts.h"
#include "clips/essence_lookup.h"
#include "clips/takes.h"
#include "media/card_layout.h"
#include "media/card_status.h"
#include "media/dates.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/place.h"
#include "xml/dom/document.h"
#include "xml/dom/field_reader.h"
#include "xml/metadata_folder.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::clips {
namespace {

using xml::MetadataFolder;

ClipRelation::Neighbour NeighbourOf(const ClipTexts& texts, ClipPath id, const CString& name,
                                    const CString& serialNo) {
    return {texts.Text(id), name, serialNo};
}

ClipRelation RelationOf(const ClipTexts& texts, const _tag_P2Clip& clip) {
    ClipRelation relation;
    relation.clipName = clip.ClipName;
    relation.globalClipID = clip.GlobalClipID;
    relation.offsetInShot = clip.OffsetInShot;
    relation.top =
        NeighbourOf(texts, ClipPath::TopGlobalClipID, clip.TopClipName, clip.TopSerialNo);
    relation.previous = NeighbourOf(texts, ClipPath::PreviousGlobalClipID, clip.PreviousClipName,
                                    clip.PreviousSerialNo);
    relation.next =
        NeighbourOf(texts, ClipPath::NextGlobalClipID, clip.NextClipName, clip.NextSerialNo);
    return relation;
}

ClipTold ToldOf(const ClipTexts& texts) {
    const auto zone = [&texts](ClipPath path) {
        return media::ZoneOf(texts.Text(path).View()).value_or(ClipTold::kNoZone);
    };
    return {zone(ClipPath::StartDate), zone(ClipPath::EndDate), true,
            texts.HasText(ClipPath::StartTimecode)};
}

/// One scan: the record that is used over and over, the reader, and what is remarked on the way.
class Scan {
public:
    Scan(const platform::Place& contents, CMarkupMSXML& reader, bool keepDigit, ScanReport* report,
         ClipPromises* promises)
        : m_reader(reader), m_essence(contents, EssenceLookup::Mode::Scan), m_keepDigit(keepDigit),
          m_remarks(report), m_promises(promises),
          m_fields(promises != nullptr ? ClipAndFileFields() : ClipFields()) {
        if (promises != nullptr) {
            promises->Clear();
        }
    }

    /// Appends what the folder holds. A missing one has no clips, which is not worth a remark.
    void Run(const MetadataFolder& folder, bool isMissing, CArray<_tag_P2Clip>& clips) {
        if (!folder.Status() && !isMissing) {
            m_remarks.AddFolder(folder.Path(), folder.Status());
        }
        m_room = clips.GetSize();
        m_most = m_room + folder.Count();
        folder.Read(
            m_reader, m_remarks,
            [&](const platform::FoundFile& file) {
                Take(file, ClipTexts(*m_reader.GetDocumentPtr(), m_pool), clips);
            },
            [&](const platform::FoundFile& file, std::string_view bytes) {
                const bool isTaken = m_fields.Read(bytes);
                if (isTaken) {
                    Take(file, ClipTexts(m_fields.Values(), m_pool), clips);
                    if (m_promises != nullptr) {
                        m_promises->Add(platform::NamePart(file.posixPath), m_fields.Values());
                    }
                }
                return isTaken;
            });
    }

    void Tell(ScanReport& report) const {
        report.takes.Append(FindTakes(m_relations));
        for (const ClipTold& told : m_told) {
            report.told.Add(told);
        }
        for (const CString& folder : m_essence.ExactFolders()) {
            report.exactFolders.Add(folder);
        }
    }

private:
    void Take(const platform::FoundFile& file, const ClipTexts& texts, CArray<_tag_P2Clip>& clips) {
        m_clip.Reset();
        m_clip.XmlPath = file.path;
        m_clip.ClipName = file.title;
        ReadScannedClip(texts, m_essence, m_clip);
        if (!texts.HasContent()) {
            m_remarks.Add(file.path, SkipReason::NoClipContent);
        } else if (!media::IsPlainName(m_clip.ClipName)) {
            m_remarks.Add(file.path, SkipReason::UnsafeName);
        }
        if (m_remarks.AreWanted()) {
            Relate(RelationOf(texts, m_clip));
            m_told.push_back(ToldOf(texts));
        }
        if (!m_keepDigit) {
            m_clip.ClipIdDigit = -1;
        }
        MakeRoom(clips);
        clips.Add(std::move(m_clip)); // the next one keeps the moment that a move leaves, see Reset
    }

    /// The array grows as ever, by as much as it holds, but not beyond what can come: hosts keep
    /// what they are given.
    void MakeRoom(CArray<_tag_P2Clip>& clips) {
        constexpr std::int64_t kLeastRoom = 16;
        if (clips.GetSize() == m_room) {
            m_room = std::min(m_most, m_room + std::max(m_room, kLeastRoom));
            clips.Reserve(m_room);
        }
    }

    void Relate(ClipRelation relation) {
        if (IsRelated(relation)) {
            m_relations.push_back(std::move(relation));
        }
    }

    CMarkupMSXML& m_reader;
    EssenceLookup m_essence;
    bool m_keepDigit;
    xml::ScanRemarks m_remarks;
    ClipPromises* m_promises;
    dom::FieldReader m_fields;
    TextPool m_pool;
    _tag_P2Clip m_clip;
    std::int64_t m_room = 0; ///< for so many clips there is room for certain
    std::int64_t m_most = 0; ///< clips, when each file becomes one
    std::vector<ClipRelation> m_relations;
    std::vector<ClipTold> m_told;
};

/// Appends a record for every clip file below the contents folder that loads.
void ScanClips(const platform::Place& contents, CMarkupMSXML& reader, bool keepDigit,
               CArray<_tag_P2Clip>& clips, ScanReport* report, ClipPromises* promises) {
    const MetadataFolder folder(contents.Below(media::kMetadataFiles.folder.Path()),
                                MetadataFolder::Subfolders::Remarked);
    const bool isMissing = folder.Status().error == platform::IoError::NotFound &&
                           !contents.Has(media::kMetadataFiles.folder.Text());
    Scan scan(contents, reader, keepDigit, report, promises);
    scan.Run(folder, isMissing, clips);
    if (report != nullptr) {
        scan.Tell(*report);
    }
    if (promises != nullptr) {
        promises->KeepContents(contents);
    }
}

} // namespace

__int64 LoadClips(const CString& root, CMarkupMSXML* reader, bool keepDigit,
                  CArray<_tag_P2Clip>& clips, ScanReport* report, ClipPromises* promises) {
    const platform::Place contents(media::ContentsFolder(root));
    const bool isOutOfMemory = reader != nullptr && reader->GetDocumentPtr() == nullptr;
    if (isOutOfMemory || !contents.Exists()) {
        return media::kCannotRead;
    }
    if (reader != nullptr) {
        ScanClips(contents, *reader, keepDigit, clips, report, promises);
    }
    return media::kRead;
}

} // namespace nqp2::clips
