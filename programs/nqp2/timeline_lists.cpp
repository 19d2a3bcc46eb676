// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline_lists.h"

#include "console/console.h"
#include "NQP2ParserU/ReadyParser.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace nqp2::tool {

std::string ListNames(const CArray<tag_P2EDL>& lists) {
    constexpr std::size_t kShown = 20;
    std::vector<std::string> names;
    for (const tag_P2EDL& list : lists) {
        if (names.size() < kShown) {
            names.push_back(BytesFromText(list.Name));
        }
    }
    return fmt::format("{}{}", fmt::join(names, ", "), names.size() < kShown ? "" : " ...");
}

TimelineLists::TimelineLists(const CardScan& scan) : m_folder(scan.card.Folder()) {
    ReadyParser parser;
    const CString& root = scan.card.Root();
    // What fails has no such lists; what cannot be read is in the report.
    static_cast<void>(scan.kind == CardKind::P2
                          ? parser->LoadCardEdls(root, m_lists, m_report)
                          : parser->LoadCardPlaylists(root, m_lists, m_report));
    // The events of missing clips are told one by one.
    CArray<SkippedFile> skipped;
    for (const SkippedFile& file : m_report.skipped) {
        if (file.reason != SkipReason::MissingClip) {
            skipped.Add(file);
        }
    }
    m_report.skipped = std::move(skipped);
    std::stable_sort(m_lists.begin(), m_lists.end(),
                     [](const tag_P2EDL& left, const tag_P2EDL& right) {
                         return left.Name.CompareNoCase(right.Name) < 0;
                     });
}

void TimelineLists::Choose(const std::vector<std::string>& names) {
    for (const tag_P2EDL& list : m_lists) {
        if (names.empty()) {
            m_chosen.push_back(&list);
        }
    }
    for (const std::string& name : names) {
        const std::size_t before = m_chosen.size();
        for (const tag_P2EDL& list : m_lists) {
            if (list.Name.CompareNoCase(TextFromBytes(name)) == 0) {
                m_chosen.push_back(&list);
            }
        }
        if (m_chosen.size() == before) {
            throw Failure(name, "is no edit list or playlist of " + m_folder,
                          m_lists.IsEmpty() ? "there are none" : "there are " + ListNames(m_lists));
        }
    }
    if (m_chosen.empty()) {
        throw Failure(m_folder, "has no edit lists or playlists", "--bin takes its clips");
    }
}

const tag_P2EDL* TimelineLists::Find(const std::string& name) const {
    const CString text = TextFromBytes(name);
    const auto found = std::find_if(m_lists.begin(), m_lists.end(), [&](const tag_P2EDL& list) {
        return list.Name.CompareNoCase(text) == 0;
    });
    return found == m_lists.end() ? nullptr : &*found;
}

} // namespace nqp2::tool
