// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/timeline/writers.h"

#include "console/console.h"

#include <cstddef>
#include <set>
#include <string>

namespace nqp2::tool {

/// The whole path of a file without links on its way.
std::string WithoutLinks(const std::string& path);

/// Where documents go: standard output, a file, with more of them beside it, or a folder.
class TimelineOutput {
public:
    /// Throws the failure to report for a file where a folder is needed, for `areSeveral` lists.
    TimelineOutput(Console& console, const std::string& output, bool areSeveral);

    /// Whether the user named the file itself.
    [[nodiscard]] bool IsFile() const { return !m_isFolder && !IsStandardOutput(); }
    /// Throws the failure to report when a list's documents cannot all be written.
    void RequireRoom(const std::string& name, std::size_t documents) const;
    /// Writes a document of that list; returns its path.
    std::string Write(const std::string& name, const timeline::Form& form,
                      const timeline::Timeline& timeline, bool isRelative,
                      timeline::Remarks& remarks);

private:
    [[nodiscard]] bool IsStandardOutput() const { return m_output == kStandardOutput; }
    /// A name that none of the files of this run has.
    std::string FreePath(const std::string& name, const timeline::Form& form);

    Console& m_console;
    std::string m_output;
    bool m_isFolder;
    std::set<std::string> m_written;
};

} // namespace nqp2::tool
