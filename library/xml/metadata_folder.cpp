// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/metadata_folder.h"

#include "media/card_layout.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/XmlLimits.h"
#include "platform/read_ahead.h"
#include "xml/document_queries.h"
#include "xml/dom/document.h"

#include <algorithm>
#include <exception>
#include <new>
#include <string>
#include <utility>

namespace nqp2::xml {
namespace {

bool IsReadable(const platform::FoundFile& file) {
    return !file.isSpecial && file.pathIsSafe;
}

std::vector<platform::FileRequest> RequestsFor(const std::vector<platform::FoundFile>& files,
                                               bool withInfo) {
    const std::uint64_t limit = std::min(platform::kReadAheadLimit, MaxXmlFileSize());
    std::vector<platform::FileRequest> requests;
    requests.reserve(files.size());
    for (const platform::FoundFile& file : files) {
        if (IsReadable(file)) {
            requests.push_back({file.posixPath, limit, false, withInfo});
        }
    }
    return requests;
}

/// Takes the place of reading a special file: the opening alone of a device can do harm.
platform::IoStatus NotOpened() {
    return {platform::IoError::NotAFile, "it is no regular file"};
}

/// One file that was read, or was too large to be read ahead.
bool Load(CMarkupMSXML& reader, const CString& path, const platform::IoStatus& status,
          const std::string& content, ScanRemarks& remarks) {
    if (!status && status.error != platform::IoError::TooLarge) {
        remarks.AddUnread(path, status);
        return false;
    }
    if ((status ? reader.LoadBytes(content) : reader.LoadXml(path)) == 0) {
        remarks.AddUnloaded(path, LoadErrorOf(reader.GetDocumentPtr()));
        return false;
    }
    return true;
}

} // namespace

MetadataFolder::MetadataFolder(platform::Place folder, Subfolders subfolders,
                               std::optional<platform::FileInfo>* info)
    : m_folder(std::move(folder)), m_files(m_folder.List(media::kMetadataPattern, m_status)),
      m_info(info) {
    if (subfolders == Subfolders::PassedOver) {
        std::erase_if(m_files, [](const platform::FoundFile& file) { return file.isFolder; });
    }
}

void MetadataFolder::Read(CMarkupMSXML& reader, ScanRemarks& remarks, const Take& take) const {
    platform::ReadAhead contents(RequestsFor(m_files, m_info != nullptr));
    std::string content;
    for (const platform::FoundFile& file : m_files) {
        if (!file.pathIsSafe) {
            remarks.AddUnnamable(Path(), file.title);
            continue;
        }
        const platform::IoStatus status =
            IsReadable(file) ? contents.Next(content, m_info) : NotOpened();
        try {
            if (Load(reader, file.path, status, content, remarks)) {
                take(file);
            }
        } catch (const std::bad_alloc&) {
            remarks.AddUnread(file.path, {platform::IoError::Other, "out of memory"});
        } catch (const std::exception& error) {
            remarks.AddUnread(file.path, {platform::IoError::TooLarge, error.what()});
        }
    }
}

bool MetadataFolder::LoadFirst(CMarkupMSXML& reader) const {
    return std::any_of(m_files.begin(), m_files.end(), [&](const platform::FoundFile& file) {
        return IsReadable(file) && !file.isFolder && reader.LoadXml(file.path) != 0;
    });
}

} // namespace nqp2::xml
