// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/digest.h"

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

/// Access units of H.264 as a stream of bytes has them (ITU-T H.264, annex B), or as containers do
/// that put a length before each of their pieces.
namespace nqp2::worker::rewrap {

/// How a container has a stream's units.
struct UnitForm {
    std::size_t lengthBytes = 0; ///< before each piece; 0: start codes
    /// By the container's own record of the parameter sets.
    static UnitForm Of(std::string_view parameterSets);
};

/// Parameter sets that are at most that many: a stream has a few.
class ParameterSets {
public:
    void Add(std::string_view set);
    [[nodiscard]] bool IsEmpty() const { return m_sets.empty(); }
    [[nodiscard]] bool Includes(const ParameterSets& other) const;

private:
    std::set<std::string, std::less<>> m_sets;
};

/// Adds the pieces of a unit without what differs between containers: parameter sets go to `sets`
/// instead, zeros behind a piece are left out. False for a unit that is not whole.
bool AddPieces(std::string_view unit, const UnitForm& form, copy::Digest& digest,
               ParameterSets& sets);
/// What a unit looks like without being decoded.
struct UnitShape {
    std::size_t slices = 0;
    std::size_t pictures = 0; ///< fields, where each is coded alone
    std::string fault;        ///< what no encoder makes, in words; "" when nothing is seen
};
UnitShape ShapeOf(std::string_view unit, const UnitForm& form);
/// The sets of the container's own record.
void AddOwnSets(std::string_view parameterSets, ParameterSets& sets);

/// The parameter sets in a unit with start codes, with theirs.
std::string SetsIn(std::string_view unit);
/// The unit with the sets behind its delimiter, if it begins with one.
std::string WithParameterSets(std::string_view unit, std::string_view sets);

} // namespace nqp2::worker::rewrap
