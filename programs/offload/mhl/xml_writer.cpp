// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/xml_writer.h"

#include "offload/mhl/xml_text.h"

#include <utility>

namespace nqp2::mhl {
namespace {

constexpr std::size_t kPiece = std::size_t{256} * 1024;
constexpr std::size_t kIndent = 2;

} // namespace

XmlWriter::XmlWriter(const Sink& sink)
    : m_sink(sink), m_text("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") {}

void XmlWriter::Begin(std::string_view name, XmlAttributes attributes) {
    m_text.append(m_open.size() * kIndent, ' ');
    m_text.append(1, '<').append(name);
    for (const XmlAttribute& each : attributes) {
        if (!each.value.empty()) {
            m_text.append(1, ' ').append(each.name).append("=\"");
            AppendXmlText(each.value, m_text);
            m_text += '"';
        }
    }
    m_text += '>';
}

void XmlWriter::EndLine() {
    m_text += '\n';
    if (m_text.size() >= kPiece) {
        static_cast<void>(Finish());
    }
}

void XmlWriter::Open(std::string_view name, XmlAttributes attributes) {
    Begin(name, attributes);
    m_open.push_back(name);
    EndLine();
}

void XmlWriter::Close() {
    const std::string_view name = m_open.back();
    m_open.pop_back();
    m_text.append(m_open.size() * kIndent, ' ').append("</").append(name).append(1, '>');
    EndLine();
}

void XmlWriter::Leaf(std::string_view name, std::string_view text, XmlAttributes attributes) {
    Begin(name, attributes);
    AppendXmlText(text, m_text);
    m_text.append("</").append(name).append(1, '>');
    EndLine();
}

platform::IoStatus XmlWriter::Finish() {
    if (m_status && !m_text.empty()) {
        m_status = m_sink(m_text);
    }
    m_text.clear();
    return m_status;
}

} // namespace nqp2::mhl
