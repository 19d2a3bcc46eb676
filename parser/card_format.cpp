// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "parser/NQP2Parser.h"

#include "media/card_layout.h"
#include "media/card_status.h"
#include "platform/case_blind.h"
#include "platform/file_find.h"
#include "platform/guard.h"
#include "platform/PathText.h"
#include "xml/MarkupMSXML.h"

using nqp2::media::kCannotRead;
using nqp2::media::kRead;
using nqp2::platform::Guarded;

namespace {

constexpr const wchar_t* kCodecPath = L"//P2Main/ClipContent/EssenceList/Video/Codec";
constexpr const wchar_t* kFrameRatePath = L"//P2Main/ClipContent/EssenceList/Video/FrameRate";
constexpr const wchar_t* kEditUnitPath = L"//P2Main/ClipContent/EditUnit";

// A missing element is nothing to log.
constexpr int kIgnoreMissing = 1;

/// Whether the card can be asked at all.
bool HasContents(const CString& root) {
    return nqp2::platform::PathExists(nqp2::PosixPath(nqp2::media::ContentsFolder(root)));
}

/// Loads the card's first clip file that is well-formed; false when there is none.
bool LoadFirstClip(CMarkupMSXML& reader, const CString& root) {
    nqp2::platform::IoStatus status;
    const CString pattern = nqp2::media::ContentsFolder(root) + nqp2::media::kClipFolder + L"*.XML";
    for (const auto& file : nqp2::platform::FindFiles(pattern, status)) {
        if (!file.isFolder && !file.isSpecial && file.pathIsSafe &&
            reader.LoadXml(file.path) != 0) {
            return true;
        }
    }
    return false;
}

eP2_VIDEO_STANDARD StandardOf(const CString& frameRate) {
    return nqp2::StandardFromRateIndex(nqp2::RateIndexFromText(frameRate));
}

// Rate and class are fixed, so that the codec name alone decides: kept, hosts rely on it.
eCodeType CoarseCodeType(const CString& codec) {
    return nqp2::CodeTypeFromCodec(codec, L"50i", 0, L"50");
}

} // namespace

__int64 CNQP2Parser::GetDiskFormat(CString root, eCodeType& codeType,
                                   eP2_VIDEO_STANDARD& standard) {
    return Guarded(kCannotRead, [&] {
        if (m_pMarkup == nullptr || !HasContents(root)) {
            return kCannotRead;
        }
        const nqp2::platform::MemoryWatch watch;
        const bool found = LoadFirstClip(*m_pMarkup, root);
        const CString rate = m_pMarkup->GetNodeText(kFrameRatePath, kIgnoreMissing);
        const CString codec = m_pMarkup->GetNodeText(kCodecPath, kIgnoreMissing);
        watch.Require();
        if (found) {
            standard = StandardOf(rate);
            codeType = CoarseCodeType(codec);
        }
        return kRead;
    });
}

__int64 CNQP2Parser::GetDiskFormatEx(CString root, CString& frameRate, CString& codec,
                                     CString& editUnit, int& class50) {
    return Guarded(kCannotRead, [&] {
        if (m_pMarkup == nullptr || !HasContents(root)) {
            return kCannotRead;
        }
        const nqp2::platform::MemoryWatch watch;
        if (LoadFirstClip(*m_pMarkup, root)) {
            codec = m_pMarkup->GetNodeText(kCodecPath, kIgnoreMissing);
            class50 = codec == L"AVC-I_1080/50i" &&
                              m_pMarkup->GetNodeAttribute(kCodecPath, L"Class") == L"50"
                          ? 1
                          : 0;
            frameRate = m_pMarkup->GetNodeText(kFrameRatePath, kIgnoreMissing);
            editUnit = m_pMarkup->GetNodeText(kEditUnitPath, kIgnoreMissing);
        }
        watch.Require();
        return kRead;
    });
}

__int64 CNQP2Parser::GetDiskFormat(CString root, nqp2::DiskFormat& format) {
    return Guarded(kCannotRead, [&] {
        // A value that no clip gives tells whether the outputs were written at all.
        constexpr int kUntouched = -1;
        int class50 = kUntouched;
        const __int64 result =
            GetDiskFormatEx(root, format.frameRate, format.codec, format.editUnit, class50);
        format.found = result == kRead && class50 != kUntouched;
        if (format.found) {
            format.class50 = class50;
            format.standard = StandardOf(format.frameRate);
            format.codeType = CoarseCodeType(format.codec);
        }
        return result;
    });
}
