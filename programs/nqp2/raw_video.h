// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/input_file.h"
#include "NQP2ParserU/FrameRate.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace nqp2::tool {

/// How a stream of a code type is cut and paced.
struct StreamForm {
    std::size_t unitSize = 0; ///< bytes of each access unit; 0: they are to be found in the stream
    FrameRate rate;
};

/// Throws Failure for a code type of which the name tells nothing.
StreamForm StreamFormOf(eCodeType type);

/// Cuts a file of raw video into access units.
class AccessUnits {
public:
    /// With `unitSize` 0 the file is an Annex B stream of AVC, each of whose access units begins
    /// with a delimiter. Throws Failure as the calls do.
    AccessUnits(const std::string& path, std::size_t unitSize)
        : m_path(path), m_file(path), m_unitSize(unitSize) {}

    /// False at the end of the file. A unit that the file's end cuts off is given as it is.
    bool Next(std::string& unit);
    [[nodiscard]] const InputFile& File() const { return m_file; }

private:
    bool NextOfStream(std::string& unit);

    std::string m_path;
    InputFile m_file;
    std::size_t m_unitSize;
    std::string m_ahead; ///< read, not given yet; begins with a unit
    bool m_hasEnded = false;
};

} // namespace nqp2::tool
