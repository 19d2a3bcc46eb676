// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"

#include <cstdint>
#include <string>
#include <utility>

namespace nqp2::bench {

/// Scans of one card by one parser, as a host does them.
class CardScan {
public:
    explicit CardScan(const std::string& card) : CardScan(card, InterfaceRoot(card)) {}
    /// The card as a host names it.
    CardScan(const std::string& card, CString root)
        : m_root(std::move(root)), m_expected(static_cast<std::int64_t>(ListClips(card).size())) {}

    /// Appends the card's clips to none; throws when not all of them came.
    void Run() {
        Require(m_parser->LoadClipEx(m_root, m_clips, 0) == 0 && m_clips.GetSize() == m_expected,
                "not all clips were loaded");
    }
    void Forget() { m_clips = {}; }
    [[nodiscard]] const CArray<_tag_P2Clip>& Clips() const { return m_clips; }

    /// Run, with the records' end left out: it is the host's.
    Subject Measured(std::string name) {
        return {std::move(name), [this] { Run(); }, {}, [this] { Forget(); }};
    }

private:
    ReadyParser m_parser;
    CString m_root;
    std::int64_t m_expected;
    CArray<_tag_P2Clip> m_clips;
};

} // namespace nqp2::bench
