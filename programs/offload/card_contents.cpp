// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/card_contents.h"

#include "cards/card_marks.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"
#include "platform/file_system.h"

#include <fmt/core.h>

#include <new>
#include <utility>

namespace nqp2::offload {
namespace {

constexpr struct {
    CardKind kind;
    const char* text;
} kKinds[] = {{CardKind::P2, "P2 card"},
              {CardKind::Avchd, "AVCHD card"},
              {CardKind::Camera, "folder of camera files"}};

void ReadCard(CardContents& contents) {
    const CString& root = contents.card.root;
    ReadyParser parser;
    if (contents.card.kind == CardKind::P2) {
        parser->LoadClipEx(root, contents.clips, 0, contents.report);
        parser->LoadCardEdls(root, contents.lists, contents.listReport);
    } else {
        parser->LoadAVCHDClip(root, contents.clips, contents.report);
    }
}

/// The card that the folder belongs to, when that lies above it.
std::string CardAbove(const std::string& path) {
    CardSearch search;
    if (!FindCard(InterfaceRoot(path), search)) {
        throw std::bad_alloc();
    }
    for (const FoundCard& card : search.cards) {
        const std::string root = PosixPath(card.root);
        if (card.entered && root.size() < path.size()) {
            return root;
        }
    }
    // The top folder of a memory card holds more than the one in which its clips are.
    const bool isPrivate = !search.cards.IsEmpty() && cards::IsPrivate(path);
    return isPrivate ? platform::FolderPart(path) : "";
}

} // namespace

GivenFolder ReadGivenFolder(const std::string& path) {
    GivenFolder given;
    CardSearch search;
    if (!FindCards(InterfaceRoot(path), search)) {
        throw std::bad_alloc();
    }
    given.skipped = search.skipped;
    for (const FoundCard& card : search.cards) {
        CardContents& contents = given.cards.emplace_back();
        contents.card = card;
        ReadCard(contents);
    }
    given.partOf = CardAbove(path);
    return given;
}

std::string KindText(const GivenFolder& given) {
    if (given.cards.size() > 1) {
        return fmt::format("{} cards", given.cards.size());
    }
    for (const auto& [kind, text] : kKinds) {
        if (!given.cards.empty() && given.cards.front().card.kind == kind) {
            return text;
        }
    }
    return "";
}

} // namespace nqp2::offload
