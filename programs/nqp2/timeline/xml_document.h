// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/output_text.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace nqp2::timeline {

/// An XML document in the making. Names are the program's own, texts are escaped: what XML cannot
/// hold becomes U+FFFD.
class XmlDocument {
public:
    explicit XmlDocument(tool::OutputText& out) : m_out(out) {}

    void Open(std::string_view name) { OpenWith(name, ""); }
    /// The same with attributes as they are written: ` id="clip-1"`.
    void OpenWith(std::string_view name, std::string_view attributes);
    void Close(std::string_view name);
    /// An element without content.
    void Empty(std::string_view name, std::string_view attributes = "");
    void Text(std::string_view name, std::string_view text);
    void Number(std::string_view name, std::int64_t number);
    /// "TRUE" or "FALSE".
    void Truth(std::string_view name, bool truth) { Text(name, truth ? "TRUE" : "FALSE"); }

private:
    void Indent();
    void PutEscaped(std::string_view text);

    tool::OutputText& m_out;
    std::size_t m_depth = 0;
};

} // namespace nqp2::timeline
