// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/read_pace.h"

#include <sys/resource.h>

namespace nqp2::platform {

std::int64_t WaitsOfThread() {
    struct rusage use = {};
    return getrusage(RUSAGE_THREAD, &use) == 0 ? use.ru_nvcsw : 0;
}

} // namespace nqp2::platform
