// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Bytes as a clip file through both clip readers.

#include "clips/clip_reader.h"
#include "clips/clip_texts.h"
#include "clips/essence_lookup.h"
#include "fuzz/fuzz_target.h"
#include "media/card_layout.h"
#include "media/element_paths.h"
#include "xml/document_queries.h"
#include "xml/dom/document.h"

namespace nqp2::fuzz {
namespace {

using clips::ClipTexts;
using clips::EssenceLookup;

constexpr const wchar_t* kContents = L"/nqp2-fuzz/none:\\CONTENTS\\";

/// The single pass must give what asking path by path gives.
void CheckTexts(const dom::Document& document, const ClipTexts& texts) {
    for (const auto& entry : media::kClipPaths) {
        const auto node = document.SelectSingle(media::FullPath(entry.path));
        Require(texts.Has(entry.path) == (node != nullptr) &&
                    texts.Text(entry.path) == (node != nullptr ? xml::TextOf(*node) : CString()),
                "a clip value is the text of the first node that its path selects");
    }
    for (std::size_t i = 0; i < media::kClipListCount; ++i) {
        const std::string path =
            std::string(media::kClipContentPath).append("/").append(media::kClipLists[i]);
        Require(texts.Count(static_cast<clips::ClipList>(i)) ==
                    document.SelectNodes(path)->Length(),
                "every element of a list is found");
    }
}

void CheckPath(const CString& path, const CString& clipName) {
    if (path.IsEmpty()) {
        return;
    }
    const CString contents = kContents;
    Require(path.Left(contents.GetLength()) == contents, "paths stay in the contents folder");
    Require(media::IsPlainName(clipName), "a name that is no file name makes no path");
    const CString rest = path.Mid(contents.GetLength());
    Require(rest.Find(L'\\') == rest.ReverseFind(L'\\') && rest.Find(L'/') < 0 &&
                rest.Find(L"..\\") < 0,
            "a path is one folder and one name");
}

void CheckClip(const _tag_P2Clip& clip) {
    CheckPath(clip.VideoPath, clip.ClipName);
    for (const CString& path : clip.AudioPath) {
        CheckPath(path, clip.ClipName);
    }
}

} // namespace

void TestInput(Input input) {
    // The same objects for all inputs, as in a scan: no file may spoil the next.
    static clips::TextPool pool;
    static dom::Document document(dom::SelectionRule::Names::Qualified);
    if (!document.LoadBytes(AsText(input))) {
        Require(document.LastError().fault != dom::Fault::None, "a failed load says why");
        return;
    }
    const ClipTexts texts(document, pool);
    CheckTexts(document, texts);
    const platform::Place contents(kContents);
    const EssenceLookup byName(contents, EssenceLookup::Mode::OneClip);
    _tag_P2Clip named;
    ReadNamedClip(texts, byName, named);
    CheckClip(named);
    const EssenceLookup inScan(contents, EssenceLookup::Mode::Scan);
    _tag_P2Clip scanned;
    ReadScannedClip(texts, inScan, scanned);
    CheckClip(scanned);
}

} // namespace nqp2::fuzz
