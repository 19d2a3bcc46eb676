// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/fan.h"
#include "offload/mhl/hash_format.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace nqp2::offload {

/// Which formats the file with a number (FanItem) needs. Asked from several threads at once.
using FormatsOfFile = std::function<mhl::FormatSet(std::size_t number)>;

/// Makes hashes of files while a Fan reads them: XXH128 is what the fan itself computes, each other
/// format has a taker of its own, and so a thread.
class FileHashes {
public:
    /// `all`: the formats that any of the files needs.
    FileHashes(mhl::FormatSet all, FormatsOfFile formatsOf);
    ~FileHashes();
    FileHashes(const FileHashes&) = delete;
    FileHashes& operator=(const FileHashes&) = delete;

    /// For the fan, which this outlives.
    [[nodiscard]] std::vector<copy::BlockTaker*> Takers() const;
    /// The hashes of a file that was read; asked once, when the fan tells of it.
    [[nodiscard]] mhl::Hashes Take(const copy::FanItem& file, const copy::Digest::Bytes& digest);

private:
    class Taker;
    FormatsOfFile m_formatsOf;
    std::vector<std::unique_ptr<Taker>> m_takers;
};

} // namespace nqp2::offload
