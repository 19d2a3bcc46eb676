// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

#include <memory>
#include <string>
#include <string_view>

namespace nqp2 {

/// Makes or replaces a file as a whole: written beside it under a hidden name, flushed, and renamed
/// over it. When that fails the old file stays as it was, and nothing is left behind. What is no
/// regular file is not replaced. What killed writers have left in its folder is removed. Returns
/// the system's reason for a failure, "" when it is done.
NQP2_API std::string WriteWholeFile(const std::string& path, std::string_view content) noexcept;

/// The same for what is too long to be held: written as it comes, under a hidden name, and named
/// when it is finished. An old file of the name goes just before that. Without Finish nothing is
/// left behind.
class NQP2_API WholeFileWriter {
public:
    /// Begins the file at a POSIX path; what fails is told by Finish.
    explicit WholeFileWriter(const std::string& path) noexcept;
    ~WholeFileWriter();
    WholeFileWriter(const WholeFileWriter&) = delete;
    WholeFileWriter& operator=(const WholeFileWriter&) = delete;

    /// Adds to the file. What fails is told by Finish; false from then on.
    bool Write(std::string_view content) noexcept;
    /// Gives the file its name. Returns the system's reason for a failure, also of what came
    /// before, "" when it is done.
    std::string Finish() noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state; ///< null when there was no memory for it
};

/// Removes what killed writers have left in a folder, this library's and its worker's, and nothing
/// that somebody still writes. What cannot be removed stays.
NQP2_API void RemoveAbandonedFiles(const std::string& folder) noexcept;

} // namespace nqp2
