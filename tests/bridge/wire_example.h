// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace nqp2::bridge {

using Bytes = std::vector<unsigned char>;

/// An example of docs/wire.md.
struct WireExample {
    Bytes bytes;
    std::vector<std::size_t> counts; ///< where in them the counts and lengths of items are
};

/// "0A" or "60x00".
inline Bytes BytesOf(const std::string& token) {
    const std::size_t digits = token.find('x') + 1; // 0 when there is none
    const std::size_t times = digits == 0 ? 1 : std::stoul(token);
    return Bytes(times, static_cast<unsigned char>(std::stoul(token.substr(digits), nullptr, 16)));
}

/// The example under the heading "### `title`"; throws when there is none.
inline WireExample ReadWireExample(const std::string& title) {
    std::ifstream document(NQP2_WIRE_DOCUMENT);
    std::string line;
    for (const std::string& wanted : {"### " + title, std::string("```text")}) {
        while (std::getline(document, line) && line != wanted) {
        }
    }
    if (!document) {
        throw std::runtime_error("no example " + title);
    }
    WireExample example;
    while (std::getline(document, line) && line != "```") {
        const std::size_t comment = line.find(" ; ");
        WireExample part;
        if (line[0] == '[') {
            part = ReadWireExample(line.substr(1, line.find(']') - 1));
        } else if (line.find("; count") != std::string::npos ||
                   line.find("; length") != std::string::npos) {
            part.counts.push_back(0);
        }
        for (const std::size_t at : part.counts) {
            example.counts.push_back(example.bytes.size() + at);
        }
        std::istringstream tokens(line[0] == '[' ? "" : line.substr(0, comment));
        for (std::string token; tokens >> token;) {
            const Bytes bytes = BytesOf(token);
            part.bytes.insert(part.bytes.end(), bytes.begin(), bytes.end());
        }
        example.bytes.insert(example.bytes.end(), part.bytes.begin(), part.bytes.end());
    }
    return example;
}

} // namespace nqp2::bridge
