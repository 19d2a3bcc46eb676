// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/scan_remarks.h"
#include "edl/edl_layout.h"
#include "edl/edl_scan.h"
#include "media/card_status.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/guard.h"

#include <exception>
#include <vector>

namespace nqp2::parser {

namespace {

SkippedFile RemarkOn(const edl::SkippedList& list, const CString& folder) {
    if (!list.file.pathIsSafe) {
        return clips::NotNamable(folder, list.file.title);
    }
    if (!list.status) {
        return clips::NotRead(list.file.path, list.status);
    }
    return list.error.fault != dom::Fault::None
               ? clips::NotLoaded(list.file.path, list.error)
               : clips::Remark(list.file.path, SkipReason::NoEditList);
}

SkippedFile FolderRemark(const CString& folder, const platform::IoStatus& status) {
    SkippedFile remark = clips::NotRead(folder, status);
    remark.reason = SkipReason::FolderUnreadable;
    return remark;
}

/// Whether the folder is there; one that cannot even be looked for is reported.
bool Stands(const CString& folder, ScanReport& report) {
    const std::string path = PosixPath(folder);
    if (platform::PathExists(path)) {
        return true;
    }
    platform::FileInfo info;
    const platform::IoStatus status = platform::Files().Stat(path, info);
    if (!status && status.error != platform::IoError::NotFound) {
        report.skipped.Add(FolderRemark(folder, status));
    }
    return false;
}

bool LoadFolder(const CString& folder, CMarkupMSXML& reader, CArray<tag_P2EDL>& edls,
                ScanReport& report) {
    if (!Stands(folder, report)) {
        return false;
    }
    std::vector<edl::SkippedList> skipped;
    const platform::IoStatus status = edl::ScanEditLists(folder, reader, edls, &skipped);
    for (const edl::SkippedList& list : skipped) {
        report.skipped.Add(RemarkOn(list, folder));
    }
    if (!status) {
        report.skipped.Add(FolderRemark(folder, status));
    }
    return true;
}

/// A folder that asks too much of memory is one that could not be read to its end.
bool TryLoadFolder(const CString& folder, CMarkupMSXML& reader, CArray<tag_P2EDL>& edls,
                   ScanReport& report) {
    try {
        return LoadFolder(folder, reader, edls, report);
    } catch (const std::exception& error) {
        report.skipped.Add(FolderRemark(folder, {platform::IoError::Other, error.what()}));
        return false;
    }
}

} // namespace
} // namespace nqp2::parser

using nqp2::media::kCannotRead;
using nqp2::media::kRead;
using nqp2::platform::Guarded;

__int64 CNQP2Parser::LoadCardEdls(const CString& root, CArray<tag_P2EDL>& edls,
                                  nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        bool found = false;
        if (m_pMarkup != nullptr) {
            for (const CString& folder :
                 {nqp2::edl::EditListFolder(root), nqp2::edl::ContentsEditListFolder(root)}) {
                found = nqp2::parser::TryLoadFolder(folder, *m_pMarkup, edls, report) || found;
            }
        }
        return found ? kRead : kCannotRead;
    });
}
