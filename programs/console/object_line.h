// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/json_writer.h"
#include "console/output_text.h"

#include <exception>
#include <string_view>

namespace nqp2::tool {

/// Writes a text to standard error as it is. When that cannot be written, there is no other place
/// for it.
void WriteSide(std::string_view text);

/// One object of JSON on a line of its own on standard error; written by its destructor, as a whole
/// or, for want of memory, not at all.
class ObjectLine {
public:
    ObjectLine() : m_json(m_text) { m_json.BeginRecord(); }
    ~ObjectLine();
    ObjectLine(const ObjectLine&) = delete;
    ObjectLine& operator=(const ObjectLine&) = delete;

    template <class Shown>
    void Put(std::string_view name, Shown value) {
        m_json.Name(name);
        m_json.Put(value);
    }
    void PutGiven(std::string_view name, std::string_view text) {
        if (!text.empty()) {
            Put(name, text);
        }
    }
    /// A path or name, if there is one: of bytes that are no UTF-8 also by `bytesName`.
    void PutPath(std::string_view name, std::string_view bytesName, std::string_view path);

private:
    int m_exceptions = std::uncaught_exceptions();
    OutputText m_text;
    JsonWriter m_json;
};

} // namespace nqp2::tool
