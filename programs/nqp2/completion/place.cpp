// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/completion/place.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace nqp2::tool {
namespace {

using manual::CommandPage;
using manual::Entry;

/// With which more cards follow the first, and no clips of it.
constexpr std::array<std::string_view, 4> kCardsFollow = {"--all", "--clip", "--edl", "--playlist"};

/// What a command does not share with those below it.
constexpr std::array<std::string_view, 2> kOwn = {"--help", "--version"};

bool IsNamed(const Entry& entry, std::string_view name) {
    return std::find(entry.names.begin(), entry.names.end(), name) != entry.names.end();
}

class Follower {
public:
    explicit Follower(const CommandPage& program) { Enter(program); }

    void Take(const std::string& word) {
        if (m_valueOf != nullptr) {
            if (IsNamed(*m_valueOf, "--drive")) {
                m_place.drives.push_back(word);
            }
            m_valueOf = nullptr;
        } else if (word.starts_with('-') && word.size() > 1) {
            TakeOption(word);
        } else if (const CommandPage* command = CommandNamed(word)) {
            Enter(*command);
        } else {
            m_place.card = m_count == 0 ? word : m_place.card;
            ++m_count;
        }
    }
    Place Finish(const std::string& last) {
        m_place.begun = last;
        const std::size_t sign = last.find('=');
        if (m_valueOf == nullptr && last.starts_with('-') && sign != std::string::npos) {
            TakeOption(last.substr(0, sign));
            m_place.begun = last.substr(sign + 1);
        }
        m_place.entry = m_valueOf != nullptr ? m_valueOf : NextArgument();
        return std::move(m_place);
    }

private:
    void Enter(const CommandPage& command) {
        m_place.command = &command;
        std::erase_if(m_place.options, [](const Entry* each) {
            return std::find(kOwn.begin(), kOwn.end(), each->names.back()) != kOwn.end();
        });
        for (const Entry& option : command.options) {
            m_place.options.push_back(&option);
        }
    }
    [[nodiscard]] const CommandPage* CommandNamed(const std::string& word) const {
        const auto& commands = m_place.command->commands;
        const auto found = std::find_if(commands.begin(), commands.end(), [&](const auto& each) {
            return each.name == m_place.command->name + ' ' + word;
        });
        return found == commands.end() ? nullptr : &*found;
    }
    void TakeOption(std::string_view word) {
        const std::size_t sign = std::min(word.find('='), word.size());
        const std::string_view name = word.substr(0, sign);
        m_place.areCards = m_place.areCards || std::find(kCardsFollow.begin(), kCardsFollow.end(),
                                                         name) != kCardsFollow.end();
        const auto found = std::find_if(m_place.options.begin(), m_place.options.end(),
                                        [&](const Entry* each) { return IsNamed(*each, name); });
        if (found != m_place.options.end() && sign == word.size() && !(*found)->value.empty()) {
            m_valueOf = *found;
        }
    }
    [[nodiscard]] const Entry* NextArgument() const {
        const std::vector<Entry>& arguments = m_place.command->arguments;
        if (m_count < arguments.size()) {
            return &arguments[m_count];
        }
        return !arguments.empty() && arguments.back().isRepeated ? &arguments.back() : nullptr;
    }

    Place m_place;
    const Entry* m_valueOf = nullptr;
    std::size_t m_count = 0; ///< of arguments that were taken
};

} // namespace

Place FindPlace(const CommandPage& program, const std::vector<std::string>& words) {
    Follower follower(program);
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        follower.Take(words[i]);
    }
    return follower.Finish(words.empty() ? "" : words.back());
}

} // namespace nqp2::tool
