// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace nqp2::test {

/// A fresh folder that is removed with everything in it at the end of the test. Names are bytes,
/// relative to the folder; missing folders between are made.
class TempFolder {
public:
    TempFolder() {
        std::string path = ::testing::TempDir() + "nqp2-XXXXXX";
        if (mkdtemp(path.data()) == nullptr) {
            throw std::runtime_error("no temporary folder " + path);
        }
        m_path = path;
    }
    ~TempFolder() {
        std::error_code ignored; // a test may have removed the folder itself
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// Without a trailing separator.
    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] std::string Path(std::string_view name) const {
        return m_path + '/' + std::string(name);
    }

    /// Writes a file and returns its path.
    std::string Write(std::string_view name, std::string_view bytes = {}) const {
        const std::string path = Path(name);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream file(path, std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!file.flush()) {
            throw std::runtime_error("cannot write " + path);
        }
        return path;
    }

    /// Makes a folder and returns its path.
    std::string MakeFolder(std::string_view name) const {
        const std::string path = Path(name);
        std::filesystem::create_directories(path);
        return path;
    }

private:
    std::string m_path;
};

} // namespace nqp2::test
