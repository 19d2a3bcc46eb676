// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/scan_remarks.h"

#include "media/card_layout.h"
#include "platform/unicode.h"

#include <string>

namespace nqp2::clips {
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

} // namespace

SkippedFile NotLoaded(const CString& path, const dom::ParseError& error) {
    if (media::IsCompanion(path)) {
        return Remark(path, SkipReason::Companion);
    }
    SkippedFile file = Remark(path, ReasonOf(error.fault));
    if (file.text.IsEmpty()) {
        file.text = platform::TextFromUtf8(error.reason);
    }
    file.line = error.line;
    file.column = error.linepos;
    return file;
}

SkippedFile NotRead(const CString& path, const platform::IoStatus& status) {
    SkippedFile file = Remark(path, ReasonOf(status.error));
    if (file.text.IsEmpty()) {
        file.text = platform::TextFromUtf8(status.reason);
    }
    return file;
}

SkippedFile NotNamable(const CString& folder, const CString& title) {
    SkippedFile file = Remark(folder, SkipReason::Unreadable);
    file.text = L"the name \"" + title + L"\" holds a backslash, which no path can carry";
    return file;
}

SkippedFile NotHeld(const CString& path, const std::exception& error) {
    SkippedFile file = Remark(path, SkipReason::TooLarge);
    file.text = platform::TextFromUtf8(error.what());
    return file;
}

SkippedFile Remark(const CString& path, SkipReason reason) {
    SkippedFile file;
    file.path = path;
    file.reason = reason;
    file.text = TextOf(reason);
    return file;
}

} // namespace nqp2::clips
