// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libxml/globals.h>
#include <libxml/threads.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlstring.h>

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>

/// How this room uses libxml2: its texts, a walk over its elements, and a guard for each use.
namespace nqp2::dom {

/// The text as libxml2 takes it; valid as long as `text` is unchanged.
inline const xmlChar* Xml(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

/// Text of libxml2's; null counts as empty.
inline std::string_view View(const xmlChar* text) {
    return text != nullptr ? std::string_view(reinterpret_cast<const char*>(text))
                           : std::string_view();
}

inline std::string_view View(const xmlChar* begin, const xmlChar* end) {
    return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin)};
}

/// The value of an attribute without prefix; "" when it is missing.
inline std::string Attribute(const xmlNode& node, const char* name) {
    xmlChar* const value = xmlGetNoNsProp(&node, BAD_CAST name);
    std::string text(View(value));
    xmlFree(value);
    return text;
}

/// Visits an element and all below it in document order, with its depth, until `visit` returns
/// false; returns whether it never did. No recursion, so that no document is too deep.
template <class Visit>
bool EveryElement(const xmlNode& top, Visit visit) {
    int depth = 0;
    for (const xmlNode* node = &top;; node = node->next) {
        while (node->type == XML_ELEMENT_NODE) {
            if (!visit(*node, depth)) {
                return false;
            }
            if (node->children == nullptr) {
                break;
            }
            node = node->children;
            ++depth;
        }
        while (node != &top && node->next == nullptr) {
            node = node->parent;
            --depth;
        }
        if (node == &top) {
            return true;
        }
    }
}

/// Keeps libxml2 from printing. What concerns a document reaches its own handlers, but encoding
/// converters and unknown XPath functions complain to the thread-wide ones, which print unless
/// they are replaced. Those that the host may have set are put back.
class QuietLibxml {
public:
    QuietLibxml()
        : m_hasState(HasThreadState()), m_structured(xmlStructuredError),
          m_structuredData(xmlStructuredErrorContext), m_generic(xmlGenericError),
          m_genericData(xmlGenericErrorContext) {
        xmlSetStructuredErrorFunc(this, NoteError);
        xmlSetGenericErrorFunc(nullptr, IgnoreText);
    }
    ~QuietLibxml() {
        xmlSetGenericErrorFunc(m_genericData, m_generic);
        xmlSetStructuredErrorFunc(m_structuredData, m_structured);
    }
    QuietLibxml(const QuietLibxml&) = delete;
    QuietLibxml& operator=(const QuietLibxml&) = delete;

    /// Evaluating paths and validating are no places to run out of memory: libxml2 does not check
    /// all that it asks for. So a stock of small blocks is made and given back first, for its use.
    /// Throws std::bad_alloc.
    static void RequireStock() {
        constexpr std::size_t kBlock = 512;
        constexpr std::size_t kBlocks = 128;
        std::array<std::unique_ptr<std::byte[]>, kBlocks> stock;
        for (std::unique_ptr<std::byte[]>& each : stock) {
            each.reset(new std::byte[kBlock]);
        }
    }

    /// Whether libxml2 lacked memory meanwhile: what it gave then may be anything.
    [[nodiscard]] bool IsOutOfMemory() const { return m_isOutOfMemory; }
    /// An error handler for a context of its own; takes the object as its data.
    static void NoteError(void* quiet, xmlErrorPtr error) {
        auto& self = *static_cast<QuietLibxml*>(quiet);
        self.m_isOutOfMemory = self.m_isOutOfMemory || error->code == XML_ERR_NO_MEMORY;
    }

private:
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
    bool m_isOutOfMemory = false;
    xmlStructuredErrorFunc m_structured;
    void* m_structuredData;
    xmlGenericErrorFunc m_generic;
    void* m_genericData;
};

} // namespace nqp2::dom
