// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/document_creation.h"

#include "platform/guard.h"
#include "xml/dom/document.h"

#include <memory>
#include <new>
#include <utility>

namespace nqp2::xml {
namespace {

HRESULT CreateDocument(IXMLDOMDocumentPtr& document) {
    try {
        document = std::make_shared<dom::Document>(dom::SelectionRule::Names::Qualified);
        return S_OK;
    } catch (const std::bad_alloc&) {
        ++platform::timesOutOfMemory;
        return E_OUTOFMEMORY;
    }
}

DocumentCreator& Creator() {
    static DocumentCreator creator = CreateDocument;
    return creator;
}

} // namespace

HRESULT CreateReaderDocument(IXMLDOMDocumentPtr& document) {
    return Creator()(document);
}

ScopedDocumentCreator::ScopedDocumentCreator(DocumentCreator creator)
    : m_previous(std::exchange(Creator(), std::move(creator))) {}

ScopedDocumentCreator::~ScopedDocumentCreator() {
    Creator() = std::move(m_previous);
}

} // namespace nqp2::xml
