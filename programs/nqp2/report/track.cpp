// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/track.h"

#include <fmt/format.h>

#include <algorithm>

namespace nqp2::report {
namespace {

/// A place on a line in percent.
std::string Share(std::int64_t part, std::int64_t whole) {
    const double share = static_cast<double>(part) / static_cast<double>(whole);
    return fmt::format("{:.3f}%", 100 * std::clamp(share, 0.0, 1.0));
}

void PutLine(Html& html, Own cls, Own baseline, const std::string& text) {
    if (!text.empty()) {
        html.Open("text").With("class", cls).With("x", "7").With("y", baseline);
        html.Shown(text).Close("text");
    }
}

void PutBlock(Html& html, std::int64_t length, const Block& block) {
    if (!block.link.empty()) {
        html.Open("a").WithText("href", "#" + block.link);
    }
    html.Open("svg").With("class", block.kind);
    html.WithText("x", Share(block.start, length)).WithText("width", Share(block.length, length));
    html.With("height", "100%");
    if (!block.tip.empty()) {
        html.Open("title").Shown(block.tip).Close("title");
    }
    html.Open("rect").With("width", "100%").With("height", "100%").With("rx", "3").Close("rect");
    PutLine(html, "label", "17", block.label);
    PutLine(html, "below", "32", block.below);
    html.Close("svg");
    if (!block.link.empty()) {
        html.Close("a");
    }
}

} // namespace

void PutTrack(Html& html, Own kind, std::int64_t length, const std::vector<Block>& blocks,
              const std::vector<std::int64_t>& marks) {
    const std::int64_t whole = std::max<std::int64_t>(length, 1);
    html.Open("svg").With("class", kind).With("width", "100%").With("role", "img");
    for (std::size_t i = 0; i < std::min(blocks.size(), kMostBlocks); ++i) {
        PutBlock(html, whole, blocks[i]);
    }
    for (std::size_t i = 0; i < std::min(marks.size(), kMostBlocks); ++i) {
        const std::string place = Share(marks[i], whole);
        html.Open("line").With("class", "mark").WithText("x1", place).WithText("x2", place);
        html.With("y1", "0").With("y2", "100%").Close("line");
    }
    html.Close("svg");
}

} // namespace nqp2::report
