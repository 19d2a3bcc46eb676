// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/media_describer.h"

#include "console/console.h"
#include "NQP2ParserU/MediaDescription.h"

#include <fmt/core.h>

#include <utility>

namespace nqp2::tool {

MediaDescriber::MediaDescriber(Console& console, std::string worker)
    : m_console(console), m_program(std::move(worker)) {}

bool MediaDescriber::HasWorker() {
    if (m_session || m_startsLeft == 0) {
        return m_session.has_value();
    }
    try {
        if (--m_startsLeft == 0) {
            throw Failure("the worker", "ends too often", "no more files are described");
        }
        m_session.emplace(m_program);
    } catch (const Failure& failure) {
        m_startsLeft = 0;
        m_console.Message(fmt::format("nqp2: {}", failure.what()));
    }
    return m_session.has_value();
}

bool MediaDescriber::Describe(const CString& path, ClipMetadata& metadata, std::string& problem) {
    problem.clear();
    if (!HasWorker()) {
        return false;
    }
    const DescriptionStatus status = DescribeMedia(*m_session->operator->(), path, metadata);
    if (status == DescriptionStatus::Refused) {
        problem = m_session->Sentence();
    } else if (status == DescriptionStatus::NoWorker) {
        problem = "the worker ended while it read the file";
        m_session.reset();
    }
    return status == DescriptionStatus::Described;
}

} // namespace nqp2::tool
