// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card.h"
#include "nqp2/transfer_watch.h"
#include "NQP2ParserU/ClipFiles.h"

#include <string>

namespace nqp2::tool {

/// Tells the files that a P2 card has of clips, by their names alone: of clips whose metadata
/// cannot be read, too.
class ClipSizes {
public:
    explicit ClipSizes(const Card& card) : m_reader(card.Root()) {}

    /// Those that are there and that the worker takes for the clip's, until the next call.
    const CArray<ClipFile>& FilesOf(const std::string& clip);
    /// Their number and sizes.
    FileSum Of(const std::string& clip);

private:
    ClipFileReader m_reader;
    CArray<ClipFile> m_files;
};

} // namespace nqp2::tool
