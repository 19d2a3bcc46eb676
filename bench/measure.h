// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "parser/NQP2Parser.h"

#include <string>

/// What the measuring programs share.
namespace nqp2::bench {

/// A parser ready to read, released at the end as its contract asks.
class ReadyParser {
public:
    ReadyParser() { m_parser.Init(); }
    ~ReadyParser() { m_parser.Release(); }
    ReadyParser(const ReadyParser&) = delete;
    ReadyParser& operator=(const ReadyParser&) = delete;
    CNQP2Parser* operator->() { return &m_parser; }

private:
    CNQP2Parser m_parser;
};

/// The body of a main function: lets `add` register the benchmarks of each argument that is no
/// option and runs them all. Returns the exit status.
int Run(int argc, char** argv, void (*add)(const std::string& argument));

} // namespace nqp2::bench
