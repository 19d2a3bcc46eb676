// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/sections.h"

#include "nqp2/scan_report_output.h"

#include <algorithm>
#include <fmt/format.h>

namespace nqp2::report {

void PutSkipped(Html& html, const CArray<SkippedFile>& skipped,
                const std::vector<std::string>& remarks) {
    constexpr std::int64_t kMost = 1000;
    if (skipped.IsEmpty() && remarks.empty()) {
        return;
    }
    html.Open("section").With("class", "skipped").Open("h3").Text("Skipped and remarked");
    html.Close("h3").Open("ul");
    const std::size_t told = std::min(remarks.size(), static_cast<std::size_t>(kMost));
    for (std::size_t i = 0; i < told; ++i) {
        html.Open("li").Foreign(remarks[i]).Close("li");
    }
    if (remarks.size() > told) {
        html.ShownElement("li", "more", fmt::format("and {} more", remarks.size() - told));
    }
    const std::int64_t shown = std::min<std::int64_t>(skipped.GetSize(), kMost);
    for (std::int64_t i = 0; i < shown; ++i) {
        const SkippedFile& file = skipped[static_cast<int>(i)];
        html.Open("li").Open("code").Foreign(tool::PositionText(file)).Close("code").Text(" ");
        html.Foreign(tool::ReasonText(file)).Close("li");
    }
    if (skipped.GetSize() > shown) {
        html.ShownElement("li", "more", fmt::format("and {} more", skipped.GetSize() - shown));
    }
    html.Close("ul").Close("section");
}

} // namespace nqp2::report
