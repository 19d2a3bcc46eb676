// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/load_clip.h"

#include "clips/clip_reader.h"
#include "clips/clip_texts.h"
#include "clips/essence_lookup.h"
#include "media/card_layout.h"
#include "media/card_status.h"
#include "NQP2ParserU/MarkupMSXML.h"

namespace nqp2::clips {
namespace {

/// The contents folder above a clip file: the path without its last two components.
CString ContentsAbove(const CString& xmlPath) {
    const CString folder = xmlPath.Left(xmlPath.ReverseFind(L'\\'));
    return folder.Left(folder.ReverseFind(L'\\') + 1);
}

/// The file's name without its extension.
CString TitleOf(const CString& path) {
    const CString name = path.Mid(path.ReverseFind(L'\\') + 1);
    const int dot = name.ReverseFind(L'.');
    return dot < 0 ? name : name.Left(dot);
}

} // namespace

__int64 LoadNamedClip(const CString& root, const CString& clipName, CMarkupMSXML& reader,
                      _tag_P2Clip& clip) {
    const CString contents = media::ContentsFolder(root);
    clip.XmlPath = contents + media::kClipFolder + clipName + media::kXmlExtension;
    if (reader.LoadXml(clip.XmlPath) == 0) {
        return media::kCannotRead;
    }
    TextPool pool;
    EssenceLookup essence(contents, EssenceLookup::Mode::OneClip);
    ReadNamedClip(ClipTexts(*reader.GetDocumentPtr(), pool), essence, clip);
    return media::kRead;
}

bool LoadClipFile(const CString& path, CMarkupMSXML& reader, _tag_P2Clip& clip) {
    if (reader.LoadXml(path) == 0) {
        return false;
    }
    TextPool pool;
    clip.ClipName = TitleOf(path);
    EssenceLookup essence(ContentsAbove(path), EssenceLookup::Mode::OneClip);
    ReadScannedClip(ClipTexts(*reader.GetDocumentPtr(), pool), essence, clip);
    return true;
}

} // namespace nqp2::clips
