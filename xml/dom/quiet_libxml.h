// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libxml/globals.h>
#include <libxml/threads.h>
#include <libxml/xmlerror.h>

#include <cstddef>
#include <new>

namespace nqp2::dom {

/// Keeps libxml2 from printing. What concerns a document reaches its own handlers, but encoding
/// converters and unknown XPath functions complain to the thread-wide ones, which print unless
/// they are replaced. Those that the host may have set are put back.
class QuietLibxml {
public:
    QuietLibxml()
        : m_hasState(HasThreadState()), m_structured(xmlStructuredError),
          m_structuredData(xmlStructuredErrorContext), m_generic(xmlGenericError),
          m_genericData(xmlGenericErrorContext) {
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

    /// libxml2 keeps a few words for each thread, made at its first use, and ends the process when
    /// there is no memory for them: that is found out beforehand. Throws std::bad_alloc.
    static bool HasThreadState() {
        thread_local bool hasState = false;
        if (!hasState) {
            constexpr std::size_t kMoreThanNeeded = 4 * sizeof(xmlGlobalState);
            ::operator delete(::operator new(kMoreThanNeeded));
            xmlGetGlobalState();
            hasState = true;
        }
        return hasState;
    }

    bool m_hasState; ///< comes first: what follows is in it
    xmlStructuredErrorFunc m_structured;
    void* m_structuredData;
    xmlGenericErrorFunc m_generic;
    void* m_genericData;
};

} // namespace nqp2::dom
