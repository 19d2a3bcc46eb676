// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/ScanReport.h"
#include "platform/io_status.h"

#include <exception>
#include <new>
#include <string>

namespace nqp2::avchd {

/// Writes into a scan's report what the scan leaves out; each `why` is one sentence for a person.
class Omissions {
public:
    explicit Omissions(ScanReport& report) : m_skipped(report.skipped) {}

    void Add(const CString& path, SkipReason reason, const std::string& why);
    /// A file that could not be read.
    void AddUnread(const CString& path, const platform::IoStatus& status);
    /// A folder that could not be read to its end.
    void AddFolder(const CString& folder, const platform::IoStatus& status);
    /// What an exception leaves out. Throws nothing itself.
    void AddThrown(const CString& path, const char* why) noexcept;

    /// Does one file's share of a scan. What it throws, as when memory runs out, leaves that file
    /// out and no other.
    template <class Share>
    void TakeAlone(const CString& path, Share&& share) noexcept {
        try {
            share();
        } catch (const std::bad_alloc&) {
            AddThrown(path, "it takes more memory than there is");
        } catch (const std::exception& error) {
            AddThrown(path, error.what());
        }
    }

private:
    CArray<SkippedFile>& m_skipped;
};

/// Why a file that could not be read is left out.
SkipReason ReasonOf(const platform::IoStatus& status);

} // namespace nqp2::avchd
