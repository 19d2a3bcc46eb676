// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/input_file.h"

#include "console/console.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace nqp2::tool {

InputFile::InputFile(const std::string& path) : m_path(path), m_stream(path, std::ios::binary) {
    if (!m_stream) {
        throw Failure(path, "cannot be opened", std::generic_category().message(errno));
    }
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    m_size = error ? 0 : size;
}

std::string InputFile::Read(std::size_t count) {
    std::string bytes(count, '\0');
    m_stream.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<std::size_t>(m_stream.gcount()));
    m_position += bytes.size();
    if (m_stream.bad()) {
        throw Failure(m_path, "cannot be read", std::generic_category().message(errno));
    }
    return bytes;
}

void RequireRegularFile(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw Failure(path, "is no file", "nothing else is read");
    }
    const InputFile readable(path);
}

} // namespace nqp2::tool
