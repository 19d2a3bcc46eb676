// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/WholeFile.h"

#include "platform/file_system.h"
#include "platform/guard.h"

namespace nqp2 {

std::string WriteWholeFile(const std::string& path, std::string_view content) noexcept {
    return platform::Guarded(std::string("out of memory"), [&] {
        const platform::IoStatus status = platform::Files().WriteWhole(path, content);
        return status                  ? std::string()
               : status.reason.empty() ? std::string("not written")
                                       : status.reason;
    });
}

} // namespace nqp2
