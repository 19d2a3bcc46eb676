// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/incoming_file.h"

#include "copy/failure.h"
#include "copy/new_file.h"
#include "copy/target_end.h"

#include <algorithm>
#include <utility>

namespace nqp2::copy {

using platform::EntryKind;
using platform::IoError;
using platform::IoStatus;

IncomingFile::IncomingFile(Place& place, const FanItem& item)
    : m_place(place), m_item(item), m_step(place.way.Reach(FolderPathOf(item.path))),
      m_folder(m_step.folder), m_name(platform::NamePart(item.path)),
      m_path(platform::PathIn(m_folder->Path(), m_name)) {
    const auto there = m_step.names.find(m_name);
    if (there == m_step.names.end()) {
        Create();
    } else if (there->second == EntryKind::File) {
        OpenOld();
    } else {
        throw Failure(InTheWay(m_path, there->second));
    }
}

void IncomingFile::OpenOld() {
    RequireOn(m_folder->Open(m_name, m_old), "read", m_path);
    if (m_old->Size() == m_item.info.size) {
        m_old->ReadAround();
    } else {
        BecomeNew();
    }
}

void IncomingFile::Take(std::string_view bytes) {
    if (m_old != nullptr && !HasNext(bytes)) {
        BecomeNew();
    }
    if (m_writer != nullptr) {
        RequireOn(WriteOrLeaveHole(*m_writer, m_position, bytes), "write", m_path);
    }
    m_position += bytes.size();
}

/// What cannot be read does not count as there.
bool IncomingFile::HasNext(std::string_view bytes) {
    std::string& block = m_place.block;
    while (!bytes.empty()) {
        std::size_t count = 0;
        const IoStatus status =
            m_old->Read(block.data(), std::min(block.size(), bytes.size()), count);
        if (!status || count == 0 || bytes.compare(0, count, block.data(), count) != 0) {
            return false;
        }
        bytes.remove_prefix(count);
    }
    return true;
}

void IncomingFile::BecomeNew() {
    m_old.reset();
    RequireReplaceable();
    const std::string aside = SetAside();
    m_isAnew = true;
    m_place.hasSetAside(m_item, aside);
    Create();
    if (m_position != 0) {
        CopyBeginning(aside);
    }
}

/// Nothing speaks for what cannot be opened.
void IncomingFile::RequireReplaceable() {
    std::unique_ptr<platform::FileReader> there;
    if (!m_place.whyKept || !m_folder->Open(m_name, there)) {
        return;
    }
    if (const std::string why = m_place.whyKept(m_item, *there); !why.empty()) {
        throw Failure(m_path + " is left as it is: " + why + ".");
    }
}

std::string IncomingFile::SetAside() {
    constexpr int kMostTries = 10'000;
    IoStatus status{IoError::Exists, "all names for it are taken"};
    std::string aside;
    for (int number = 1; number < kMostTries && status.error == IoError::Exists; ++number) {
        aside = m_name + ".differs-" + std::to_string(number);
        status = m_folder->MoveToFree(m_name, aside);
    }
    RequireOn(status, "set aside", m_path);
    m_step.names.erase(m_name);
    m_step.names.emplace(aside, EntryKind::File);
    return aside;
}

void IncomingFile::Create() {
    const std::uint64_t size = m_item.info.size;
    if (size > m_place.largestFile) {
        throw Failure(m_path + " would have " + std::to_string(size) +
                      " bytes, and files there can have no more than " +
                      std::to_string(m_place.largestFile) + ".");
    }
    if (size > m_place.smallFile) {
        std::uint64_t free = 0;
        RequireOn(m_folder->UsableSpace(free), "ask for the free space of", m_folder->Path());
        if (SpaceTaken(size) > free) {
            throw TargetEnd(TooLittleSpace(m_folder->Path(), SpaceTaken(size), free));
        }
    }
    RequireOn(m_folder->Create(m_name, m_writer), "write", m_path);
}

/// The bytes were compared with the source's when they were read before; that they are the same
/// now is proven with all others in the end.
void IncomingFile::CopyBeginning(const std::string& from) {
    const std::string path = platform::PathIn(m_folder->Path(), from);
    std::unique_ptr<platform::FileReader> reader;
    RequireOn(m_folder->Open(from, reader), "read", path);
    std::string& block = m_place.block;
    for (std::uint64_t position = 0; position < m_position;) {
        const auto wanted = std::min<std::uint64_t>(block.size(), m_position - position);
        std::size_t count = 0;
        Require(reader->Read(block.data(), static_cast<std::size_t>(wanted), count), "read", path);
        if (count == 0) {
            throw Failure(ChangedInReading(path));
        }
        const std::string_view bytes(block.data(), count);
        RequireOn(WriteOrLeaveHole(*m_writer, position, bytes), "write", m_path);
        position += count;
    }
}

std::unique_ptr<platform::FileWriter> IncomingFile::End() {
    if (m_writer != nullptr) {
        RequireOn(SetLengthAndTime(*m_writer, m_item.info.size, m_item.info), "write", m_path);
        return std::move(m_writer);
    }
    platform::FileInfo info;
    RequireOn(m_old->Stat(info), "read", m_path);
    if (!IsOfSameTime(info, m_item.info)) {
        RequireOn(TimeKept(m_folder->KeepTime(m_name, m_item.info)), "set the time of", m_path);
    }
    return nullptr;
}

} // namespace nqp2::copy
