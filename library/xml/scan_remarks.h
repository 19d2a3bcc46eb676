// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/ScanReport.h"
#include "platform/io_status.h"
#include "xml/dom/parse_error.h"

namespace nqp2::xml {

/// What a scan of metadata files writes into its report, when it has one.
class ScanRemarks {
public:
    explicit ScanRemarks(ScanReport* report) : m_report(report) {}

    [[nodiscard]] bool AreWanted() const { return m_report != nullptr; }
    /// A remark whose reason says all.
    void Add(const CString& path, SkipReason reason);
    /// The file could not be read, or holds more than may be taken from it.
    void AddUnread(const CString& path, const platform::IoStatus& status);
    /// The file was read, but is no document.
    void AddUnloaded(const CString& path, const dom::ParseError& error);
    /// A file with a backslash in its name: no path can carry it, so that the remark is on the
    /// folder.
    void AddUnnamable(const CString& folder, const CString& title);
    void AddFolder(const CString& folder, const platform::IoStatus& status);
    /// What events of a list say that its record does not hold.
    void AddDoubts(const CString& list, CArray<EventDoubt>&& doubts);

private:
    void Append(SkippedFile file);

    ScanReport* m_report;
};

} // namespace nqp2::xml
