// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/completion/card_names.h"

#include "nqp2/card.h"
#include "nqp2/clip_cells.h"
#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ReadyParser.h"
#include "NQP2ParserU/TextBytes.h"

#include <filesystem>

namespace nqp2::tool {
namespace {

template <class Record>
struct CardListing {
    CArray<Record> records;
    ScanReport report;
};

/// What is on the card that a folder leads to: nothing where it leads to none or reading fails.
template <class Record, class Read>
CardListing<Record> CardListingOf(const std::string& folder, const Read& read) {
    CardListing<Record> listing;
    CardSearch search;
    if (!folder.empty() && FindCard(Card(folder).Root(), search) && search.cards.GetSize() == 1) {
        ReadyParser parser;
        static_cast<void>(read(parser, search.cards[0], listing));
    }
    return listing;
}

std::string StemOf(const CString& path) {
    return std::filesystem::path(RealPath(path)).stem().string();
}

} // namespace

std::vector<manual::Meaning> ClipNamesOf(const std::string& card) {
    const auto listing = CardListingOf<_tag_P2Clip>(
        card, [](ReadyParser& parser, const FoundCard& found, auto& into) {
            return found.kind == CardKind::P2
                       ? parser->LoadClipEx(found.root, into.records, 0, into.report)
                       : parser->LoadAVCHDClip(found.root, into.records, into.report);
        });
    std::vector<manual::Meaning> names;
    for (const _tag_P2Clip& clip : listing.records) {
        names.push_back({BytesFromText(clip.ClipName), OwnTitle(clip)});
    }
    for (const SkippedFile& file : listing.report.skipped) {
        // What a desktop leaves beside a file is no clip.
        if (const std::string name = StemOf(file.path); !name.starts_with("._")) {
            names.push_back({name, "cannot be read"});
        }
    }
    return names;
}

std::vector<manual::Meaning> ListNamesOf(const std::string& card) {
    const auto listing =
        CardListingOf<tag_P2EDL>(card, [](ReadyParser& parser, const FoundCard& found, auto& into) {
            return found.kind == CardKind::P2
                       ? parser->LoadCardEdls(found.root, into.records, into.report)
                       : parser->LoadCardPlaylists(found.root, into.records, into.report);
        });
    std::vector<manual::Meaning> names;
    for (const tag_P2EDL& list : listing.records) {
        names.push_back({BytesFromText(list.Name), ""});
    }
    return names;
}

} // namespace nqp2::tool
