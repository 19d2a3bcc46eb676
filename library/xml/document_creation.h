// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/DomPointers.h"
#include "NQP2ParserU/FixedTypes.h"

#include <functional>

namespace nqp2::xml {

/// Makes the document object behind a reader. Returns a failure status, with `document` null,
/// when there is none to be had.
using DocumentCreator = std::function<HRESULT(IXMLDOMDocumentPtr& document)>;

HRESULT CreateReaderDocument(IXMLDOMDocumentPtr& document);

/// Puts another creator in its place for its own lifetime; for tests of what happens without one.
class ScopedDocumentCreator {
public:
    explicit ScopedDocumentCreator(DocumentCreator creator);
    ~ScopedDocumentCreator();
    ScopedDocumentCreator(const ScopedDocumentCreator&) = delete;
    ScopedDocumentCreator& operator=(const ScopedDocumentCreator&) = delete;

private:
    DocumentCreator m_previous;
};

} // namespace nqp2::xml
