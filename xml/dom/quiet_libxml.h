// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libxml/globals.h>
#include <libxml/xmlerror.h>

namespace nqp2::dom {

/// Keeps libxml2 from printing. What concerns a document reaches its own handlers, but encoding
/// converters and unknown XPath functions complain to the thread-wide ones, which print unless
/// they are replaced. Those that the host may have set are put back.
class QuietLibxml {
public:
    QuietLibxml()
        : m_structured(xmlStructuredError), m_structuredData(xmlStructuredErrorContext),
          m_generic(xmlGenericError), m_genericData(xmlGenericErrorContext) {
        xmlSetStructuredErrorFunc(nullptr, IgnoreError);
        xmlSetGenericErrorFunc(nullptr, IgnoreText);
    }
    ~QuietLibxml() {
        xmlSetGenericErrorFunc(m_genericData, m_generic);
        xmlSetStructuredErrorFunc(m_structuredData, m_structured);
    }
    QuietLibxml(const QuietLibxml&) = delete;
    QuietLibxml& operator=(const QuietLibxml&) = delete;

private:
    static void IgnoreError(void* /*data*/, xmlErrorPtr /*error*/) {}
    static void IgnoreText(void* /*data*/, const char* /*text*/, ...) {}

    xmlStructuredErrorFunc m_structured;
    void* m_structuredData;
    xmlGenericErrorFunc m_generic;
    void* m_genericData;
};

} // namespace nqp2::dom
