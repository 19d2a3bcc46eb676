// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::platform {

/// The names in a folder, to be asked for exactly. They lie in memory in their order: who asks for
/// them in it finds one beside the other.
class SortedNames {
public:
    SortedNames() = default;
    /// Lists a folder. Of one that cannot be read to its end it has the names that came.
    explicit SortedNames(const std::string& folder);

    /// `near` is where an answer before was found, 0 at first: for each who asks one of its own.
    bool Has(std::string_view name, std::size_t& near) const;

private:
    [[nodiscard]] std::size_t Count() const { return m_starts.size() - 1; }
    [[nodiscard]] std::string_view NameAt(std::size_t number) const {
        const std::uint32_t start = m_starts[number];
        return {m_text.data() + start, m_starts[number + 1] - start};
    }
    /// The number of the first name that is not before `name`.
    [[nodiscard]] std::size_t FirstFrom(std::string_view name) const;

    std::string m_text;                        ///< the names, one behind the other
    std::vector<std::uint32_t> m_starts = {0}; ///< of each in it, and the end of all
};

} // namespace nqp2::platform
