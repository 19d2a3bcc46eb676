// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/NQP2Parser.h"

namespace nqp2 {

/// A parser that is ready to read and is released when it goes, as its contract asks.
class ReadyParser {
public:
    /// Makes a parser, with its way to the worker, and initialises it.
    ReadyParser() { m_parser.Init(); }
    ~ReadyParser() { m_parser.Release(); }
    ReadyParser(const ReadyParser&) = delete;
    ReadyParser& operator=(const ReadyParser&) = delete;

    /// The parser, which stays this object's.
    CNQP2Parser* operator->() { return &m_parser; }

private:
    CNQP2Parser m_parser;
};

} // namespace nqp2
