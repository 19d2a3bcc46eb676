// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/media_order.h"

#include "media/card_layout.h"
#include "platform/case_fold.h"

#include <array>
#include <string>
#include <vector>

namespace nqp2::offload {
namespace {

using mhl::NodeId;

/// The ends of such names, as cards are laid out; "*" is any beginning.
constexpr std::array<const media::CardName*, 9> kMediaEnds = {
    &media::kVideoFiles.extension,
    &media::kOneFileEssence.extension,
    &media::kAudioFiles.extension,
    &media::kMp4Proxy,
    &media::kMovProxy,
    &media::kAvchdExtensions.stream,
    &media::kDiscExtensions.stream,
    &media::kSonyCamera.pattern,
    &media::kPanasonicCameras[0].pattern,
};

} // namespace

MediaRank MediaRankOf(std::string_view name) {
    const std::string folded = platform::FoldNameCase(name);
    for (const media::CardName* each : kMediaEnds) {
        std::string_view end = each->Bytes();
        end.remove_prefix(end.starts_with('*') ? 1 : 0);
        if (folded.ends_with(platform::FoldNameCase(end))) {
            return MediaRank::Media;
        }
    }
    return MediaRank::Rest;
}

void ForEachInOrder(const mhl::Tree& tree, const std::function<void(NodeId)>& visit) {
    std::vector<NodeId> folders = {mhl::kScope};
    while (!folders.empty()) {
        const NodeId folder = folders.back();
        folders.pop_back();
        if (folder != mhl::kScope) {
            visit(folder);
        }
        for (NodeId child = tree.FirstChild(folder); child != mhl::kNoNode;
             child = tree.NextSibling(child)) {
            if (tree.IsFolder(child)) {
                folders.push_back(child);
            } else {
                visit(child);
            }
        }
    }
}

} // namespace nqp2::offload
