// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_scan.h"

#include "nqp2/worker_session.h"
#include "NQP2ParserU/CardSerial.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace nqp2::tool {
namespace {

/// Whether the scan met camera files, of which only the worker knows what they hold.
bool NeedsWorker(const ScanReport& report) {
    return std::any_of(report.skipped.begin(), report.skipped.end(), [](const SkippedFile& file) {
        return file.reason == SkipReason::NotDescribed;
    });
}

/// Scans one card after the other. The worker starts with the first that needs it.
class Scanner {
public:
    Scanner(Console& console, const ScanOptions& options)
        : m_console(console), m_options(options) {}

    /// Nothing when the card cannot be read.
    std::optional<CardScan> Scan(const Card& card) {
        if (!IsMediaCard(card)) {
            CardScan scan = NewScan(card, CardKind::P2);
            ReadyParser parser;
            if (parser->LoadClipEx(card.Root(), scan.clips, m_options.keepDigit ? 1 : 0,
                                   scan.report) == 0) {
                for (const CString& folder : scan.report.exactFolders) {
                    TakeAsWritten(folder);
                }
                return scan;
            }
        }
        std::optional<CardScan> media = ScanMedia(card, card.Root());
        if (media && NeedsWorker(media->report) && HasWorker()) {
            // By its whole path, which is all that a worker knows.
            media = ScanMedia(card, WorkerPath(card.Argument()));
        }
        return media;
    }

private:
    [[nodiscard]] CardScan NewScan(const Card& card, CardKind kind) const {
        CardScan scan = {card, kind};
        if (m_options.withFiles) {
            scan.files = std::make_unique<ClipFileReader>(card.Root());
            scan.report.files = scan.files.get();
        }
        return scan;
    }
    std::optional<CardScan> ScanMedia(const Card& card, const CString& root) const {
        const CardKind kind = card.Found() ? card.Found()->kind : CardKind::Avchd;
        CardScan scan = NewScan(card, kind);
        ReadyParser parser;
        const bool found = parser->LoadAVCHDClip(root, scan.clips, scan.report) == 0;
        return found ? std::optional(std::move(scan)) : std::nullopt;
    }

    /// Without one the camera files stay among what was skipped.
    bool HasWorker() {
        if (!m_isAsked) {
            m_isAsked = true;
            try {
                m_worker.emplace(m_options.worker);
            } catch (const Failure& failure) {
                m_console.Message(fmt::format("nqp2: {}", failure.what()));
            }
        }
        return m_worker.has_value();
    }

    Console& m_console;
    const ScanOptions& m_options;
    bool m_isAsked = false;
    std::optional<Worker> m_worker;
};

bool IsSame(const Card& left, const Card& right) {
    return left.Found() && right.Found() && left.Found()->device == right.Found()->device &&
           left.Found()->inode == right.Found()->inode;
}

void AddCard(std::vector<Card>& cards, Card card) {
    const bool isKnown = std::any_of(cards.begin(), cards.end(),
                                     [&](const Card& known) { return IsSame(known, card); });
    if (!isKnown) {
        cards.push_back(std::move(card));
    }
}

/// Every card in and below a folder. Throws Failure when there is none.
void AddCardsBelow(const std::string& argument, std::vector<Card>& cards,
                   CArray<SkippedFile>& skipped) {
    const Card top(argument);
    top.RequireFolder();
    CardSearch search;
    if (!FindCards(top.Root(), search)) {
        throw Failure(top.Folder(), "cannot be searched", "out of memory");
    }
    if (search.cards.IsEmpty()) {
        throw Failure(top.Folder(), "no cards in it or below",
                      search.skipped.IsEmpty() ? "" : BytesFromText(search.skipped[0].text));
    }
    for (const FoundCard& found : search.cards) {
        Card card(found);
        if (card.Folder() != top.Folder()) {
            card.TakeTop();
        }
        AddCard(cards, std::move(card));
    }
    skipped.Append(search.skipped);
}

/// The volume's, which is the card's own; else what its clips tell, else its edit lists.
CString SerialOf(const CardScan& scan) {
    if (scan.card.Found() && !scan.card.Found()->serialNo.IsEmpty()) {
        return scan.card.Found()->serialNo;
    }
    CString serial = CardSerial(scan.clips, {});
    if (serial.IsEmpty() && scan.kind == CardKind::P2) {
        CArray<tag_P2EDL> lists;
        ReadyParser()->LoadEdl(scan.card.Root(), lists); // a card without any has no number
        serial = CardSerial(scan.clips, lists);
    }
    return serial;
}

void Label(std::vector<CardScan>& cards) {
    for (CardScan& scan : cards) {
        scan.serialNo = SerialOf(scan);
    }
    for (CardScan& scan : cards) {
        const auto same = std::count_if(cards.begin(), cards.end(), [&](const CardScan& other) {
            return other.serialNo == scan.serialNo;
        });
        scan.label =
            scan.serialNo.IsEmpty() || same > 1 ? scan.card.Folder() : BytesFromText(scan.serialNo);
    }
}

} // namespace

ClipTold CardScan::ToldOf(const _tag_P2Clip& clip) const {
    const std::less<> before;
    const _tag_P2Clip* const first = clips.GetData();
    const bool isOwn = !before(&clip, first) && before(&clip, first + report.told.GetSize());
    return isOwn ? report.told[&clip - first] : ClipTold();
}

const CardScan& CardScans::CardOf(const _tag_P2Clip& clip) const {
    const std::less<> before;
    return *std::find_if(cards.begin(), cards.end(), [&](const CardScan& scan) {
        const _tag_P2Clip* const first = scan.clips.GetData();
        return !before(&clip, first) && before(&clip, first + scan.clips.GetSize());
    });
}

CArray<JoinedTake> CardScans::Takes() const {
    CArray<ScannedCard> scanned;
    for (const CardScan& scan : cards) {
        scanned.Add({&scan.clips, &scan.report});
    }
    CArray<JoinedTake> takes;
    if (!JoinTakes(scanned, takes)) {
        throw Failure("the takes", "cannot be joined", "out of memory");
    }
    return takes;
}

CardScans ScanCards(Console& console, const ScanOptions& options) {
    CardScans scans;
    std::vector<Card> cards;
    for (const std::string& argument : options.cards) {
        if (options.recursive) {
            AddCardsBelow(argument, cards, scans.skipped);
        } else {
            AddCard(cards, EnterCard(console, argument, options.entry));
        }
    }
    Scanner scanner(console, options);
    for (const Card& card : cards) {
        if (std::optional<CardScan> scan = scanner.Scan(card)) {
            scans.cards.push_back(std::move(*scan));
        } else if (!options.recursive) {
            card.ThrowUnreadable();
        } else {
            scans.skipped.Add({card.Root(), SkipReason::Unreadable, L"the card does not open"});
        }
    }
    Label(scans.cards);
    return scans;
}

bool IsMediaCard(const Card& card) {
    return card.Found() && card.Found()->kind != CardKind::P2;
}

CardScan ScanMediaCard(Console& console, const Card& card) {
    ScanOptions options;
    options.cards = {card.Argument()};
    return std::move(ScanCards(console, options).cards.front());
}

} // namespace nqp2::tool
