// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/scan_remarks.h"

#include "media/card_layout.h"
#include "platform/unicode.h"

#include <string_view>
#include <utility>

namespace nqp2::xml {
namespace {

SkipReason ReasonOf(dom::Fault fault) {
    switch (fault) {
    case dom::Fault::NotWellFormed:
        return SkipReason::NotWellFormed;
    case dom::Fault::DocumentType:
        return SkipReason::DocumentType;
    case dom::Fault::TooLarge:
        return SkipReason::TooLarge;
    case dom::Fault::IsFolder:
        return SkipReason::IsFolder;
    default:
        return SkipReason::Unreadable;
    }
}

SkipReason ReasonOf(platform::IoError error) {
    switch (error) {
    case platform::IoError::IsFolder:
        return SkipReason::IsFolder;
    case platform::IoError::TooLarge:
        return SkipReason::TooLarge;
    default:
        return SkipReason::Unreadable;
    }
}

const wchar_t* TextOf(SkipReason reason) {
    switch (reason) {
    case SkipReason::Companion:
        return L"a companion file of a Mac";
    case SkipReason::IsFolder:
        return L"a folder with the name of a clip file";
    case SkipReason::NoClipContent:
        return L"no P2Main/ClipContent: listed, but no clip metadata";
    case SkipReason::UnsafeName:
        return L"its name is none that a card's files can have: these were not looked for";
    case SkipReason::NoEditList:
        return L"no edit list: its namespace or its edit unit is of another kind";
    default:
        return L"";
    }
}

/// The reason in its own words, or in those of what failed.
SkippedFile Remark(const CString& path, SkipReason reason, std::string_view detail = {}) {
    SkippedFile file;
    file.path = path;
    file.reason = reason;
    file.text = TextOf(reason);
    if (file.text.IsEmpty()) {
        file.text = platform::TextFromUtf8(detail);
    }
    return file;
}

} // namespace

void ScanRemarks::Add(const CString& path, SkipReason reason) {
    Append(Remark(path, reason));
}

void ScanRemarks::AddUnread(const CString& path, const platform::IoStatus& status) {
    Append(Remark(path, ReasonOf(status.error), status.reason));
}

void ScanRemarks::AddUnloaded(const CString& path, const dom::ParseError& error) {
    if (media::IsCompanion(path)) {
        Add(path, SkipReason::Companion);
        return;
    }
    SkippedFile file = Remark(path, ReasonOf(error.fault), error.reason);
    file.line = error.line;
    file.column = error.linepos;
    Append(std::move(file));
}

void ScanRemarks::AddUnnamable(const CString& folder, const CString& title) {
    SkippedFile file = Remark(folder, SkipReason::Unreadable);
    file.text = L"the name \"" + title + L"\" holds a backslash, which no path can carry";
    Append(std::move(file));
}

void ScanRemarks::AddFolder(const CString& folder, const platform::IoStatus& status) {
    SkippedFile file = Remark(folder, ReasonOf(status.error), status.reason);
    file.reason = SkipReason::FolderUnreadable;
    Append(std::move(file));
}

void ScanRemarks::Append(SkippedFile file) {
    if (m_report != nullptr) {
        m_report->skipped.Add(std::move(file));
    }
}

void ScanRemarks::AddDoubts(const CString& list, CArray<EventDoubt>&& doubts) {
    for (EventDoubt& doubt : doubts) { // none where no report is wanted
        doubt.list = list;
        m_report->doubts.Add(std::move(doubt));
    }
}

} // namespace nqp2::xml
