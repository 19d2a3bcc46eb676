// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/completion/card_names.h"

#include "nqp2/card.h"
#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ReadyParser.h"
#include "NQP2ParserU/TextBytes.h"

#include <filesystem>
#include <optional>

namespace nqp2::tool {
namespace {

std::optional<FoundCard> CardAt(const std::string& folder) {
    CardSearch search;
    if (folder.empty() || !FindCard(Card(folder).Root(), search) || search.cards.GetSize() != 1) {
        return std::nullopt;
    }
    return search.cards[0];
}

std::string StemOf(const CString& path) {
    return std::filesystem::path(RealPath(path)).stem().string();
}

} // namespace

std::vector<manual::Meaning> ClipNamesOf(const std::string& card) {
    std::vector<manual::Meaning> names;
    const std::optional<FoundCard> found = CardAt(card);
    if (!found) {
        return names;
    }
    ReadyParser parser;
    CArray<_tag_P2Clip> clips;
    ScanReport report;
    // What fails offers nothing.
    static_cast<void>(found->kind == CardKind::P2
                          ? parser->LoadClipEx(found->root, clips, 0, report)
                          : parser->LoadAVCHDClip(found->root, clips, report));
    for (const _tag_P2Clip& clip : clips) {
        names.push_back({BytesFromText(clip.ClipName), BytesFromText(clip.UserClipName)});
    }
    for (const SkippedFile& file : report.skipped) {
        // What a desktop leaves beside a file is no clip.
        if (const std::string name = StemOf(file.path); !name.starts_with("._")) {
            names.push_back({name, "cannot be read"});
        }
    }
    return names;
}

std::vector<manual::Meaning> ListNamesOf(const std::string& card) {
    std::vector<manual::Meaning> names;
    const std::optional<FoundCard> found = CardAt(card);
    if (!found) {
        return names;
    }
    ReadyParser parser;
    CArray<tag_P2EDL> lists;
    ScanReport report;
    static_cast<void>(found->kind == CardKind::P2
                          ? parser->LoadCardEdls(found->root, lists, report)
                          : parser->LoadCardPlaylists(found->root, lists, report));
    for (const tag_P2EDL& list : lists) {
        names.push_back({BytesFromText(list.Name), ""});
    }
    return names;
}

} // namespace nqp2::tool
