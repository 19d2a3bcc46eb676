// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/bridge/wire_example.h"

#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace nqp2::bridge {
namespace {

constexpr std::string_view kFence = "```";

/// The stream behind the opening fence of the example.
std::ifstream OpenExample(std::string_view title) {
    std::ifstream document(NQP2_WIRE_DOCUMENT);
    std::string line;
    const std::string heading = "### " + std::string(title);
    while (std::getline(document, line) && line != heading) {
    }
    while (std::getline(document, line) && !line.starts_with(kFence)) {
    }
    if (!document) {
        throw std::runtime_error("no example " + heading);
    }
    return document;
}

/// "0A" or "60x00".
void AppendToken(Bytes& bytes, const std::string& token) {
    const std::size_t sign = token.find('x');
    const std::size_t times = sign == std::string::npos ? 1 : std::stoul(token.substr(0, sign));
    const std::string digits = sign == std::string::npos ? token : token.substr(sign + 1);
    std::size_t end = 0;
    const unsigned long value = std::stoul(digits, &end, 16);
    if (digits.size() != 2 || end != 2) {
        throw std::runtime_error("no byte: " + token);
    }
    bytes.insert(bytes.end(), times, static_cast<unsigned char>(value));
}

void AppendExample(WireExample& target, const WireExample& part) {
    for (const std::size_t at : part.counts) {
        target.counts.push_back(target.bytes.size() + at);
    }
    target.bytes.insert(target.bytes.end(), part.bytes.begin(), part.bytes.end());
}

void AppendLine(WireExample& example, const std::string& line) {
    const std::size_t comment = line.find(" ; ");
    if (line.compare(comment, 8, " ; count") == 0 || line.compare(comment, 9, " ; length") == 0) {
        example.counts.push_back(example.bytes.size());
    }
    const std::string content = line.substr(0, comment);
    if (content.starts_with('[')) {
        AppendExample(example, ReadWireExample(content.substr(1, content.find(']') - 1)));
        return;
    }
    std::istringstream tokens(content);
    for (std::string token; tokens >> token;) {
        AppendToken(example.bytes, token);
    }
}

} // namespace

WireExample ReadWireExample(std::string_view title) {
    std::ifstream document = OpenExample(title);
    WireExample example;
    std::string line;
    while (std::getline(document, line) && !line.starts_with(kFence)) {
        AppendLine(example, line);
    }
    return example;
}

void SetCount(Bytes& bytes, std::size_t at, std::uint32_t count) {
    std::memcpy(&bytes.at(at), &count, sizeof(count));
}

} // namespace nqp2::bridge
