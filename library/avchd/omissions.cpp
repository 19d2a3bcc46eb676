// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/omissions.h"

#include "NQP2ParserU/TextBytes.h"
#include "platform/guard.h"

namespace nqp2::avchd {

void Omissions::Add(const CString& path, SkipReason reason, const std::string& why) {
    SkippedFile file;
    file.path = path;
    file.reason = reason;
    file.text = TextFromBytes(why);
    m_skipped.Add(file);
}

void Omissions::AddUnread(const CString& path, const platform::IoStatus& status) {
    Add(path, ReasonOf(status), status.reason);
}

void Omissions::AddFolder(const CString& folder, const platform::IoStatus& status) {
    Add(folder, SkipReason::FolderUnreadable, status.reason);
}

void Omissions::AddThrown(const CString& path, const char* why) noexcept {
    platform::Guarded(false, [&] { // an entry of the report takes memory too
        Add(path, SkipReason::TooLarge, why);
        return true;
    });
}

SkipReason ReasonOf(const platform::IoStatus& status) {
    return status.error == platform::IoError::TooLarge ? SkipReason::TooLarge
                                                       : SkipReason::Unreadable;
}

} // namespace nqp2::avchd
