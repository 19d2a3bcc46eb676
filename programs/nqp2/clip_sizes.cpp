// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_sizes.h"

#include "NQP2ParserU/TextBytes.h"

#include <new>

namespace nqp2::tool {

const CArray<ClipFile>& ClipSizes::FilesOf(const std::string& clip) {
    _tag_P2Clip named;
    named.ClipName = TextFromBytes(clip);
    CArray<ClipFile> files;
    if (!m_reader.Read(named, files)) {
        throw std::bad_alloc();
    }
    m_files.RemoveAll();
    for (const ClipFile& file : files) {
        // What only has the clip's name is neither copied nor removed with it.
        if (file.state != ClipFileState::Missing && file.role != ClipFileRole::Other) {
            m_files.Add(file);
        }
    }
    return m_files;
}

FileSum ClipSizes::Of(const std::string& clip) {
    FileSum sum;
    for (const ClipFile& file : FilesOf(clip)) {
        sum += {1, file.size};
    }
    return sum;
}

} // namespace nqp2::tool
