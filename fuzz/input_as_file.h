// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "fuzz/require.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace nqp2::fuzz {

/// The input as a file in memory, for code that takes a path.
class InputAsFile {
public:
    InputAsFile(const std::uint8_t* data, std::size_t size)
        : m_file(memfd_create("fuzz", MFD_CLOEXEC)) {
        Require(m_file >= 0 && write(m_file, data, size) == static_cast<ssize_t>(size),
                "there is memory");
    }
    ~InputAsFile() { close(m_file); }
    InputAsFile(const InputAsFile&) = delete;
    InputAsFile& operator=(const InputAsFile&) = delete;

    [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(m_file); }

private:
    int m_file;
};

} // namespace nqp2::fuzz
