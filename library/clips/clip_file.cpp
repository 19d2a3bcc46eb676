// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_file.h"

#include "clips/card_reader.h"
#include "clips/clip_reader.h"
#include "clips/clip_texts.h"
#include "clips/essence_lookup.h"
#include "media/card_layout.h"
#include "media/card_status.h"
#include "media/element_paths.h"
#include "media/families.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/guard.h"
#include "platform/place.h"
#include "xml/metadata_folder.h"

namespace nqp2::clips {

using media::ClipPath;
using media::kCannotRead;
using media::kRead;
using xml::MetadataFolder;

namespace {

CString TextAt(CMarkupMSXML& reader, ClipPath path) {
    constexpr int kIgnoreMissing = 1; // which is nothing to log
    return reader.GetNodeText(media::FullPathText(path), kIgnoreMissing);
}

eP2_VIDEO_STANDARD StandardOf(const CString& frameRate) {
    return StandardFromRateIndex(RateIndexFromText(frameRate));
}

// Rate and class are fixed, so that the codec name alone decides: kept, hosts rely on it.
eCodeType CoarseCodeType(const CString& codec) {
    return CodeTypeFromCodec(codec, L"50i", 0, L"50");
}

} // namespace

__int64 LoadNamedClip(const CString& root, const CString& clipName, CardReader& reader,
                      _tag_P2Clip& clip) {
    const platform::Place contents = reader.Contents(media::ContentsFolder(root));
    clip.XmlPath = contents.Below(media::kMetadataFiles.folder.Path())
                       .PathOf(media::FileNameOf(media::kMetadataFiles, clipName));
    if (!reader.LoadClip(clip.XmlPath)) {
        return kCannotRead;
    }
    TextPool pool;
    EssenceLookup essence(contents, EssenceLookup::Mode::OneClip);
    ReadNamedClip(ClipTexts(*reader.GetDocumentPtr(), pool), essence, clip);
    return kRead;
}

bool LoadClipFile(const CString& path, CardReader& reader, _tag_P2Clip& clip) {
    const platform::Place contents = reader.Contents(media::ContentsAbove(path));
    if (!reader.LoadClip(path)) {
        return false;
    }
    TextPool pool;
    clip.ClipName = media::TitleOf(path);
    clip.XmlPath = path;
    EssenceLookup essence(contents, EssenceLookup::Mode::OneClip);
    ReadScannedClip(ClipTexts(*reader.GetDocumentPtr(), pool), essence, clip);
    return true;
}

__int64 ReadCoarseFormat(const CString& root, CMarkupMSXML& reader, eCodeType& codeType,
                         eP2_VIDEO_STANDARD& standard) {
    DiskFormat format;
    const __int64 result = ReadFormat(root, reader, format);
    if (format.found) {
        standard = format.standard;
        codeType = format.codeType;
    }
    return result;
}

__int64 ReadFormatTexts(const CString& root, CMarkupMSXML& reader, CString& frameRate,
                        CString& codec, CString& editUnit, int& class50) {
    DiskFormat format;
    const __int64 result = ReadFormat(root, reader, format);
    if (format.found) {
        frameRate = format.frameRate;
        codec = format.codec;
        editUnit = format.editUnit;
        class50 = format.class50;
    }
    return result;
}

__int64 ReadFormat(const CString& root, CMarkupMSXML& reader, DiskFormat& format) {
    const platform::Place contents(media::ContentsFolder(root));
    if (!contents.Exists()) {
        return kCannotRead;
    }
    const platform::MemoryWatch watch;
    const MetadataFolder clips(contents.Below(media::kMetadataFiles.folder.Path()),
                               MetadataFolder::Subfolders::PassedOver);
    const bool found = clips.LoadFirst(reader);
    if (found) {
        format.codec = TextAt(reader, ClipPath::Codec);
        const bool class50 = media::LooksAtClass(media::ClassReader::First, format.codec.View()) &&
                             reader.GetNodeAttribute(media::FullPathText(ClipPath::Codec),
                                                     L"Class") == media::kClass50;
        format.class50 = class50 ? 1 : 0;
        format.frameRate = TextAt(reader, ClipPath::FrameRate);
        format.editUnit = TextAt(reader, ClipPath::EditUnit);
        format.standard = StandardOf(format.frameRate);
        format.codeType = CoarseCodeType(format.codec);
    }
    watch.Require();
    format.found = found;
    return kRead;
}

} // namespace nqp2::clips
