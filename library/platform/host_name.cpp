// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/host_name.h"

#include <climits>
#include <unistd.h>

namespace nqp2::platform {

std::string HostName() {
    char name[HOST_NAME_MAX + 1] = {};
    // A name that does not fit may come without its end.
    return gethostname(name, sizeof(name) - 1) == 0 ? name : "";
}

} // namespace nqp2::platform
