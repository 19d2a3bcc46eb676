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

/// Makes records of the files, one after another.
class Loading {
public:
    Loading(CMarkupMSXML& reader, ScanRemarks& remarks, const MetadataFolder::Take& take,
            const MetadataFolder::TakeBytes& takeBytes)
        : m_reader(reader), m_remarks(remarks), m_take(take), m_takeBytes(takeBytes) {}

    /// One file that was read, or was too large to be read ahead. Its content may be taken away.
    void Take(const platform::FoundFile& file, const platform::IoStatus& status,
              std::string& content) {
        if (!status && status.error != platform::IoError::TooLarge) {
            m_remarks.AddUnread(file.path, status);
        } else if (!status || !TakeBytes(file, content)) {
            TakeDocument(file, status, content);
        }
    }

    /// The reader gets the last document that was taken without it.
    void Finish() {
        if (m_isAhead) {
            m_reader.LoadBytes(m_last);
        }
    }

private:
    bool TakeBytes(const platform::FoundFile& file, std::string& content) {
        bool isTaken = false;
        try {
            isTaken = m_takeBytes && m_takeBytes(file, content);
        } catch (...) { // only what is taken can fail on the way
            KeepAsLast(content);
            throw;
        }
        if (isTaken) {
            KeepAsLast(content);
        }
        return isTaken;
    }

    void KeepAsLast(std::string& content) noexcept {
        m_last.swap(content);
        m_isAhead = true;
    }

    void TakeDocument(const platform::FoundFile& file, const platform::IoStatus& status,
                      const std::string& content) {
        m_isAhead = false;
        if ((status ? m_reader.LoadBytes(content) : m_reader.LoadXml(file.path)) == 0) {
            m_remarks.AddUnloaded(file.path, LoadErrorOf(m_reader.GetDocumentPtr()));
            return;
        }
        m_take(file);
    }

    CMarkupMSXML& m_reader;
    ScanRemarks& m_remarks;
    const MetadataFolder::Take& m_take;
    const MetadataFolder::TakeBytes& m_takeBytes;
    bool m_isAhead = false; ///< of what the reader holds
    std::string m_last;     ///< the document that was taken last without the reader
};

} // namespace

MetadataFolder::MetadataFolder(platform::Place folder, Subfolders subfolders,
                               std::optional<platform::FileInfo>* info)
    : m_folder(std::move(folder)), m_files(m_folder.List(media::kMetadataPattern, m_status)),
      m_info(info) {
    if (subfolders == Subfolders::PassedOver) {
        std::erase_if(m_files, [](const platform::FoundFile& file) { return file.isFolder; });
    }
}

void MetadataFolder::Read(CMarkupMSXML& reader, ScanRemarks& remarks, const Take& take,
                          const TakeBytes& takeBytes) const {
    platform::ReadAhead contents(RequestsFor(m_files, m_info != nullptr));
    Loading loading(reader, remarks, take, takeBytes);
    std::string content;
    for (const platform::FoundFile& file : m_files) {
        if (!file.pathIsSafe) {
            remarks.AddUnnamable(Path(), file.title);
            continue;
        }
        const platform::IoStatus status =
            IsReadable(file) ? contents.Next(content, m_info) : NotOpened();
        try {
            loading.Take(file, status, content);
        } catch (const std::bad_alloc&) {
            remarks.AddUnread(file.path, {platform::IoError::Other, "out of memory"});
        } catch (const std::exception& error) {
            remarks.AddUnread(file.path, {platform::IoError::TooLarge, error.what()});
        }
    }
    loading.Finish();
}

bool MetadataFolder::LoadFirst(CMarkupMSXML& reader) const {
    return std::any_of(m_files.begin(), m_files.end(), [&](const platform::FoundFile& file) {
        return IsReadable(file) && !file.isFolder && reader.LoadXml(file.path) != 0;
    });
}

} // namespace nqp2::xml
