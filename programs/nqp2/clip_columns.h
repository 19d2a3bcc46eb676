// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/table.h"
#include "nqp2/clip_reading.h"
#include "nqp2/shown_clip.h"

#include <functional>
#include <string>
#include <vector>

namespace nqp2::tool {

inline constexpr const char* kDefaultColumns = "default";

/// The names of those columns; members of a clip in JSON may stand beside them.
std::vector<std::string> ColumnNames();

/// The columns in which clips are listed.
class ClipColumns {
public:
    /// From names with commas between them: those of bins and spreadsheets ("Name", "Start" ...;
    /// "default" are all of them) and those of the members of a clip in JSON, with dots
    /// ("StartTimecode", "metadata.place.name"; "all" are those of the record). Throws Failure for
    /// a name that is none.
    explicit ClipColumns(const std::string& names);

    /// What must be read of each clip to fill them.
    [[nodiscard]] ClipReading Reading() const { return m_reading; }
    [[nodiscard]] const std::vector<Column>& Heads() const { return m_heads; }
    /// The cells of a clip, one a column.
    [[nodiscard]] Row Cells(const ShownClip& shown) const;

private:
    struct Source {
        std::function<std::string(const ShownClip&)> text; ///< or, when there is none,
        std::string member;                                ///< of a clip in JSON
    };
    void Add(const std::string& name);
    void AddMember(const std::string& name);

    std::vector<Column> m_heads;
    std::vector<Source> m_sources;
    ClipReading m_reading;
    bool m_hasMembers = false;
};

} // namespace nqp2::tool
