// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libxml/xmlstring.h>

#include <string>

namespace nqp2::dom {

/// The text as libxml2 takes it; valid as long as `text` is unchanged.
inline const xmlChar* Xml(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

} // namespace nqp2::dom
