// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace nqp2::mhl {

enum class XmlFault : std::uint8_t { None, NotUtf8, Character };

/// What keeps a text out of an XML document, if anything does.
XmlFault XmlTextFault(std::string_view text);

/// Adds a text or an attribute's value, escaped so that it is read as it is: also its line breaks
/// and tabs. What XML cannot hold becomes U+FFFD.
void AppendXmlText(std::string_view text, std::string& xml);

} // namespace nqp2::mhl
