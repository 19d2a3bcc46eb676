// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/NQXmlParser.h"
#include "NQP2ParserU/Variant.h"

#include <cstdint>

namespace nqp2::xml {

/// Builds a document from its front to its end. Remembers whether any step failed, so that the code
/// which writes a document reads as the document.
class MetadataWriter {
public:
    /// Starts with the root of card metadata, see CNQXmlParser::CreateP2MainRoot.
    MetadataWriter(eCodeType codeType, int isEditList)
        : m_sound(m_builder.CreateP2MainRoot(codeType, isEditList) != 0) {}

    /// An element that holds what follows, up to its Close.
    void Open(const wchar_t* name, const wchar_t* attribute = L"", const wchar_t* value = L"") {
        Require(m_sound && m_builder.AddChildElement(name, attribute, value) != 0);
    }
    void Close() { Require(m_sound && m_builder.BackToParent() != 0); }
    void Text(const wchar_t* name, const CString& value, const wchar_t* attribute = L"",
              const wchar_t* attributeValue = L"") {
        Require(m_sound && m_builder.AddChildTextNode(name, value, attribute, attributeValue) != 0);
    }
    void Number(const wchar_t* name, std::int64_t value) {
        Text(name, static_cast<const wchar_t*>(WholeText(value)));
    }
    /// A step of the caller's own.
    void Require(bool done) { m_sound = m_sound && done; }

    /// Whether all steps were done.
    [[nodiscard]] bool IsSound() const { return m_sound; }
    [[nodiscard]] CNQXmlParser& Builder() { return m_builder; }

private:
    CNQXmlParser m_builder;
    bool m_sound;
};

} // namespace nqp2::xml
