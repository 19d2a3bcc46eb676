// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/fan.h"
#include "copy/folder_way.h"

#include <cstddef>
#include <memory>
#include <string>

namespace nqp2::copy {

/// A file of the source that is read around the cache and may not change. Throws a Failure.
class SourceFile {
public:
    /// The way outlives it.
    SourceFile(FolderWay& way, const FanItem& item);

    /// Reads until the buffer is full or the file ends.
    std::size_t Read(char* buffer, std::size_t capacity);
    /// After its last byte: fails unless it is as it was.
    void CheckUnchanged();

private:
    std::string m_path;
    std::unique_ptr<platform::FileReader> m_reader;
    platform::FileInfo m_before;
    std::uint64_t m_position = 0;
};

} // namespace nqp2::copy
