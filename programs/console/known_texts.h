// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// Remembers texts that come again and again, as the same text in memory, in the form in which they
/// are put. Of bounded size.
class KnownTexts {
public:
    /// Null for one that is not remembered.
    [[nodiscard]] const std::string* Find(const CString& text) const {
        const Slot& slot = m_slots[SlotOf(text)];
        return slot.text.GetString() == text.GetString() ? &slot.form : nullptr;
    }
    /// In the place of another, unless its form is long.
    void Remember(const CString& text, std::string_view form) {
        if (form.size() <= kLongest) {
            m_slots[SlotOf(text)] = {text, std::string(form)};
        }
    }

private:
    static constexpr std::size_t kSlots = 512;
    static constexpr std::size_t kLongest = 512;
    struct Slot {
        CString text; ///< held, so that no other comes to be in its memory
        std::string form;
    };
    static std::size_t SlotOf(const CString& text) {
        const auto place = reinterpret_cast<std::uintptr_t>(text.GetString());
        return (place / 16 ^ place / (16 * kSlots)) % kSlots;
    }

    std::array<Slot, kSlots> m_slots;
};

} // namespace nqp2::tool
