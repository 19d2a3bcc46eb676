// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_hint.h"

#include "nqp2/clip_sizes.h"
#include "nqp2/near_name.h"
#include "nqp2/scan_report_output.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>

namespace nqp2::tool {
namespace {

std::string HintFor(ReadyParser& parser, const Card& card, const std::string& name) {
    _tag_P2Clip clip;
    ScanReport report;
    if (parser->LoadClipInfo(card.Root(), TextFromBytes(name), clip, report) == 0) {
        return "";
    }
    if (!report.skipped.IsEmpty()) {
        const SkippedFile& file = report.skipped[0];
        return fmt::format("{}: {}", PositionText(file), ReasonText(file));
    }
    CArray<_tag_P2Clip> clips;
    if (ClipSizes(card).Of(name).files > 0 || parser->LoadClipEx(card.Root(), clips, 0) != 0) {
        return "";
    }
    return NearClip(name, clips);
}

} // namespace

std::string NearClip(const std::string& name, const CArray<_tag_P2Clip>& clips) {
    std::vector<std::string> names;
    std::transform(clips.begin(), clips.end(), std::back_inserter(names),
                   [](const _tag_P2Clip& clip) { return BytesFromText(clip.ClipName); });
    const std::string near = NearName(name, names);
    return near.empty() ? "" : fmt::format("did you mean {}?", near);
}

std::string ClipHint(const Card& card, const std::vector<std::string>& names) {
    ReadyParser parser;
    for (const std::string& name : names) {
        if (std::string hint = HintFor(parser, card, name); !hint.empty()) {
            return hint;
        }
    }
    return "";
}

std::string WithHint(const std::string& sentence, const std::string& hint) {
    return hint.empty() ? sentence : fmt::format("{} - {}", sentence, hint);
}

} // namespace nqp2::tool
