// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/timeline/writers.h"

#include "console/console.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

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
    /// Where so many documents of a list go. Throws the failure to report when they cannot all be
    /// written: nothing that is there is replaced.
    std::vector<std::string> PathsFor(const std::string& name, const timeline::Form& form,
                                      std::size_t documents);
    /// Writes a document to a path of those.
    void Write(const std::string& path, const timeline::Form& form,
               const timeline::Timeline& timeline, bool isRelative, timeline::Remarks& remarks);

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
