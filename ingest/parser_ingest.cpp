// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "ingest/ingest_file.h"
#include "ingest/IngestList.h"
#include "media/card_status.h"
#include "parser/NQP2Parser.h"
#include "platform/case_blind.h"
#include "platform/diagnostics.h"
#include "platform/guard.h"
#include "platform/PathText.h"

using nqp2::media::kCannotRead;
using nqp2::media::kRead;
using nqp2::platform::Guarded;

__int64 CNQP2Parser::WriteIngestXML(const CString& fileName, IngestRequest& request) {
    return Guarded(kCannotRead, [&] {
        if (fileName.IsEmpty()) {
            return kCannotRead;
        }
        for (const auto& [root, clips] : request) {
            const CString folder = nqp2::ingest::UserDataFolder(root);
            if (!nqp2::platform::EnsureFolder(nqp2::PosixPath(folder))) {
                nqp2::platform::OutputDebugStringW(L"\n==Create Directory Failed==\n");
                return kCannotRead;
            }
            if (!nqp2::ingest::AddToFile(folder, fileName, clips)) {
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
