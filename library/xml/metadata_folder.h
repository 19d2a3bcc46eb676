// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/file_system.h"
#include "platform/io_status.h"
#include "platform/place.h"
#include "xml/scan_remarks.h"

#include <cstdint>
#include <functional>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

class CMarkupMSXML;

namespace nqp2::xml {

/// A folder of metadata files, one record each: clips, edit lists. Its files come in the file
/// system's order; links are followed, while pipes, devices and names that would lead to another
/// file are never opened.
class MetadataFolder {
public:
    /// What is said of a folder that has the name of a metadata file.
    enum class Subfolders { Remarked, PassedOver };
    /// Makes a record of the document that the reader holds. What is thrown leaves out this file.
    using Take = std::function<void(const platform::FoundFile& file)>;
    /// Makes one of a file's bytes, without the reader; false, with nothing done, where that takes
    /// the document.
    using TakeBytes = std::function<bool(const platform::FoundFile& file, std::string_view bytes)>;

    /// `info`, unless null, gets the status of each file that is taken, asked for ahead as well;
    /// empty where there is none to be had.
    MetadataFolder(platform::Place folder, Subfolders subfolders,
                   std::optional<platform::FileInfo>* info = nullptr);

    [[nodiscard]] const CString& Path() const { return m_folder.Written(); }
    /// How many files there are, and so records at most.
    [[nodiscard]] std::int64_t Count() const { return std::ssize(m_files); }
    /// Whether the folder could be read to its end.
    [[nodiscard]] const platform::IoStatus& Status() const { return m_status; }
    /// Loads every file and has it taken, reading ahead on a slow medium. No file ends the scan:
    /// one that cannot be read or loaded, that is too large or for which memory is missing gets a
    /// remark. Afterwards the reader holds the last file that was loaded, with or without it.
    void Read(CMarkupMSXML& reader, ScanRemarks& remarks, const Take& take,
              const TakeBytes& takeBytes = {}) const;
    /// Loads the first file that is well-formed; false when there is none.
    bool LoadFirst(CMarkupMSXML& reader) const;

private:
    platform::Place m_folder;
    platform::IoStatus m_status;
    std::vector<platform::FoundFile> m_files;
    std::optional<platform::FileInfo>* m_info;
};

} // namespace nqp2::xml
