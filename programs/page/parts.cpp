// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "page/parts.h"

#include <fmt/format.h>

#include <algorithm>

namespace nqp2::page {

void OpenClips(Html& html, Own cls, std::span<const Column> columns) {
    html.Open("table").With("class", cls).Open("thead").Open("tr");
    for (const Column& column : columns) {
        html.Open("th").With("scope", "col");
        if (!column.key.Text().empty()) {
            html.With("data-key", column.key);
        }
        html.Text(column.title).Close("th");
    }
    html.Close("tr").Close("thead").Open("tbody");
}

void CloseClips(Html& html) {
    html.Close("tbody").Close("table");
}

void PutStart(Html& html, std::string_view start) {
    constexpr std::size_t kDay = 10;    // "2026-11-22"
    constexpr std::size_t kSecond = 19; // "2026-11-22T08:05:09"
    html.Open("td").With("class", "start");
    if (!start.empty()) {
        html.Open("time").WithText("datetime", start).Shown(start.substr(0, kDay));
        html.ShownElement("span", "hour", start.substr(std::min(start.size(), kDay + 1), 8));
        if (start.size() > kSecond) {
            html.ShownElement("small", "zone", start.substr(kSecond));
        }
        html.Close("time");
    }
    html.Close("td");
}

void PutFact(Html& html, Own name, std::string_view text) {
    if (!text.empty()) {
        html.Open("div").Element("dt", "fact", name);
        html.Open("dd").Foreign(text).Close("dd").Close("div");
    }
}

void PutDetail(Html& html, Own name, std::string_view text) {
    if (!text.empty()) {
        html.Open("dt").Text(name).Close("dt").Open("dd").Foreign(text).Close("dd");
    }
}

std::string Counted(std::int64_t count, std::string_view what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

} // namespace nqp2::page
