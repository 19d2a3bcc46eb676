// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/page.h"

#include "nqp2/card.h"
#include "nqp2/report/assets.h"
#include "nqp2/report/html.h"
#include "nqp2/report/sections.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <charconv>
#include <set>
#include <string>
#include <vector>

namespace nqp2::report {
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

void PutHead(Html& html, const PageContents& page) {
    html.Text("<!DOCTYPE html>\n").Open("html").With("lang", "en").Open("head");
    html.Open("meta").With("charset", "utf-8");
    // Quotes of an attribute are written out, which means the same.
    html.Open("meta").With("http-equiv", "Content-Security-Policy");
    html.WithText("content", fmt::format("default-src 'none'; img-src data:; style-src {}; "
                                         "script-src {}; base-uri 'none'; form-action 'none'",
                                         SourceOf(kStyle), SourceOf(kScript)));
    html.Open("meta").With("name", "viewport").With("content", "width=device-width");
    html.Open("meta").With("name", "color-scheme").With("content", "light dark");
    std::string title = "Card report";
    for (const CardContents& card : page.cards) {
        title += ": " + card.scan->label;
        break;
    }
    html.Open("title").Shown(title).Close("title");
    html.Open("style").Text(kStyle.content).Close("style").Close("head");
}

void PutChoice(Html& html, Own value, Own text) {
    html.Open("option").With("value", value).Text(text).Close("option");
}

/// Shown by the script, which it is for.
void PutTools(Html& html, const PageContents& page) {
    constexpr std::size_t kDayLength = 10;
    std::set<std::string> days;
    for (const CardContents& card : page.cards) {
        for (const ClipContents& clip : card.clips) {
            if (!clip.start.empty()) {
                days.insert(clip.start.substr(0, kDayLength));
            }
        }
    }
    html.Open("form").With("class", "tools").With("role", "search").With("hidden");
    html.Open("input").With("type", "search").With("id", "search").With("aria-label", "Search");
    html.With("placeholder", "Search names, titles, memos \xE2\x80\xA6");
    html.Open("select").With("id", "day").With("aria-label", "Day");
    PutChoice(html, "", "Every day");
    for (const std::string& day : days) {
        html.Open("option").WithText("value", day).Shown(day).Close("option");
    }
    html.Close("select").Open("select").With("id", "state").With("aria-label", "State");
    PutChoice(html, "", "Every state");
    PutChoice(html, "whole", "Whole");
    PutChoice(html, "broken", "Not whole");
    PutChoice(html, "taken", "Taken in");
    PutChoice(html, "partly", "Partly taken in");
    PutChoice(html, "untaken", "Not taken in");
    html.Close("select");
    html.Open("button").With("type", "button").With("id", "view").With("aria-pressed", "false");
    html.Text("Pictures").Close("button");
    html.Open("output").With("id", "count").Close("output").Close("form");
}

void PutFoot(Html& html, const PageContents& page) {
    html.Open("footer").Text("Made ").Shown(page.made);
    html.Text(" by nqp2 " NQP2_TOOL_VERSION ".").Close("footer");
    html.Open("script")
        .Text(kScript.content)
        .Close("script")
        .Close("body")
        .Close("html")
        .Text("\n");
}

/// Beside what was read, icons that are none: each has been asked for by now.
std::vector<std::string> RemarksOf(const CardContents& card, Pictures& pictures) {
    std::vector<std::string> remarks = card.remarks;
    for (const ClipContents& clip : card.clips) {
        if (const CString problem = pictures.IconProblem(*clip.clip); !problem.IsEmpty()) {
            remarks.push_back(tool::RealPath(clip.clip->IconPath) + ": " + BytesFromText(problem));
        }
    }
    return remarks;
}

} // namespace

std::string MakePage(const PageContents& page, Pictures& pictures) {
    Html html;
    PutHead(html, page);
    html.Open("body").Open("main");
    html.Open("h1").Text(page.cards.size() == 1 ? Own("Card report") : Own("Report of cards"));
    html.Close("h1");
    PutTools(html, page);
    const std::size_t top = html.Place();
    for (std::size_t i = 0; i < page.cards.size(); ++i) {
        html.Open("section").With("class", "card");
        PutCardHead(html, page, i);
        PutClips(html, page, i, pictures);
        PutEdits(html, page.cards[i]);
        PutSkipped(html, page.cards[i].skipped, RemarksOf(page.cards[i], pictures));
        html.Close("section");
    }
    PutTakes(html, page);
    PutSkipped(html, page.skipped, {});
    html.Close("main");
    if (const std::string& remark = pictures.Remark(); !remark.empty()) {
        Html line;
        line.Open("p")
            .With("class", "remark")
            .Foreign("Pictures are missing: " + remark)
            .Close("p");
        html.Insert(top, line);
    }
    PutFoot(html, page);
    return html.Finish();
}

} // namespace nqp2::report
