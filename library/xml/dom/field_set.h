// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace nqp2::dom {

/// What is wanted of documents of one kind: the values of elements behind paths, one attribute of
/// some of them, and of elements that come several times how many there are, and values below each.
class FieldSet {
public:
    struct ValuePath {
        std::string_view below;          ///< path below the base, no part of another's
        std::string_view attribute = {}; ///< local name of the one that is wanted too
    };
    struct ListPath {
        std::string_view below;
        std::span<const std::string_view> cells; ///< paths below each element
    };
    /// `base` is "//Root/Content", as for PathSet::FindBehind. The texts must outlive this object.
    FieldSet(std::string_view base, std::span<const ValuePath> values,
             std::span<const ListPath> lists);

    enum class Role {
        Passed, ///< only what is below it counts
        Base,
        Value, ///< by index of the value
        List,  ///< by index of the list
        Cell,  ///< by index of the name
    };
    /// An element that counts, seen from the document.
    struct Name {
        std::string_view name;
        std::string_view attribute;
        Role role = Role::Passed;
        std::size_t index = 0;
        std::size_t list = 0; ///< of a cell
        std::vector<Name> below;

        /// Null when the element does not count.
        [[nodiscard]] const Name* Below(std::string_view child) const;
    };

    /// Stands for the document.
    [[nodiscard]] const Name& Top() const { return m_top; }
    /// Only the root may have this name: elsewhere the base would be somewhere else too.
    [[nodiscard]] std::string_view RootName() const { return m_top.below.front().name; }
    [[nodiscard]] std::size_t ValueCount() const { return m_valueCount; }
    /// How many cells an element of each list has.
    [[nodiscard]] const std::vector<std::size_t>& CellCounts() const { return m_cellCounts; }

private:
    Name m_top;
    std::size_t m_valueCount;
    std::vector<std::size_t> m_cellCounts;
};

} // namespace nqp2::dom
