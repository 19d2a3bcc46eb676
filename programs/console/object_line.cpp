// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/object_line.h"

#include "console/utf8_text.h"

#include <cstdio>
#include <new>

namespace nqp2::tool {

void WriteSide(std::string_view text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

ObjectLine::~ObjectLine() {
    if (std::uncaught_exceptions() != m_exceptions) {
        return;
    }
    try {
        m_json.EndRecord();
        m_text.Put('\n');
        WriteSide(m_text.Text());
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): the run goes on
    }
}

void ObjectLine::PutPath(std::string_view name, std::string_view bytesName, std::string_view path) {
    PutGiven(name, path);
    PutGiven(bytesName, BytesUnlessUtf8(path));
}

} // namespace nqp2::tool
