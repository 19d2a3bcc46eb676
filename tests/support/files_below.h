// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

namespace nqp2::test {

/// Every file below a folder with its content; hidden ones too.
inline std::map<std::string, std::string> FilesBelow(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            std::ifstream file(entry.path(), std::ios::binary);
            files[entry.path().lexically_relative(folder)] =
                std::string(std::istreambuf_iterator<char>(file), {});
        }
    }
    return files;
}

} // namespace nqp2::test
