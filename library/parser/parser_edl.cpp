// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_file.h"
#include "edl/edl_layout.h"
#include "edl/edl_scan.h"
#include "media/card_status.h"
#include "media/identifier.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "parser/scan_failure.h"
#include "platform/guard.h"

namespace edl = nqp2::edl;

using nqp2::media::kCannotRead;
using nqp2::media::StatusOf;
using nqp2::platform::Guarded;

__int64 CNQP2Parser::LoadEdl(CString root, CArray<tag_P2EDL>& edls) {
    return Guarded(kCannotRead, [&] {
        return StatusOf(m_pMarkup != nullptr && edl::LoadEditLists(root, *m_pMarkup, edls));
    });
}

__int64 CNQP2Parser::LoadCardEdls(const CString& root, CArray<tag_P2EDL>& edls,
                                  nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        const wchar_t* const lack = m_pMarkup == nullptr
                                        ? L"Init was not called"
                                        : L"the card has no EDITLIST folder that can be read";
        return nqp2::parser::Scanned(root, lack, report, [&] {
            return StatusOf(m_pMarkup != nullptr &&
                            edl::LoadCardEditLists(root, *m_pMarkup, edls, report));
        });
    });
}

__int64 CNQP2Parser::SaveToEdl(const CString& root, const tag_P2EDL& list, int useName,
                               CString name) {
    return Guarded(kCannotRead, [&] {
        return StatusOf(edl::SaveEditList(root, list, useName != 0 ? name : CString(), m_pMarkup));
    });
}

__int64 CNQP2Parser::SaveCardEdl(const CString& root, const tag_P2EDL& list, const CString& name,
                                 CString& saved) {
    return Guarded(kCannotRead, [&] {
        return StatusOf(edl::SaveCardEditList(root, list, name, m_pMarkup, saved));
    });
}

__int64 CNQP2Parser::GetNewEdlName(CString root, CString id, CString& name) {
    return Guarded(kCannotRead, [&] { return StatusOf(edl::NewEditListName(root, id, name)); });
}

int CNQP2Parser::CheckEdlSerialNumber(int number, const CString& pattern) {
    return Guarded(1, [&] { return edl::IsNumberTaken(number, pattern) ? 1 : 0; });
}

__int64 CNQP2Parser::GetClobalClipID(CString guidText, CString note, CString& identifier) {
    return Guarded(kCannotRead, [&] {
        return StatusOf(nqp2::media::IdentifierForGuidText(guidText, note, identifier));
    });
}
