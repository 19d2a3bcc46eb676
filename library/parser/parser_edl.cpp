// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_layout.h"
#include "edl/edl_name.h"
#include "edl/edl_scan.h"
#include "edl/edl_writer.h"
#include "media/card_status.h"
#include "media/identifier.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/folder.h"
#include "platform/guard.h"

#include <memory>

using nqp2::edl::EditListFolder;
using nqp2::media::kCannotRead;
using nqp2::media::kRead;
using nqp2::media::StatusOf;
using nqp2::platform::Folder;
using nqp2::platform::Guarded;
using nqp2::platform::MakeBelow;
using nqp2::platform::OpenRoot;

namespace {

/// `below` names the place's folder below the root.
__int64 Save(CMarkupMSXML* reader, const CString& root, const char* below,
             const nqp2::edl::EditListPlace& place, const tag_P2EDL& edl, CString& saved) {
    std::unique_ptr<Folder> card;
    std::unique_ptr<Folder> folder;
    if (!OpenRoot(nqp2::PosixPath(nqp2::media::WithDrive(root)), card) ||
        !MakeBelow(*card, below, folder) || reader == nullptr) {
        return kCannotRead;
    }
    return StatusOf(nqp2::edl::WriteEditList(root, *folder, place, edl, *reader, saved));
}

/// Whether the card keeps its lists in its contents folder and there alone.
bool IsCardsOwn(const CString& inRoot, const CString& inContents) {
    return !nqp2::platform::PathExists(nqp2::PosixPath(inRoot)) &&
           nqp2::platform::PathExists(nqp2::PosixPath(inContents));
}

} // namespace

__int64 CNQP2Parser::LoadEdl(CString root, CArray<tag_P2EDL>& edls) {
    return Guarded(kCannotRead, [&] {
        const CString folder = EditListFolder(root);
        if (m_pMarkup == nullptr || !nqp2::platform::PathExists(nqp2::PosixPath(folder))) {
            return kCannotRead;
        }
        static_cast<void>(nqp2::edl::ScanEditLists(folder, *m_pMarkup, edls)); // kept: not told
        return kRead;
    });
}

__int64 CNQP2Parser::SaveToEdl(const CString& root, const tag_P2EDL& edl, int useName,
                               CString name) {
    return Guarded(kCannotRead, [&] {
        CString saved;
        const CString folder = EditListFolder(root);
        return Save(m_pMarkup, root, nqp2::edl::kEditListFolder,
                    {folder, {folder + nqp2::edl::kEditLists}, useName != 0 ? name : CString()},
                    edl, saved);
    });
}

__int64 CNQP2Parser::SaveCardEdl(const CString& root, const tag_P2EDL& edl, const CString& name,
                                 CString& saved) {
    return Guarded(kCannotRead, [&] {
        const CString inRoot = EditListFolder(root);
        const CString inContents = nqp2::edl::ContentsEditListFolder(root);
        const bool own = IsCardsOwn(inRoot, inContents);
        return Save(m_pMarkup, root,
                    own ? nqp2::edl::kContentsEditListFolder : nqp2::edl::kEditListFolder,
                    {own ? inContents : inRoot,
                     {inRoot + nqp2::edl::kEditLists, inContents + nqp2::edl::kEditLists},
                     name},
                    edl, saved);
    });
}

__int64 CNQP2Parser::GetNewEdlName(CString root, CString id, CString& name) {
    return Guarded(kCannotRead, [&] {
        return StatusOf(nqp2::edl::NewEditListName(EditListFolder(root), id, name));
    });
}

int CNQP2Parser::CheckEdlSerialNumber(int number, const CString& pattern) {
    return Guarded(1, [&] { return nqp2::edl::IsNumberTaken(number, pattern) ? 1 : 0; });
}

__int64 CNQP2Parser::GetClobalClipID(CString guidText, CString note, CString& identifier) {
    return Guarded(kCannotRead, [&] {
        return StatusOf(nqp2::media::IdentifierForGuidText(guidText, note, identifier));
    });
}
