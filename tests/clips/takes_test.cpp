// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/takes.h"
#include "platform/unicode.h"

#include <gtest/gtest.h>

#include <vector>

namespace nqp2::clips {
namespace {

/// A segment by its letter: identifier "id-A", clip "A", on the card "card-A".
ClipRelation::Neighbour At(const char* letter) {
    const CString name = platform::TextFromUtf8(letter);
    return name.IsEmpty() ? ClipRelation::Neighbour()
                          : ClipRelation::Neighbour{L"id-" + name, name, L"card-" + name};
}

ClipRelation Segment(const char* letter, int offset, const char* top, const char* previous,
                     const char* next) {
    ClipRelation clip;
    clip.clipName = At(letter).clipName;
    clip.globalClipID = At(letter).globalClipID;
    clip.offsetInShot = offset;
    clip.top = At(top);
    clip.previous = At(previous);
    clip.next = At(next);
    return clip;
}

const ClipRelation kA = Segment("A", 0, "A", "", "B");
const ClipRelation kB = Segment("B", 100, "A", "A", "C");
const ClipRelation kC = Segment("C", 200, "A", "B", "");
const ClipRelation kAlone = Segment("X", 0, "", "", "");

/// "A B C" and, behind "!", the missing segments.
std::string Told(const Take& take) {
    std::string text;
    for (const CString& name : take.segments) {
        text += platform::Utf8FromText(name.View()) + " ";
    }
    text += take.complete ? "" : "!";
    for (const MissingSegment& each : take.missing) {
        text += " " + platform::Utf8FromText((each.clipName + L"@" + each.serialNo).View());
    }
    return text;
}

TEST(Takes, AreToldWithWhatIsMissing) {
    ClipRelation unnamedNext = kA;
    unnamedNext.next.clipName.Empty();
    unnamedNext.next.serialNo.Empty();
    ClipRelation lowerCase = kB;
    lowerCase.globalClipID.MakeLower();
    lowerCase.top.globalClipID.MakeUpper();
    ClipRelation withoutTop = kA;
    withoutTop.top = {};
    const std::tuple<const char*, std::vector<ClipRelation>, std::string> cases[] = {
        {"in shot order, whatever the scan's", {kC, kAlone, kA, kB}, "A B C "},
        {"the middle is missing, told by both", {kA, kC}, "A C ! B@card-B"},
        {"only the middle is there", {kB}, "B ! A@card-A C@card-C"},
        {"a neighbour without name", {unnamedNext}, "A ! @"},
        {"letter case of identifiers", {kA, lowerCase, kC}, "A B C "},
        {"a first segment that names no top", {withoutTop, kB, kC}, "A B C "},
    };
    for (const auto& [why, clips, told] : cases) {
        const CArray<Take> takes = FindTakes(clips);
        ASSERT_EQ(takes.GetSize(), 1) << why;
        EXPECT_EQ(Told(takes[0]), told) << why;
        EXPECT_EQ(takes[0].topGlobalClipID.CompareNoCase(L"id-A"), 0) << why;
    }
    EXPECT_TRUE(FindTakes({kAlone, kAlone}).IsEmpty());
    const CArray<Take> takes = FindTakes({kC, Segment("D", 0, "D", "", "E"), kA, kB});
    ASSERT_EQ(takes.GetSize(), 2) << "in the order of their first clips";
    EXPECT_EQ(Told(takes[1]), "D ! E@card-E");
}

} // namespace
} // namespace nqp2::clips
