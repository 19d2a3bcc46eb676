// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/sections.h"
#include "nqp2/report/track.h"

#include "nqp2/clip_table.h"
#include "nqp2/scan_report_output.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace nqp2::report {
namespace {

/// Of clips on one card.
constexpr std::size_t kMostNames = 12;

/// What there is room for of a card's label, which may be a path.
std::string ShortLabel(const tool::CardScan& scan) {
    return scan.label == scan.card.Folder() ? NameOf(scan) : scan.label;
}

/// A segment, there or missing, as it comes in its take.
struct Piece {
    Block block;
    bool isKnown = false; ///< how long it is
};

class Strip {
public:
    Strip(const PageContents& page, const JoinedTake& take) : m_page(page), m_take(take) {}

    [[nodiscard]] std::vector<Block> Blocks() {
        std::int64_t place = -1;
        for (const TakeSegment& segment : m_take.segments) {
            if (segment.place != place) { // else a copy on another card
                place = segment.place;
                AddMissing(place);
                AddSegment(segment);
            }
        }
        AddMissing(place + 1);
        return Placed();
    }
    [[nodiscard]] std::int64_t Length() const { return m_length; }

private:
    void AddMissing(std::int64_t before) {
        for (const MissingSegment& missing : m_take.missing) {
            if (missing.before == before) {
                Block block;
                block.kind = "piece missing";
                block.label =
                    missing.clipName.IsEmpty() ? "not named" : BytesFromText(missing.clipName);
                block.below = missing.serialNo.IsEmpty()
                                  ? "missing"
                                  : "on card " + BytesFromText(missing.serialNo);
                block.tip = "missing: " + tool::MissingText(missing);
                m_pieces.push_back({block, false});
            }
        }
    }

    void AddSegment(const TakeSegment& segment) {
        Piece piece;
        piece.block.label = BytesFromText(segment.clipName);
        const auto card = static_cast<std::size_t>(segment.card);
        if (card < m_page.cards.size() && segment.clip >= 0) {
            const CardContents& contents = m_page.cards[card];
            const _tag_P2Clip& clip = contents.scan->clips[static_cast<int>(segment.clip)];
            piece.block.length = std::max<std::int64_t>(clip.Duration, 0);
            piece.isKnown = piece.block.length > 0;
            piece.block.below = tool::LengthText(clip);
            piece.block.link = PlaceOf(card, clip);
            if (m_page.cards.size() > 1) {
                piece.block.below += " \xC2\xB7 " + ShortLabel(*contents.scan);
            }
        }
        piece.block.tip = piece.block.label;
        m_pieces.push_back(std::move(piece));
    }

    [[nodiscard]] std::string PlaceOf(std::size_t card, const _tag_P2Clip& clip) const {
        const std::vector<ClipContents>& clips = m_page.cards[card].clips;
        const auto found = std::find_if(clips.begin(), clips.end(), [&](const ClipContents& each) {
            return each.clip == &clip;
        });
        return found == clips.end()
                   ? ""
                   : ClipPlace(card, static_cast<std::size_t>(found - clips.begin()));
    }

    /// One behind the other. What is missing is drawn as long as the others are on the average, and
    /// nothing so short that its name has no room.
    std::vector<Block> Placed() {
        std::int64_t sum = 0;
        std::int64_t count = 0;
        for (const Piece& piece : m_pieces) {
            sum += piece.block.length;
            count += piece.isKnown ? 1 : 0;
        }
        const std::int64_t mean = count > 0 ? std::max<std::int64_t>(sum / count, 1) : 1;
        const std::int64_t least = std::max<std::int64_t>(mean / 2, 1);
        std::vector<Block> blocks;
        for (Piece& piece : m_pieces) {
            piece.block.length = piece.isKnown ? std::max(piece.block.length, least) : mean;
            piece.block.start = m_length;
            m_length += piece.block.length;
            blocks.push_back(std::move(piece.block));
        }
        return blocks;
    }

    const PageContents& m_page;
    const JoinedTake& m_take;
    std::vector<Piece> m_pieces;
    std::int64_t m_length = 0;
};

/// Which segments are on which card, copies too.
void PutCards(Html& html, const PageContents& page, const JoinedTake& take) {
    std::map<std::int64_t, std::vector<std::string>> names;
    for (const TakeSegment& segment : take.segments) {
        names[segment.card].push_back(BytesFromText(segment.clipName));
    }
    if (names.size() < 2) {
        return;
    }
    html.Open("ul").With("class", "where");
    for (auto& [card, clips] : names) {
        const std::size_t more = clips.size() - std::min(clips.size(), kMostNames);
        clips.resize(clips.size() - more);
        const std::string& label = page.cards[static_cast<std::size_t>(card)].scan->label;
        html.Open("li").Foreign(fmt::format("{}{}", fmt::join(clips, ", "),
                                            more > 0 ? fmt::format(" and {} more", more) : ""));
        html.Text(" on ").Foreign(label).Close("li");
    }
    html.Close("ul");
}

void PutTake(Html& html, const PageContents& page, const JoinedTake& take) {
    Strip strip(page, take);
    const std::vector<Block> blocks = strip.Blocks();
    html.Open("article").With("class", "take").Open("h4");
    html.Foreign(blocks.empty() ? "" : blocks.front().label);
    html.Element("small", take.complete ? Own("good") : Own("bad"),
                 take.complete ? Own("complete") : Own("incomplete"));
    html.Close("h4");
    PutTrack(html, "strip", strip.Length(), blocks);
    PutCards(html, page, take);
    if (!take.missing.IsEmpty()) {
        html.Open("p").With("class", "lack").Text("Missing: ");
        for (int i = 0; i < take.missing.GetSize(); ++i) {
            html.Shown(i == 0 ? "" : ", ");
            html.Foreign(tool::MissingText(take.missing[i]));
        }
        html.Close("p");
    }
    if (blocks.size() > kMostBlocks) {
        html.ShownElement("p", "more",
                          fmt::format("and {} more segments", blocks.size() - kMostBlocks));
    }
    html.Close("article");
}

} // namespace

void PutTakes(Html& html, const PageContents& page) {
    if (page.takes.IsEmpty()) {
        return;
    }
    html.Open("section").With("class", "takes").Open("h3").Text("Takes").Close("h3");
    for (const JoinedTake& take : page.takes) {
        PutTake(html, page, take);
    }
    html.Close("section");
}

} // namespace nqp2::report
