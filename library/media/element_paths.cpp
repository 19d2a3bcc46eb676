// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/element_paths.h"

#include "platform/unicode.h"

namespace nqp2::media {

std::string FullPath(ClipPath path) {
    return std::string(kClipContentPath).append("/").append(Below(path));
}

CString FullPathText(ClipPath path) {
    return platform::TextFromUtf8(FullPath(path));
}

} // namespace nqp2::media
