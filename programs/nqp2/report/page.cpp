// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/page.h"

#include "nqp2/card.h"
#include "nqp2/report/sections.h"
#include "NQP2ParserU/TextBytes.h"
#include "page/frame.h"

#include <set>
#include <string>
#include <vector>

namespace nqp2::report {
namespace {

constexpr page::Choice kStates[] = {
    {"whole", "Whole"},          {"broken", "Not whole"},
    {"taken", "Taken in"},       {"partly", "Partly taken in"},
    {"untaken", "Not taken in"},
};

std::string TitleOf(const PageContents& page) {
    return page.cards.empty() ? "Card report" : "Card report: " + page.cards.front().scan->label;
}

std::set<std::string> StartsOf(const PageContents& page) {
    std::set<std::string> starts;
    for (const CardContents& card : page.cards) {
        for (const ClipContents& clip : card.clips) {
            starts.insert(clip.start);
        }
    }
    return starts;
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

std::string MakePage(const PageContents& contents, Pictures& pictures) {
    Html html;
    page::PutHead(html, TitleOf(contents));
    html.Open("body").Open("main");
    html.Open("h1").Text(contents.cards.size() == 1 ? Own("Card report") : Own("Report of cards"));
    html.Close("h1");
    page::PutTools(html, StartsOf(contents), kStates, page::Look::RowsOrPictures);
    const std::size_t top = html.Place();
    for (std::size_t i = 0; i < contents.cards.size(); ++i) {
        html.Open("section").With("class", "card");
        PutCardHead(html, contents, i);
        PutClips(html, contents, i, pictures);
        PutEdits(html, contents.cards[i]);
        PutSkipped(html, contents.cards[i].skipped, RemarksOf(contents.cards[i], pictures));
        html.Close("section");
    }
    PutTakes(html, contents);
    PutSkipped(html, contents.skipped, {});
    html.Close("main");
    if (const std::string& remark = pictures.Remark(); !remark.empty()) {
        Html line;
        line.Open("p")
            .With("class", "remark")
            .Foreign("Pictures are missing: " + remark)
            .Close("p");
        html.Insert(top, line);
    }
    page::PutFoot(html, contents.made);
    return html.Finish();
}

} // namespace nqp2::report
