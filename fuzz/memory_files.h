// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "fuzz/byte_source.h"
#include "platform/file_system.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::fuzz {

/// Folders and files in memory. A folder exists when it was made and when something is in it.
class MemoryFiles final : public platform::FileSystem {
public:
    /// Adds what an input describes, below `root`, until it ends: for each entry the byte of a path
    /// (ByteSource::Text with the names that mean something on a card), the length in two bytes and
    /// the content. A path that ends in "/" makes a folder.
    void AddFrom(ByteSource& input, const std::string& root);

    std::map<std::string, std::string> files; ///< by path; folders end in "/"

    platform::IoStatus Stat(const std::string& path, platform::FileInfo& info) override;
    platform::IoStatus List(const std::string& folder,
                            std::vector<platform::FolderEntry>& entries) override;
    platform::IoStatus Open(const std::string& path,
                            std::unique_ptr<platform::FileReader>& reader) override;
    platform::IoStatus Read(const std::string& path, std::uint64_t limit,
                            std::string& content) override;
    platform::IoStatus FreeSpace(const std::string& path, std::uint64_t& bytes) override;
    platform::IoStatus OpenFolder(const std::string& path,
                                  std::unique_ptr<platform::Folder>& folder) override;
};

} // namespace nqp2::fuzz
