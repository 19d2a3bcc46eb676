// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "parser/NQP2Parser.h"

#include "media/card_layout.h"
#include "media/card_status.h"
#include "parser/clip_reader.h"
#include "parser/clip_texts.h"
#include "parser/essence_lookup.h"
#include "platform/guard.h"
#include "xml/MarkupMSXML.h"

using nqp2::media::kCannotRead;
using nqp2::media::kRead;
using nqp2::parser::ClipTexts;
using nqp2::parser::EssenceLookup;
using nqp2::parser::TextPool;
using nqp2::platform::Guarded;

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

__int64 CNQP2Parser::LoadClipInfo(CString root, CString clipName, _tag_P2Clip& clip) {
    return Guarded(kCannotRead, [&] {
        if (m_pMarkup == nullptr) {
            return kCannotRead;
        }
        const CString contents = nqp2::media::ContentsFolder(root);
        clip.XmlPath = contents + nqp2::media::kClipFolder + clipName + nqp2::media::kXmlExtension;
        if (m_pMarkup->LoadXml(clip.XmlPath) == 0) {
            return kCannotRead;
        }
        TextPool pool;
        EssenceLookup essence(contents, EssenceLookup::Mode::OneClip);
        ReadNamedClip(ClipTexts(*m_pMarkup->GetDocumentPtr(), pool), essence, clip);
        return kRead;
    });
}

int CNQP2Parser::LoadClipFromXml(const CString& path, _tag_P2Clip& clip) {
    return Guarded(0, [&] {
        if (m_pMarkup == nullptr || m_pMarkup->LoadXml(path) == 0) {
            return 0;
        }
        TextPool pool;
        clip.ClipName = TitleOf(path);
        EssenceLookup essence(ContentsAbove(path), EssenceLookup::Mode::OneClip);
        ReadScannedClip(ClipTexts(*m_pMarkup->GetDocumentPtr(), pool), essence, clip);
        return 1;
    });
}
