// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/takes.h"
#include "media/identifier.h"
#include "NQP2ParserU/JoinedTakes.h"
#include "platform/unicode.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace nqp2::clips {
namespace {

constexpr std::string_view kShot = "ABCDE"; ///< its segments, whose letters are identifiers too

ClipRelation::Neighbour At(std::string_view letter) {
    const CString name = platform::TextFromUtf8(letter);
    return {name, L"clip-" + name, L"card-" + name};
}

/// A card that holds these segments of the shot: "AC"; one in lower case has no identifier.
class Card {
public:
    explicit Card(std::string_view segments) {
        std::vector<ClipRelation> relations;
        for (const char letter : segments) {
            relations.push_back(RelationOf(letter));
            m_clips.Add(ClipOf(relations.back()));
        }
        m_report.takes = FindTakes(relations);
    }

    [[nodiscard]] ScannedCard Scanned() const { return {&m_clips, &m_report}; }

private:
    static ClipRelation RelationOf(char letter) {
        const bool isNamed = kShot.find(letter) != std::string_view::npos;
        const std::size_t place = kShot.find(isNamed ? letter : static_cast<char>(letter - 32));
        ClipRelation clip;
        clip.clipName = L"clip-" + CString(std::wstring(1, static_cast<wchar_t>(letter)));
        clip.globalClipID = isNamed ? At(kShot.substr(place, 1)).globalClipID : CString();
        clip.offsetInShot = static_cast<std::int64_t>(100 * place);
        clip.top = At(kShot.substr(0, 1));
        clip.previous = place == 0 ? ClipRelation::Neighbour() : At(kShot.substr(place - 1, 1));
        clip.next =
            place + 1 == kShot.size() ? ClipRelation::Neighbour() : At(kShot.substr(place + 1, 1));
        return clip;
    }
    static _tag_P2Clip ClipOf(const ClipRelation& relation) {
        _tag_P2Clip clip;
        clip.ClipName = relation.clipName;
        clip.GlobalClipID = relation.globalClipID;
        clip.OffsetInShot = relation.offsetInShot;
        clip.NextClipGuid = media::GuidFromIdentifier(relation.next.globalClipID);
        clip.PreviousClipGuid = media::GuidFromIdentifier(relation.previous.globalClipID);
        return clip;
    }

    CArray<_tag_P2Clip> m_clips;
    ScanReport m_report;
};

/// "A1 B2" for segments with their cards, "=" before copies; behind "!" what is missing, with its
/// place.
std::string Told(const JoinedTake& take) {
    std::string text;
    for (std::int64_t i = 0; i < take.segments.GetSize(); ++i) {
        const TakeSegment& segment = take.segments[i];
        const bool isCopy = i > 0 && take.segments[i - 1].place == segment.place;
        text += (isCopy ? "=" : " ") + platform::Utf8FromText(segment.clipName.Mid(5).View()) +
                std::to_string(segment.card + 1);
    }
    for (const MissingSegment& each : take.missing) {
        text += " !" + platform::Utf8FromText(each.serialNo.Mid(5).View()) +
                std::to_string(each.before);
    }
    return text + (take.complete ? "." : "");
}

TEST(JoinedTakes, SegmentsOfAllCardsAreOneTakeWithWhatNoneHolds) {
    const std::tuple<std::vector<std::string>, std::string> rows[] = {
        {{"ABCDE"}, " A1 B1 C1 D1 E1."},
        {{"AB", "CDE"}, " A1 B1 C2 D2 E2."},
        {{"DE", "", "BA", "C"}, " A3 B3 C4 D1 E1."},
        {{"A", "C"}, " A1 C2 !B1 !D2"},
        {{"AD", "B"}, " A1 B2 D1 !C2 !E3"},
        {{"AE", "C"}, " A1 C2 E1 !B1 !D2"},
        {{"C", "D"}, " C1 D2 !A0 !B0 !E2"},
        {{"AB", "ABCDE"}, " A1=A2 B1=B2 C2 D2 E2."},
        {{"AB", "A"}, " A1=A2 B1 !C2"},
        {{"A", "b"}, " A1 !B1| b2 !A0 !C1"}, // without identifiers there is no telling
    };
    for (const auto& [segments, told] : rows) {
        const std::vector<Card> cards(segments.begin(), segments.end());
        CArray<ScannedCard> scanned;
        for (const Card& card : cards) {
            scanned.Add(card.Scanned());
        }
        CArray<JoinedTake> takes;
        ASSERT_TRUE(JoinTakes(scanned, takes));
        std::string text;
        for (const JoinedTake& take : takes) {
            text += (text.empty() ? "" : "|") + Told(take);
            for (const TakeSegment& each : take.segments) {
                EXPECT_EQ((*scanned[each.card].clips)[each.clip].ClipName, each.clipName);
            }
        }
        EXPECT_EQ(text, told) << segments.front();
    }
}

} // namespace
} // namespace nqp2::clips
