// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/card_scan.h"

#include "clips/clip_reader.h"
#include "clips/clip_texts.h"
#include "clips/essence_lookup.h"
#include "clips/scan_remarks.h"
#include "clips/takes.h"
#include "media/card_layout.h"
#include "media/card_status.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/XmlLimits.h"
#include "platform/case_blind.h"
#include "platform/file_find.h"
#include "platform/read_ahead.h"
#include "xml/document_queries.h"
#include "xml/dom/document.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::clips {
namespace {

std::vector<std::string> PathsOf(const std::vector<platform::FoundFile>& files) {
    std::vector<std::string> paths;
    paths.reserve(files.size());
    for (const platform::FoundFile& file : files) {
        if (!file.isSpecial) {
            paths.push_back(file.posixPath);
        }
    }
    return paths;
}

/// What stands for reading a special file: the opening alone of a device can do harm.
platform::IoStatus SpecialFile() {
    return {platform::IoError::NotAFile, "it is no regular file"};
}

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

/// One scan: the record that is used over and over, the reader, and what is heard on the way.
class Scan {
public:
    Scan(const CString& contents, CMarkupMSXML& reader, bool keepDigit, ScanReport* report)
        : m_reader(reader), m_essence(contents, EssenceLookup::Mode::Scan), m_keepDigit(keepDigit),
          m_report(report) {}

    void Run(const std::vector<platform::FoundFile>& files, CArray<_tag_P2Clip>& clips) {
        platform::ReadAhead contents(PathsOf(files),
                                     std::min(platform::kReadAheadLimit, MaxXmlFileSize()));
        std::string content;
        for (const platform::FoundFile& file : files) {
            m_clip.Reset();
            m_clip.XmlPath = file.path;
            m_clip.ClipName = file.title;
            Take(file, file.isSpecial ? SpecialFile() : contents.Next(content), content, clips);
        }
        if (m_report != nullptr) {
            m_report->takes.Append(FindTakes(m_relations));
        }
    }

private:
    /// One file after another: what one of them asks of memory must not end the scan.
    void Take(const platform::FoundFile& file, const platform::IoStatus& status,
              const std::string& content, CArray<_tag_P2Clip>& clips) {
        try {
            if (Load(file, status, content)) {
                Add(file, clips);
            }
        } catch (const std::exception& error) {
            Report(NotHeld(file.path, error));
        }
    }

    bool Load(const platform::FoundFile& file, const platform::IoStatus& status,
              const std::string& content) {
        if (!file.pathIsSafe) {
            Report(NotNamable(m_essence.Contents() + media::kClipFolder, file.title));
            return false;
        }
        if (!status && status.error != platform::IoError::TooLarge) {
            Report(NotRead(file.path, status));
            return false;
        }
        const int loaded = status ? m_reader.LoadBytes(content) : m_reader.LoadXml(file.path);
        if (loaded == 0) {
            Report(NotLoaded(file.path, xml::LoadErrorOf(m_reader.GetDocumentPtr())));
        }
        return loaded != 0;
    }

    void Add(const platform::FoundFile& file, CArray<_tag_P2Clip>& clips) {
        const ClipTexts texts(*m_reader.GetDocumentPtr(), m_pool);
        ReadScannedClip(texts, m_essence, m_clip);
        if (!texts.HasContent()) {
            Report(Remark(file.path, SkipReason::NoClipContent));
        } else if (!media::IsPlainName(m_clip.ClipName)) {
            Report(Remark(file.path, SkipReason::UnsafeName));
        }
        if (m_report != nullptr) {
            m_relations.push_back(RelationOf(texts, m_clip));
        }
        if (!m_keepDigit) {
            m_clip.ClipIdDigit = -1;
        }
        clips.Add(m_clip);
    }

    void Report(const SkippedFile& file) {
        if (m_report != nullptr) {
            m_report->skipped.Add(file);
        }
    }

    CMarkupMSXML& m_reader;
    EssenceLookup m_essence;
    bool m_keepDigit;
    ScanReport* m_report;
    TextPool m_pool;
    _tag_P2Clip m_clip;
    std::vector<ClipRelation> m_relations;
};

} // namespace

void ScanClips(const CString& contents, CMarkupMSXML* reader, bool keepDigit,
               CArray<_tag_P2Clip>& clips, ScanReport* report) {
    if (reader == nullptr) {
        return;
    }
    platform::IoStatus status;
    const CString folder = contents + media::kClipFolder;
    const std::vector<platform::FoundFile> files = platform::FindFiles(folder + L"*.XML", status);
    const bool missing = status.error == platform::IoError::NotFound &&
                         !platform::PathExists(PosixPath(contents + L"CLIP"));
    if (!status && !missing && report != nullptr) {
        SkippedFile remark = NotRead(folder, status);
        remark.reason = SkipReason::FolderUnreadable;
        report->skipped.Add(remark);
    }
    Scan(contents, *reader, keepDigit, report).Run(files, clips);
}

__int64 LoadClips(const CString& root, CMarkupMSXML* reader, bool keepDigit,
                  CArray<_tag_P2Clip>& clips, ScanReport* report) {
    const CString contents = media::ContentsFolder(root);
    const bool isOutOfMemory = reader != nullptr && reader->GetDocumentPtr() == nullptr;
    if (isOutOfMemory || !platform::PathExists(PosixPath(contents))) {
        return media::kCannotRead;
    }
    ScanClips(contents, reader, keepDigit, clips, report);
    return media::kRead;
}

} // namespace nqp2::clips
