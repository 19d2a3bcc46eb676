// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/history.h"

#include "offload/mhl/date_text.h"
#include "offload/mhl/history_state.h"
#include "offload/mhl/xml_text.h"
#include "platform/unicode.h"

#include <array>
#include <cstdio>
#include <utility>

namespace nqp2::mhl {

History::History(std::unique_ptr<HistoryState> state) : m_state(std::move(state)) {}
History::History(History&&) noexcept = default;
History& History::operator=(History&&) noexcept = default;
History::~History() = default;

History History::Open(platform::FileSystem& files, const std::string& scope) {
    std::unique_ptr<platform::Folder> opened;
    const platform::IoStatus status = files.OpenFolder(scope, opened);
    if (status) {
        return Open(std::move(opened));
    }
    auto state = std::make_unique<HistoryState>();
    state->parts.emplace_back();
    state->Add(true, "", 0, "the folder cannot be opened: " + status.reason);
    return History(std::move(state));
}

History History::Open(std::shared_ptr<platform::Folder> scope) {
    auto state = std::make_unique<HistoryState>();
    state->scope = std::move(scope);
    ReadHistories(*state);
    return History(std::move(state));
}

bool History::Exists() const {
    return HasChain() || !Generations().empty() || !Unlisted().empty();
}

bool History::HasChain() const {
    return m_state->parts.front().hasChain;
}

const std::vector<Generation>& History::Generations() const {
    return m_state->parts.front().generations;
}

const std::vector<std::string>& History::Unlisted() const {
    return m_state->parts.front().unlisted;
}

const Findings& History::Found() const {
    return m_state->found;
}

void History::Tell(Finding finding) {
    m_state->found.Add(std::move(finding));
}

const std::vector<std::string>& History::NestedFolders() const {
    return m_state->nested;
}

const Tree& History::Expected() const {
    return m_state->expected;
}

bool History::IsExpected(NodeId node) const {
    return node < m_state->recorded.size() && m_state->recorded[node] > 0 && !m_state->isGone[node];
}

bool History::IsInNewest(NodeId node) const {
    return m_state->isCurrent[node];
}

const IgnoreList& History::Ignored() const {
    return m_state->ignored;
}

bool History::Ignore(std::string_view pattern) {
    return m_state->ignored.Add(pattern) && m_state->parts.front().ignored.Add(pattern);
}

FormatSet History::Formats() const {
    return m_state->formats;
}

std::string ManifestName(std::uint64_t number, std::string_view folder, std::int64_t created) {
    constexpr std::size_t kLongestFolder = 200; // a name has 255 bytes
    std::string name;
    while (!folder.empty()) {
        const platform::Utf8Character first = platform::FirstCharacter(folder);
        const std::string_view character = folder.substr(0, first.length > 0 ? first.length : 1);
        if (name.size() + character.size() > kLongestFolder) {
            break;
        }
        const bool isSound =
            XmlTextFault(character) == XmlFault::None && first.code >= ' ' && first.code != '/';
        name.append(isSound ? character : "_");
        folder.remove_prefix(character.size());
    }
    std::array<char, 24> digits{};
    std::snprintf(digits.data(), digits.size(), "%04llu", static_cast<unsigned long long>(number));
    return std::string(digits.data()) + "_" + name + "_" + DateForName(created) +
           std::string(kManifestEnding);
}

} // namespace nqp2::mhl
