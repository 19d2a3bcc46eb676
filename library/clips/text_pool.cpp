// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/text_pool.h"

#include "platform/unicode.h"

#include <functional>

namespace nqp2::clips {

CString TextPool::TextOf(std::string_view utf8) {
    if (utf8.empty() || utf8.size() > kLongestShared) {
        return platform::TextFromUtf8(utf8);
    }
    Slot& slot = m_slots[std::hash<std::string_view>{}(utf8) % kSlots];
    if (slot.bytes != utf8) {
        slot.text = platform::TextFromUtf8(utf8);
        slot.bytes = utf8;
    }
    return slot.text;
}

} // namespace nqp2::clips
