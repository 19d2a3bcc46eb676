// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/output_file.h"

#include "copy/failure.h"
#include "platform/guard.h"

#include <algorithm>
#include <utility>

namespace nqp2::worker::rewrap {

OutputFile::OutputFile(platform::Folder& folder, const std::string& name,
                       const std::function<bool()>& goesOn)
    : m_path(platform::PathIn(folder.Path(), name)), m_goesOn(goesOn) {
    copy::Require(folder.Create(name, m_writer), "write", m_path);
}

bool OutputFile::WriteAt(std::uint64_t position, std::string_view bytes) noexcept {
    return platform::Guarded(false, [&] {
        if (!m_failure || !m_goesOn()) {
            return false;
        }
        m_failure = m_writer->WriteAt(position, bytes);
        m_size = std::max(m_size, position + bytes.size());
        return static_cast<bool>(m_failure);
    });
}

std::int64_t OutputFile::ReadAt(std::uint64_t position, char* buffer,
                                std::size_t capacity) noexcept {
    return platform::Guarded(std::int64_t{-1}, [&]() -> std::int64_t {
        std::size_t count = 0;
        if (!m_failure || !m_goesOn()) {
            return -1;
        }
        m_failure = m_writer->ReadAt(position, buffer, capacity, count);
        return m_failure ? static_cast<std::int64_t>(count) : -1;
    });
}

void OutputFile::Require(const MediaFault& fault) const {
    copy::Require(m_failure, "write or read back", m_path);
    if (!fault.empty()) {
        throw copy::Failure("This recording cannot be put into " + m_path + ": " + fault + ".");
    }
}

void OutputFile::Flush() {
    copy::Require(m_writer->Flush(), "write", m_path);
}

void OutputFile::Commit() {
    copy::Require(m_writer->Commit(), "name the file", m_path);
}

} // namespace nqp2::worker::rewrap
