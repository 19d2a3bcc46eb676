// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/metadata_writer.h"

namespace nqp2::xml {

void MetadataWriter::Open(const wchar_t* name, const wchar_t* attribute, const wchar_t* value) {
    Require(m_sound && m_builder.AddChildElement(name, attribute, value) != 0);
}

void MetadataWriter::Close() {
    Require(m_sound && m_builder.BackToParent() != 0);
}

void MetadataWriter::Text(const wchar_t* name, const CString& value, const wchar_t* attribute,
                          const wchar_t* attributeValue) {
    Require(m_sound && m_builder.AddChildTextNode(name, value, attribute, attributeValue) != 0);
}

void MetadataWriter::Number(const wchar_t* name, std::int64_t value) {
    CString text;
    text.Format(L"%d", value);
    Text(name, text);
}

} // namespace nqp2::xml
