// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/DebugOutput.h"

#include <utility>
#include <vector>

namespace nqp2::test {

/// Collects what goes to one of the library's text sinks during a test.
class CapturedTexts {
public:
    using SetSink = TextSink (*)(TextSink);

    explicit CapturedTexts(SetSink setSink)
        : m_setSink(setSink),
          m_previous(setSink([this](const CString& text) { m_texts.push_back(text); })) {}
    ~CapturedTexts() { m_setSink(std::move(m_previous)); }
    CapturedTexts(const CapturedTexts&) = delete;
    CapturedTexts& operator=(const CapturedTexts&) = delete;

    /// What came since the last call.
    std::vector<CString> Take() { return std::exchange(m_texts, {}); }

private:
    SetSink m_setSink;
    TextSink m_previous;
    std::vector<CString> m_texts;
};

} // namespace nqp2::test
