// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_layout.h"
#include "edl/edl_name.h"
#include "edl/edl_reader.h"
#include "edl/edl_writer.h"
#include "media/card_status.h"
#include "media/identifier.h"
#include "parser/NQP2Parser.h"
#include "platform/case_blind.h"
#include "platform/guard.h"
#include "platform/PathText.h"
#include "xml/MarkupMSXML.h"

using nqp2::edl::EditListFolder;
using nqp2::media::kCannotRead;
using nqp2::media::kRead;
using nqp2::platform::Guarded;

namespace {

__int64 StatusOf(bool done) {
    return done ? kRead : kCannotRead;
}

} // namespace

__int64 CNQP2Parser::LoadEdl(CString root, CArray<tag_P2EDL>& edls) {
    return Guarded(kCannotRead, [&] {
        const CString folder = EditListFolder(root);
        if (m_pMarkup == nullptr || !nqp2::platform::PathExists(nqp2::PosixPath(folder))) {
            return kCannotRead;
        }
        nqp2::edl::ScanEditLists(folder, *m_pMarkup, edls);
        return kRead;
    });
}

__int64 CNQP2Parser::SaveToEdl(const CString& root, const tag_P2EDL& edl, int useName,
                               CString name) {
    CString saved;
    return SaveToEdl(root, edl, useName, name, saved);
}

__int64 CNQP2Parser::SaveToEdl(const CString& root, const tag_P2EDL& edl, int useName, CString name,
                               CString& saved) {
    return Guarded(kCannotRead, [&] {
        const std::string folder = nqp2::PosixPath(EditListFolder(root));
        if (!nqp2::platform::EnsureFolder(folder) || m_pMarkup == nullptr) {
            return kCannotRead;
        }
        return StatusOf(nqp2::edl::WriteEditList(root, edl, useName != 0 ? name : CString(),
                                                 *m_pMarkup, saved));
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
