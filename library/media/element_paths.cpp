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

std::string InEditContent(std::string_view below) {
    return std::string(kEditContentPath).append("/").append(below);
}

std::string FullPath(EditPath path) {
    return InEditContent(kEditPaths[static_cast<std::size_t>(path)]);
}

} // namespace nqp2::media
