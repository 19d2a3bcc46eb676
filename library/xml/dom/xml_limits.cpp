// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/XmlLimits.h"

#include <atomic>

namespace nqp2 {
namespace {

std::atomic<std::uint64_t> maxXmlFileSize{std::uint64_t{32} * 1024 * 1024};

} // namespace

void SetMaxXmlFileSize(std::uint64_t bytes) noexcept {
    maxXmlFileSize = bytes;
}

std::uint64_t MaxXmlFileSize() noexcept {
    return maxXmlFileSize;
}

} // namespace nqp2
