// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// A file that the user named, read from its beginning to its end. Each call throws Failure when
/// the system does.
class InputFile {
public:
    explicit InputFile(const std::string& path);

    /// The next bytes; fewer than asked for only at the end.
    std::string Read(std::size_t count);
    /// Bytes of the whole file; 0 for a pipe.
    [[nodiscard]] std::uint64_t Size() const { return m_size; }
    /// Bytes that were read.
    [[nodiscard]] std::uint64_t Position() const { return m_position; }

private:
    std::string m_path;
    std::ifstream m_stream;
    std::uint64_t m_size = 0;
    std::uint64_t m_position = 0;
};

/// The number in `width` bytes from `at` on; bytes behind the end count as 0.
inline std::uint32_t LittleEndian(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint32_t value = 0;
    for (std::size_t i = width; i > 0; --i) {
        const std::size_t index = at + i - 1;
        value =
            value << 8U | (index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0U);
    }
    return value;
}

/// Throws Failure unless a regular file can be opened there, without waiting on a pipe or device.
void RequireRegularFile(const std::string& path);

} // namespace nqp2::tool
