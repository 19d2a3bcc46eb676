// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_scan.h"

#include "edl/edl_layout.h"
#include "edl/edl_reader.h"
#include "media/dates.h"
#include "platform/file_system.h"
#include "platform/guard.h"
#include "platform/guid_text.h"
#include "platform/place.h"
#include "platform/unicode.h"
#include "xml/metadata_folder.h"

#include <cstddef>
#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace nqp2::edl {
namespace {

using xml::MetadataFolder;
using xml::ScanRemarks;

/// What the lists of one folder may hold together; those that would go beyond are left out.
constexpr std::size_t kMaxEventsOfFolder = 4 * kMaxEvents;

/// The path, for the record, of the picture beside a list, which lies in a folder with the list's
/// name; empty when there is none. A list without a name (".XML") shares the lists' own folder.
CString PictureOf(const platform::FoundFile& list, const platform::Place& folder) {
    constexpr const wchar_t* kPicture = media::kEditListIcon.Text();
    constexpr int kExtension = 4;
    const auto isThere = [&] {
        if (list.title.IsEmpty()) {
            return folder.Has(kPicture);
        }
        const platform::FolderEntry* const entry =
            folder.Names().Find(platform::NameBytesFromText(list.title.View()));
        return entry != nullptr && entry->kind == platform::EntryKind::Folder &&
               platform::Place::At(platform::PathIn(folder.OnDisk(), entry->name)).Has(kPicture);
    };
    return isThere() ? list.path.Left(list.path.GetLength() - kExtension) + L"\\" + kPicture
                     : CString();
}

CString DateOf(const std::optional<platform::FileInfo>& info) {
    return media::FileDateText(info ? std::optional(info->created) : std::nullopt);
}

/// The scan of one folder.
class Scan {
public:
    Scan(platform::Place folder, CMarkupMSXML& reader, ScanRemarks& remarks,
         CArray<tag_P2EDL>& edls)
        : m_folder(std::move(folder)), m_reader(reader), m_remarks(remarks), m_edls(edls) {}

    void Run() {
        const MetadataFolder files(m_folder, MetadataFolder::Subfolders::PassedOver, &m_info);
        files.Read(m_reader, m_remarks, [&](const platform::FoundFile& file) { Take(file); });
        if (!files.Status()) {
            m_remarks.AddFolder(files.Path(), files.Status());
        }
    }

private:
    void Take(const platform::FoundFile& file) {
        tag_P2EDL edl;
        edl.IconPath = PictureOf(file, m_folder);
        edl.Identity = platform::NewGuid();
        edl.Date = DateOf(m_info);
        edl.Name = file.title;
        const platform::MemoryWatch watch;
        CArray<EventDoubt> doubts;
        const bool isList = ReadEditList(m_reader, edl, m_remarks.AreWanted() ? &doubts : nullptr);
        watch.Require();
        if (!isList) {
            m_remarks.Add(file.path, SkipReason::NoEditList);
        } else if (FitsFolder(file, edl)) {
            m_remarks.AddDoubts(edl.Name, std::move(doubts));
            m_edls.Add(std::move(edl));
        }
    }

    /// Counts a list's events to those of its folder; a list that goes beyond what a folder may
    /// hold is not kept.
    bool FitsFolder(const platform::FoundFile& file, const tag_P2EDL& edl) {
        const auto events = static_cast<std::size_t>(edl.Events.GetSize());
        if (events > kMaxEventsOfFolder - m_events) {
            m_remarks.AddUnread(file.path, {platform::IoError::TooLarge,
                                            "the folder's lists have more than " +
                                                std::to_string(kMaxEventsOfFolder) + " events"});
            return false;
        }
        m_events += events;
        return true;
    }

    platform::Place m_folder;
    CMarkupMSXML& m_reader;
    ScanRemarks& m_remarks;
    CArray<tag_P2EDL>& m_edls;
    std::optional<platform::FileInfo> m_info; ///< of the file that is taken
    std::size_t m_events = 0;
};

/// Returns whether the folder can be reached; one that cannot even be looked for is remarked.
bool LoadFolder(const platform::Place& folder, CMarkupMSXML& reader, CArray<tag_P2EDL>& edls,
                ScanRemarks& remarks) {
    const platform::IoStatus status = folder.Look();
    if (status) {
        Scan(folder, reader, remarks, edls).Run();
    } else if (status.error != platform::IoError::NotFound) {
        remarks.AddFolder(folder.Written(), status);
    }
    return static_cast<bool>(status);
}

/// A folder that asks too much of memory is one that could not be read to its end.
bool TryLoadFolder(const platform::Place& folder, CMarkupMSXML& reader, CArray<tag_P2EDL>& edls,
                   ScanRemarks& remarks) {
    try {
        return LoadFolder(folder, reader, edls, remarks);
    } catch (const std::exception& error) {
        remarks.AddFolder(folder.Written(), {platform::IoError::Other, error.what()});
        return false;
    }
}

} // namespace

bool LoadEditLists(const CString& root, CMarkupMSXML& reader, CArray<tag_P2EDL>& edls) {
    ScanRemarks untold(nullptr);
    return LoadFolder(platform::Place(media::WithDrive(root)).Below(media::kEditLists.BelowDrive()),
                      reader, edls, untold);
}

bool LoadCardEditLists(const CString& root, CMarkupMSXML& reader, CArray<tag_P2EDL>& edls,
                       ScanReport& report) {
    ScanRemarks remarks(&report);
    bool found = false;
    for (const wchar_t* const folder :
         {media::kEditLists.BelowDrive(), media::kContentsEditLists.BelowDrive()}) {
        found = TryLoadFolder(platform::Place(media::WithDrive(root)).Below(folder), reader, edls,
                              remarks) ||
                found;
    }
    return found;
}

} // namespace nqp2::edl
