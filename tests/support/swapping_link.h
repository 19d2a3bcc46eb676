// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace nqp2::test {

/// For as long as it lives, a folder or file and a link to `target` change places without end.
/// At the end the folder is back in its place.
class SwappingLink {
public:
    SwappingLink(std::string path, const std::string& target)
        : m_path(std::move(path)), m_link(m_path + "-swapped") {
        std::filesystem::create_symlink(target, m_link);
        if (!Swap() || !Swap()) {
            throw std::runtime_error("nothing can be swapped at " + m_path);
        }
        m_thread = std::jthread([this](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                Swap();
            }
        });
    }
    ~SwappingLink() {
        m_thread = {};
        if (std::filesystem::is_symlink(m_path)) {
            Swap();
        }
        std::filesystem::remove(m_link);
    }
    SwappingLink(const SwappingLink&) = delete;
    SwappingLink& operator=(const SwappingLink&) = delete;

private:
    bool Swap() const {
        return renameat2(AT_FDCWD, m_path.c_str(), AT_FDCWD, m_link.c_str(), RENAME_EXCHANGE) == 0;
    }

    std::string m_path;
    std::string m_link;
    std::jthread m_thread;
};

} // namespace nqp2::test
