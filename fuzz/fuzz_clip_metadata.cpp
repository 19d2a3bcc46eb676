// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Bytes as metadata files, apart by zeros: what is told of one without a tree, with what was
// learned from those before, is what its tree holds.

#include "clips/metadata_events.h"
#include "fuzz/fuzz_target.h"
#include "media/metadata_paths.h"
#include "xml/dom/document_walk.h"

#include <algorithm>
#include <string>

namespace nqp2::fuzz {
namespace {

void ExpectSame(ClipMetadata& quick, ClipMetadata& sound) {
    for (const media::MetadataPath& each : media::MetadataPaths()) {
        Require(each.member(quick) == each.member(sound), "a member has the same text");
    }
    const auto isSameText = [](const MetadataText& left, const MetadataText& right) {
        return left.path == right.path && left.text == right.text;
    };
    Require(std::equal(quick.others.begin(), quick.others.end(), sound.others.begin(),
                       sound.others.end(), isSameText),
            "all other texts are the same, in the same order");
    const auto isSameMemo = [](const MemoMetadata& left, const MemoMetadata& right) {
        return left.offset == right.offset && left.person == right.person &&
               left.text == right.text;
    };
    Require(std::equal(quick.memos.begin(), quick.memos.end(), sound.memos.begin(),
                       sound.memos.end(), isSameMemo),
            "the memos are the same");
}

/// Of one card: what was learned, and the record that is filled again and again.
struct Reading {
    dom::QuickTeller teller;
    clips::MetadataEvents events;
    ClipMetadata metadata;
};

void Check(std::string_view bytes, Reading& reading) {
    static dom::Document document(dom::SelectionRule::Names::Qualified);
    ClipMetadata& quick = reading.metadata;
    reading.events.FillIn(quick);
    const bool isPlain = reading.teller.Tell(bytes, reading.events);
    reading.events.Finish();
    const bool isLoaded = document.LoadBytes(bytes);
    Require(isLoaded || !isPlain, "what is told is well-formed");
    if (!isLoaded) {
        return;
    }
    clips::MetadataEvents fresh;
    ClipMetadata sound;
    fresh.FillIn(sound);
    dom::TellTree(document, bytes.size(), fresh);
    fresh.Finish();
    if (isPlain && !sound.isCut && !quick.isCut) {
        ExpectSame(quick, sound);
    }
}

} // namespace

void TestInput(Input input) {
    Reading reading;
    ForEachDocument(input, [&](std::string_view bytes) {
        Check(bytes, reading);
        Check(bytes, reading); // all of it is known
    });
}

} // namespace nqp2::fuzz
