// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_scan.h"

#include "edl/edl_layout.h"
#include "edl/edl_name.h"
#include "edl/edl_reader.h"
#include "media/dates.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/XmlLimits.h"
#include "platform/case_blind.h"
#include "platform/file_system.h"
#include "platform/folder_index.h"
#include "platform/guard.h"
#include "platform/guid_text.h"
#include "platform/read_ahead.h"
#include "platform/unicode.h"
#include "xml/document_queries.h"
#include "xml/dom/document.h"

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace nqp2::edl {
namespace {

/// The pictures that stand beside edit lists, each in a folder with the list's name. What the lists'
/// folder holds is read once: a search for each list would cost more with every list.
class IconLookup {
public:
    explicit IconLookup(const CString& folder)
        : m_index(platform::FolderIndex::Read(PosixPath(folder))) {}

    /// The picture's path as the record shows it; empty when there is none.
    [[nodiscard]] CString Beside(const platform::FoundFile& file) const {
        const std::optional<std::string> holder = HolderOf(file);
        const bool found = holder && platform::PathExists(FolderOf(file) + *holder + "/ICON.BMP");
        constexpr int kExtension = 4;
        return found ? file.path.Left(file.path.GetLength() - kExtension) + L"\\ICON.BMP"
                     : CString();
    }

private:
    /// The folder with the list's name, as it is spelled there. A list without a name (".XML") shares
    /// the lists' own folder.
    [[nodiscard]] std::optional<std::string> HolderOf(const platform::FoundFile& file) const {
        if (file.title.IsEmpty()) {
            return "";
        }
        const platform::FolderEntry* const entry =
            m_index.Find(platform::NameBytesFromText(file.title.View()));
        const bool holds = entry != nullptr && entry->kind == platform::EntryKind::Folder;
        return holds ? std::optional(entry->name) : std::nullopt;
    }
    /// As it stands, so that a picture is found at the first question.
    static std::string FolderOf(const platform::FoundFile& file) {
        return file.posixPath.substr(0, file.posixPath.find_last_of('/') + 1);
    }

    platform::FolderIndex m_index;
};

CString DateOf(const std::string& path) {
    platform::FileInfo info;
    const bool known = static_cast<bool>(platform::Files().Stat(path, info));
    return media::FileDateText(known ? std::optional(info.created) : std::nullopt);
}

bool LoadFile(CMarkupMSXML& reader, const CString& path, const platform::IoStatus& status,
              const std::string& content) {
    return status ? reader.LoadBytes(content) != 0 : reader.LoadXml(path) != 0;
}

/// Reads one file. Returns false, with the reason in `loss`, when it gives no record; throws what
/// its reader does for a list that is too large.
bool TakeFile(const platform::FoundFile& file, const std::string& content, CMarkupMSXML& reader,
              tag_P2EDL& edl, SkippedList& loss) {
    if (!loss.status && loss.status.error != platform::IoError::TooLarge) {
        return false;
    }
    const bool loaded = LoadFile(reader, file.path, loss.status, content);
    loss.status = {}; // too large to be read at once is no fault
    if (!loaded) {
        loss.error = xml::LoadErrorOf(reader.GetDocumentPtr());
        return false;
    }
    edl.Identity = platform::NewGuid();
    edl.Date = DateOf(file.posixPath);
    edl.Name = file.title;
    const platform::MemoryWatch watch;
    const bool isList = ReadEditList(reader, edl);
    watch.Require();
    return isList;
}

/// One file after another: what one of them asks of memory must not end the scan.
bool TryTakeFile(const platform::FoundFile& file, const std::string& content, CMarkupMSXML& reader,
                 tag_P2EDL& edl, SkippedList& loss) {
    try {
        return TakeFile(file, content, reader, edl, loss);
    } catch (const std::bad_alloc&) {
        loss.status = {platform::IoError::Other, "out of memory"};
        return false;
    } catch (const std::exception& error) {
        loss.status = {platform::IoError::TooLarge, error.what()};
        return false;
    }
}

/// Counts a list's events to those of its folder; a list that goes beyond what a folder may hold is
/// not kept.
bool FitsFolder(const tag_P2EDL& edl, std::size_t& eventsOfFolder, SkippedList& loss) {
    const auto events = static_cast<std::size_t>(edl.Events.GetSize());
    if (events > kMaxEventsOfFolder - eventsOfFolder) {
        loss.status = {platform::IoError::TooLarge, "the folder's lists have more than " +
                                                        std::to_string(kMaxEventsOfFolder) +
                                                        " events"};
        return false;
    }
    eventsOfFolder += events;
    return true;
}

/// Folders are no files; all else that has a list's name is one or is skipped.
std::vector<platform::FoundFile> FilesIn(const CString& folder, platform::IoStatus& status) {
    std::vector<platform::FoundFile> files = platform::FindFiles(folder + kEditLists, status);
    std::erase_if(files, [](const platform::FoundFile& file) { return file.isFolder; });
    return files;
}

bool IsReadable(const platform::FoundFile& file) {
    return !file.isSpecial && file.pathIsSafe;
}

std::vector<std::string> PathsOf(const std::vector<platform::FoundFile>& files) {
    std::vector<std::string> paths;
    for (const platform::FoundFile& file : files) {
        if (IsReadable(file)) {
            paths.push_back(file.posixPath);
        }
    }
    return paths;
}

/// What stands for reading a special file: the opening alone of a device can do harm.
platform::IoStatus NotOpened() {
    return {platform::IoError::NotAFile, "it is no regular file"};
}

} // namespace

platform::IoStatus ScanEditLists(const CString& folder, CMarkupMSXML& reader,
                                 CArray<tag_P2EDL>& edls, std::vector<SkippedList>* skipped) {
    platform::IoStatus folderStatus;
    const std::vector<platform::FoundFile> files = FilesIn(folder, folderStatus);
    const IconLookup icons(folder);
    platform::ReadAhead contents(PathsOf(files),
                                 std::min(platform::kReadAheadLimit, MaxXmlFileSize()));
    std::string content;
    std::size_t events = 0;
    for (const platform::FoundFile& file : files) {
        SkippedList loss;
        loss.status = IsReadable(file) ? contents.Next(content) : NotOpened();
        tag_P2EDL edl;
        edl.IconPath = icons.Beside(file);
        if (TryTakeFile(file, content, reader, edl, loss) && FitsFolder(edl, events, loss)) {
            edls.Add(std::move(edl));
        } else if (skipped != nullptr) {
            loss.file = file;
            skipped->push_back(std::move(loss));
        }
    }
    return folderStatus;
}

} // namespace nqp2::edl
