// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Clip files one after another, apart by zeros: what is read of one without a tree, with what was
// learned from those before, is what its tree holds.

#include "clips/clip_texts.h"
#include "fuzz/fuzz_target.h"
#include "media/element_paths.h"
#include "xml/dom/document.h"
#include "xml/dom/field_reader.h"

#include <string_view>

namespace nqp2::fuzz {
namespace {

using clips::ClipList;
using clips::ClipTexts;
using clips::MemoName;

void CheckMemos(const ClipTexts& quick, const ClipTexts& sound) {
    for (std::size_t i = 0; i < quick.Count(ClipList::Memo); ++i) {
        for (std::size_t name = 0; name < media::kMemoNames.size(); ++name) {
            const auto memoName = static_cast<MemoName>(name);
            Require(quick.MemoText(i, memoName) == sound.MemoText(i, memoName),
                    "a memo has the same texts");
        }
    }
}

void ExpectSame(const ClipTexts& quick, const ClipTexts& sound) {
    Require(quick.HasContent() == sound.HasContent(), "both find the base or none");
    for (const auto& [path, below] : media::kClipPaths) {
        Require(quick.Has(path) == sound.Has(path) && quick.Text(path) == sound.Text(path) &&
                    quick.Attribute(path) == sound.Attribute(path) &&
                    quick.Int32(path) == sound.Int32(path) &&
                    quick.Int64(path) == sound.Int64(path) && quick.Guid(path) == sound.Guid(path),
                "a value is the same");
    }
    for (std::size_t i = 0; i < media::kClipListCount; ++i) {
        const auto list = static_cast<ClipList>(i);
        Require(quick.Count(list) == sound.Count(list), "a list is as long");
    }
    CheckMemos(quick, sound);
}

void Check(std::string_view bytes, dom::FieldReader& reader) {
    static clips::TextPool pool;
    static dom::Document document(dom::SelectionRule::Names::Qualified);
    if (reader.Read(bytes)) {
        Require(document.LoadBytes(bytes), "what is read is well-formed");
        ExpectSame(ClipTexts(reader.Values(), pool), ClipTexts(document, pool));
    }
}

} // namespace

void TestInput(Input input) {
    dom::FieldReader reader(clips::ClipFields());
    ForEachDocument(input, [&](std::string_view bytes) {
        Check(bytes, reader);
        Check(bytes, reader); // all of it is known
    });
}

} // namespace nqp2::fuzz
