// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "page/frame.h"

#include "page/assets.h"

#include <fmt/format.h>

#include <charconv>

namespace nqp2::page {
namespace {

/// What a policy calls a content by its sum.
std::string SourceOf(const Asset& asset) {
    std::string bytes;
    for (std::size_t at = 0; at < asset.sum.size(); at += 2) {
        unsigned byte = 0;
        std::from_chars(asset.sum.data() + at, asset.sum.data() + at + 2, byte, 16);
        bytes += static_cast<char>(byte);
    }
    return "'sha256-" + Base64(bytes) + "'";
}

void PutChoice(Html& html, Own value, Own text) {
    html.Open("option").With("value", value).Text(text).Close("option");
}

void PutDays(Html& html, const std::set<std::string>& starts) {
    constexpr std::size_t kDayLength = 10;
    std::set<std::string> days;
    for (const std::string& start : starts) {
        days.insert(start.substr(0, kDayLength));
    }
    days.erase("");
    html.Open("select").With("id", "day").With("aria-label", "Day");
    PutChoice(html, "", "Every day");
    for (const std::string& day : days) {
        html.Open("option").WithText("value", day).Shown(day).Close("option");
    }
    html.Close("select");
}

} // namespace

void PutHead(Html& html, std::string_view title) {
    html.Text("<!DOCTYPE html>\n").Open("html").With("lang", "en").Open("head");
    html.Open("meta").With("charset", "utf-8");
    // Quotes of an attribute are written out, which means the same.
    html.Open("meta").With("http-equiv", "Content-Security-Policy");
    html.WithText("content", fmt::format("default-src 'none'; img-src data:; style-src {}; "
                                         "script-src {}; base-uri 'none'; form-action 'none'",
                                         SourceOf(kStyle), SourceOf(kScript)));
    html.Open("meta").With("name", "viewport").With("content", "width=device-width");
    html.Open("meta").With("name", "color-scheme").With("content", "light dark");
    html.Open("title").Shown(title).Close("title");
    html.Open("style").Text(kStyle.content).Close("style").Close("head");
}

void PutTools(Html& html, const std::set<std::string>& starts, std::span<const Choice> states,
              Look look) {
    html.Open("form").With("class", "tools").With("role", "search").With("hidden");
    html.Open("input").With("type", "search").With("id", "search").With("aria-label", "Search");
    html.With("placeholder", "Search names, titles, memos \xE2\x80\xA6");
    PutDays(html, starts);
    html.Open("select").With("id", "state").With("aria-label", "State");
    PutChoice(html, "", "Every state");
    for (const Choice& state : states) {
        PutChoice(html, state.value, state.text);
    }
    html.Close("select");
    if (look == Look::RowsOrPictures) {
        html.Open("button").With("type", "button").With("id", "view").With("aria-pressed", "false");
        html.Text("Pictures").Close("button");
    }
    html.Open("output").With("id", "count").Close("output").Close("form");
}

void PutFoot(Html& html, std::string_view made) {
    html.Open("footer").Text("Made ").Shown(made);
    html.Text(" by nqp2 " NQP2_TOOL_VERSION ".").Close("footer");
    html.Open("script").Text(kScript.content).Close("script");
    html.Close("body").Close("html").Text("\n");
}

} // namespace nqp2::page
