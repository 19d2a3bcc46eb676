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

namespace {

/// Runs what writes; the report tells why it failed.
template <class Operation>
__int64 Saved(nqp2::ScanReport& report, const Operation& save) {
    nqp2::platform::IoStatus status;
    return nqp2::parser::Reported(
        report.failure,
        [&] {
            status = save();
            return StatusOf(static_cast<bool>(status));
        },
        [&] { return nqp2::platform::TextFromUtf8(status.reason); });
}

} // namespace

__int64 CNQP2Parser::LoadEdl(CString root, CArray<tag_P2EDL>& edls) {
    return Guarded(kCannotRead, [&] {
        return StatusOf(m_pMarkup != nullptr && edl::LoadEditLists(root, *m_pMarkup, edls));
    });
}

__int64 CNQP2Parser::LoadCardEdls(const CString& root, CArray<tag_P2EDL>& edls,
                                  nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        const wchar_t* const lack = m_pMarkup == nullptr
                                        ? nqp2::parser::kNotReady
                                        : L"the card has no EDITLIST folder that can be read";
        return nqp2::parser::Scanned(root, lack, report.failure, [&] {
            return StatusOf(m_pMarkup != nullptr &&
                            edl::LoadCardEditLists(root, *m_pMarkup, edls, report));
        });
    });
}

__int64 CNQP2Parser::SaveToEdl(const CString& root, const tag_P2EDL& list, int useName,
                               CString name) {
    return Guarded(kCannotRead, [&] {
        nqp2::ScanReport unread;
        return SaveToEdl(root, list, useName, name, unread);
    });
}

__int64 CNQP2Parser::SaveToEdl(const CString& root, const tag_P2EDL& list, int useName,
                               const CString& name, nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        return Saved(report, [&] {
            return edl::SaveEditList(root, list, useName != 0 ? name : CString(), m_pMarkup);
        });
    });
}

__int64 CNQP2Parser::SaveCardEdl(const CString& root, const tag_P2EDL& list, const CString& name,
                                 CString& saved) {
    return Guarded(kCannotRead, [&] {
        nqp2::ScanReport unread;
        return SaveCardEdl(root, list, name, saved, unread);
    });
}

__int64 CNQP2Parser::SaveCardEdl(const CString& root, const tag_P2EDL& list, const CString& name,
                                 CString& saved, nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        return Saved(report,
                     [&] { return edl::SaveCardEditList(root, list, name, m_pMarkup, saved); });
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
