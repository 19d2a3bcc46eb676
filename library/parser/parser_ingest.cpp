// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "ingest/ingest_file.h"
#include "media/card_layout.h"
#include "media/card_status.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "platform/diagnostics.h"
#include "platform/guard.h"
#include "platform/unicode.h"

#include <memory>
#include <string>
#include <string_view>

using nqp2::media::kCannotRead;
using nqp2::media::kRead;
using nqp2::platform::Guarded;

namespace {

/// Folder and name are joined with one separator, whichever of them brings it.
CString WithoutLeadingSeparators(const CString& name) {
    const std::size_t start = name.View().find_first_not_of(L"\\/");
    return start == std::wstring_view::npos ? CString() : CString(name.View().substr(start));
}

} // namespace

__int64 CNQP2Parser::WriteIngestXML(const CString& fileName, IngestRequest& request) {
    return Guarded(kCannotRead, [&] {
        const CString name = WithoutLeadingSeparators(fileName);
        const std::string entry = nqp2::platform::NameBytesFromText(name.View());
        if (!nqp2::media::IsPlainName(name) || !nqp2::platform::IsEntryName(entry)) {
            return kCannotRead;
        }
        for (const auto& [root, clips] : request) {
            std::unique_ptr<nqp2::platform::Folder> folder;
            if (!nqp2::ingest::OpenUserData(root, true, folder)) {
                nqp2::platform::OutputDebugStringW(L"\n==Create Directory Failed==\n");
                return kCannotRead;
            }
            if (!nqp2::ingest::AddToFile(*folder, nqp2::ingest::UserData(root), name, clips)) {
                return kCannotRead;
            }
        }
        return kRead;
    });
}

int CNQP2Parser::DeleteIngestNode(const CString& root, const CString& clipName) noexcept {
    if (root.IsEmpty() || clipName.IsEmpty()) {
        return 1;
    }
    // A list that is not there or not sound and one that was saved all answer 1: kept, hosts rely
    // on it.
    const nqp2::IngestStatus status = nqp2::RemoveFromIngestList(root, clipName).status;
    const bool one = status == nqp2::IngestStatus::NoList ||
                     status == nqp2::IngestStatus::Unreadable || status == nqp2::IngestStatus::Done;
    return one ? 1 : 0;
}
