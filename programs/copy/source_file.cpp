// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/source_file.h"

#include "copy/failure.h"
#include "copy/new_file.h"

namespace nqp2::copy {

SourceFile::SourceFile(FolderWay& way, const FanItem& item) {
    const FolderWay::Step& step = way.Reach(FolderPathOf(item.path));
    const std::string name = platform::NamePart(item.path);
    m_path = platform::PathIn(step.folder->Path(), name);
    Require(step.folder->Open(name, m_reader), "read", m_path);
    Require(m_reader->Stat(m_before), "read", m_path);
    // No inode: many cards number their files anew each time.
    if (m_before.size != item.info.size || !IsOfSameTime(m_before, item.info)) {
        throw Failure(m_path + " has changed since it was listed.");
    }
    m_reader->ReadAround();
}

std::size_t SourceFile::Read(char* buffer, std::size_t capacity) {
    std::size_t total = 0;
    for (std::size_t count = 1; count != 0 && total < capacity; total += count) {
        Require(m_reader->Read(buffer + total, capacity - total, count), "read", m_path);
    }
    m_position += total;
    if (m_position > m_before.size) {
        throw Failure(ChangedInReading(m_path));
    }
    return total;
}

void SourceFile::CheckUnchanged() {
    char beyond = 0;
    platform::FileInfo after;
    if (m_position == m_before.size && Read(&beyond, 1) == 0) {
        Require(m_reader->Stat(after), "read", m_path);
        if (after.size == m_before.size && IsOfSameTime(after, m_before) &&
            after.changed == m_before.changed &&
            after.changedNanoseconds == m_before.changedNanoseconds) {
            return;
        }
    }
    throw Failure(ChangedInReading(m_path));
}

} // namespace nqp2::copy
