// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/copier.h"

#include "copy/digest.h"
#include "copy/failure.h"
#include "copy/new_file.h"

#include <algorithm>
#include <memory>

namespace nqp2::copy {

using platform::IoStatus;

void Copier::Step(std::uint64_t bytes) {
    m_halves += bytes;
    if (!m_watch.GoesOn(std::min(m_halves / 2, m_total), m_total)) {
        throw Cancelled();
    }
}

void Copier::Begin() {
    Step(0);
}

/// What turned out to be shorter or to need no copy counts as done as well.
void Copier::Finish() {
    Step(2 * m_total - std::min(m_halves, 2 * m_total));
    if (!m_watch.MayFinish(m_total)) {
        throw Cancelled();
    }
}

void Copier::ReadAll(platform::FileReader& reader, const std::string& path, std::uint64_t size,
                     const Take& take) {
    std::uint64_t position = 0;
    for (std::size_t count = 1; count != 0; position += count) {
        Require(reader.Read(m_block.data(), m_block.size(), count), "read", path);
        if (count == 0 ? position != size : count > size - position) {
            throw Failure(ChangedInReading(path));
        }
        if (count != 0) {
            take(position, std::string_view(m_block.data(), count));
            Step(count);
        }
    }
}

void Copier::ReadSource(const Source& source, const Take& take) {
    if (source.content) {
        take(0, *source.content);
        Step(source.size);
        return;
    }
    std::unique_ptr<platform::FileReader> reader;
    Require(platform::Files().Open(source.path, reader), "read", source.path);
    ReadAll(*reader, source.path, source.size, take);
}

void Copier::Copy(const Source& source, const std::string& target, platform::FileWriter& writer) {
    Digest digest;
    ReadSource(source, [&](std::uint64_t position, std::string_view bytes) {
        digest.Add(bytes);
        Require(WriteOrLeaveHole(writer, position, bytes), "write", target);
    });
    const IoStatus status = SetLengthAndTime(writer, source.size, source.time);
    Require(status ? writer.Flush() : status, "write", target);
    CheckReadBack(writer, target, 0, digest, m_block, [this](std::size_t count) { Step(count); });
    Require(writer.Close(), "write", target);
}

bool Copier::IsSame(const Source& source, const std::string& there, platform::FileReader& reader) {
    Digest wanted;
    Digest found;
    ReadSource(source, [&](std::uint64_t, std::string_view bytes) { wanted.Add(bytes); });
    ReadAll(reader, there, source.size,
            [&](std::uint64_t, std::string_view bytes) { found.Add(bytes); });
    return wanted.Value() == found.Value();
}

} // namespace nqp2::copy
