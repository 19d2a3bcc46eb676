// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/card_reader.h"
#include "clips/card_scan.h"
#include "clips/clip_file.h"
#include "clips/clip_reader.h"
#include "clips/free_name.h"
#include "media/card_layout.h"
#include "media/card_status.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "parser/scan_failure.h"
#include "platform/guard.h"
#include "platform/unicode.h"
#include "xml/document_queries.h"
#include "xml/scan_remarks.h"

namespace clips = nqp2::clips;

using nqp2::media::kCannotRead;
using nqp2::platform::Guarded;
using nqp2::platform::Place;

namespace {

/// Init makes no other.
clips::CardReader& ReaderIn(CMarkupMSXML& markup) {
    return static_cast<clips::CardReader&>(markup);
}

} // namespace

__int64 CNQP2Parser::LoadClipEx(CString root, CArray<_tag_P2Clip>& list, int keepDigit) noexcept {
    return Guarded(kCannotRead, [&] {
        return clips::LoadClips(root, m_pMarkup, keepDigit != 0, list, nullptr, nullptr);
    });
}

__int64 CNQP2Parser::LoadClipEx(CString root, CArray<_tag_P2Clip>& list, int keepDigit,
                                nqp2::ScanReport& report) noexcept {
    // cppcheck-suppress throwInNoexceptFunction // what is thrown anew is caught by Guarded
    return Guarded(kCannotRead, [&] {
        clips::ClipPromises* const promises =
            report.files != nullptr ? report.files->Promises() : nullptr;
        const bool hasReader = m_pMarkup == nullptr || m_pMarkup->GetDocumentPtr() != nullptr;
        const wchar_t* const lack =
            hasReader ? nqp2::parser::kNoContents : L"there was no memory for Init";
        return nqp2::parser::Scanned(root, lack, report.failure, [&] {
            return clips::LoadClips(root, m_pMarkup, keepDigit != 0, list, &report, promises);
        });
    });
}

__int64 CNQP2Parser::LoadClipInfo(CString root, CString clipName, _tag_P2Clip& clip) {
    return Guarded(kCannotRead, [&] {
        return m_pMarkup == nullptr
                   ? kCannotRead
                   : clips::LoadNamedClip(root, clipName, ReaderIn(*m_pMarkup), clip);
    });
}

__int64 CNQP2Parser::LoadClipInfo(CString root, CString clipName, _tag_P2Clip& clip,
                                  nqp2::ScanReport& report) {
    return Guarded(kCannotRead, [&] {
        const auto load = [&] { return LoadClipInfo(root, clipName, clip); };
        return nqp2::parser::Reported(report.failure, load, [&]() -> CString {
            if (m_pMarkup == nullptr) {
                return nqp2::parser::kNotReady;
            }
            const nqp2::dom::ParseError& error =
                nqp2::xml::LoadErrorOf(m_pMarkup->GetDocumentPtr());
            if (error.fault == nqp2::dom::Fault::NotFound) {
                return nqp2::parser::WhyUnreadable(root, L"the card has no such clip");
            }
            nqp2::xml::ScanRemarks(&report).AddUnloaded(clip.XmlPath, error);
            return L"the clip's metadata do not load: " +
                   nqp2::platform::TextFromUtf8(error.reason);
        });
    });
}

int CNQP2Parser::LoadClipFromXml(const CString& path, _tag_P2Clip& clip) {
    return Guarded(0, [&] {
        return m_pMarkup != nullptr && clips::LoadClipFile(path, ReaderIn(*m_pMarkup), clip) ? 1
                                                                                             : 0;
    });
}

__int64 CNQP2Parser::GetDiskFormat(CString root, eCodeType& codeType,
                                   eP2_VIDEO_STANDARD& standard) {
    return Guarded(kCannotRead, [&] {
        return m_pMarkup == nullptr ? kCannotRead
                                    : clips::ReadCoarseFormat(root, *m_pMarkup, codeType, standard);
    });
}

__int64 CNQP2Parser::GetDiskFormatEx(CString root, CString& frameRate, CString& codec,
                                     CString& editUnit, int& class50) {
    return Guarded(kCannotRead, [&] {
        return m_pMarkup == nullptr
                   ? kCannotRead
                   : clips::ReadFormatTexts(root, *m_pMarkup, frameRate, codec, editUnit, class50);
    });
}

__int64 CNQP2Parser::GetDiskFormat(CString root, nqp2::DiskFormat& format) {
    return Guarded(kCannotRead, [&] {
        format.found = false;
        format.failure.Empty();
        const wchar_t* const lack =
            m_pMarkup == nullptr ? nqp2::parser::kNotReady : nqp2::parser::kNoContents;
        return nqp2::parser::Scanned(root, lack, format.failure, [&] {
            return m_pMarkup == nullptr ? kCannotRead : clips::ReadFormat(root, *m_pMarkup, format);
        });
    });
}

int CNQP2Parser::CheckName(CString& name, CString root) noexcept {
    __int64 tried = 0;
    return CheckName(name, root, tried);
}

int CNQP2Parser::CheckName(CString& name, CString root, __int64& tried) {
    return Guarded(0, [&] {
        const CString folder = nqp2::media::ContentsFolder(root);
        const Place contents =
            m_pMarkup == nullptr ? Place(folder) : ReaderIn(*m_pMarkup).Contents(folder);
        return clips::FindFreeName(contents, name, tried) ? 1 : 0;
    });
}

void CNQP2Parser::DeleteSameMemo(CArray<_tag_P2Memo>& memos) {
    clips::RemoveRepeatedMemos(memos);
}
