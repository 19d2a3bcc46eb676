// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/card_format.h"

#include "media/card_layout.h"
#include "media/card_status.h"
#include "media/element_paths.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/file_find.h"
#include "platform/guard.h"

namespace nqp2::clips {

using media::ClipPath;
using media::kCannotRead;
using media::kRead;

namespace {

// A missing element is nothing to log.
constexpr int kIgnoreMissing = 1;

/// Whether the card can be asked at all.
bool HasContents(const CString& root) {
    return platform::PathExists(PosixPath(media::ContentsFolder(root)));
}

/// Loads the card's first clip file that is well-formed; false when there is none.
bool LoadFirstClip(CMarkupMSXML& reader, const CString& root) {
    platform::IoStatus status;
    const CString pattern = media::ContentsFolder(root) + media::kClipFolder + L"*.XML";
    for (const auto& file : platform::FindFiles(pattern, status)) {
        if (!file.isFolder && !file.isSpecial && file.pathIsSafe &&
            reader.LoadXml(file.path) != 0) {
            return true;
        }
    }
    return false;
}

eP2_VIDEO_STANDARD StandardOf(const CString& frameRate) {
    return StandardFromRateIndex(RateIndexFromText(frameRate));
}

// Rate and class are fixed, so that the codec name alone decides: kept, hosts rely on it.
eCodeType CoarseCodeType(const CString& codec) {
    return CodeTypeFromCodec(codec, L"50i", 0, L"50");
}

} // namespace

__int64 ReadCoarseFormat(const CString& root, CMarkupMSXML& reader, eCodeType& codeType,
                         eP2_VIDEO_STANDARD& standard) {
    if (!HasContents(root)) {
        return kCannotRead;
    }
    const platform::MemoryWatch watch;
    const bool found = LoadFirstClip(reader, root);
    const CString rate =
        reader.GetNodeText(media::FullPathText(ClipPath::FrameRate), kIgnoreMissing);
    const CString codec = reader.GetNodeText(media::FullPathText(ClipPath::Codec), kIgnoreMissing);
    watch.Require();
    if (found) {
        standard = StandardOf(rate);
        codeType = CoarseCodeType(codec);
    }
    return kRead;
}

__int64 ReadFormatTexts(const CString& root, CMarkupMSXML& reader, CString& frameRate,
                        CString& codec, CString& editUnit, int& class50) {
    if (!HasContents(root)) {
        return kCannotRead;
    }
    const platform::MemoryWatch watch;
    if (LoadFirstClip(reader, root)) {
        const CString codecPath = media::FullPathText(ClipPath::Codec);
        codec = reader.GetNodeText(codecPath, kIgnoreMissing);
        class50 =
            codec == L"AVC-I_1080/50i" && reader.GetNodeAttribute(codecPath, L"Class") == L"50" ? 1
                                                                                                : 0;
        frameRate = reader.GetNodeText(media::FullPathText(ClipPath::FrameRate), kIgnoreMissing);
        editUnit = reader.GetNodeText(media::FullPathText(ClipPath::EditUnit), kIgnoreMissing);
    }
    watch.Require();
    return kRead;
}

__int64 ReadFormat(const CString& root, CMarkupMSXML& reader, DiskFormat& format) {
    // A value that no clip gives tells whether the outputs were written at all.
    constexpr int kUntouched = -1;
    int class50 = kUntouched;
    const __int64 result =
        ReadFormatTexts(root, reader, format.frameRate, format.codec, format.editUnit, class50);
    format.found = result == kRead && class50 != kUntouched;
    if (format.found) {
        format.class50 = class50;
        format.standard = StandardOf(format.frameRate);
        format.codeType = CoarseCodeType(format.codec);
    }
    return result;
}

} // namespace nqp2::clips
