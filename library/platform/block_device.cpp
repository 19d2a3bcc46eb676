// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/block_device.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace nqp2::platform {

bool IsDisk(std::string_view device) {
    constexpr std::string_view kOthers[] = {"ram", "zram", "nbd", "loop"};
    const std::size_t end = device.find_last_not_of("0123456789") + 1;
    return !device.empty() &&
           std::find(std::begin(kOthers), std::end(kOthers), device.substr(0, end)) ==
               std::end(kOthers);
}

} // namespace nqp2::platform
