// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/BStr.h"
#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/ComError.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/DomPointers.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/FixedTypes.h"
#include "NQP2ParserU/NQXmlParserNode.h"
#include "NQP2ParserU/Variant.h"

#include <cstdint>

/// Builds XML documents: P2 metadata (root P2Main) and render parameters (root EPRINFO). Elements
/// are appended under a cursor; ten of its parents are remembered. Documents that it loads are
/// queried by XPath 1.0 with bound prefixes ("//P2Main:P2Main"). One object is used on one thread.
/// Operations return 1, or 0 for any fault; most return 0 until the object has a document.
class NQP2_API CNQXmlParser {
public:
    /// Starts without a document.
    CNQXmlParser() noexcept;
    ///@{
    /// Shares document and builder's cursor; the remembered parents are copied.
    CNQXmlParser(const CNQXmlParser& other) noexcept;
    CNQXmlParser& operator=(const CNQXmlParser& other) noexcept;
    ///@}
    virtual ~CNQXmlParser();

    /// Starts a document: P2Main with a declaration and the namespace of edit lists, or of clips of
    /// that code type. Where a code type has none, the namespace of the document before stays in
    /// use for children. The cursor is on the new root, here and in the next two; the remembered
    /// parents stay: balance them or use a fresh object.
    int CreateP2MainRoot(eCodeType codeType, int bEditList);
    /// Starts a document: EPRINFO with a child EPRTYPE that holds `eprType`; empty, and the result
    /// 0, for a text that XML cannot hold.
    int CreateEPRRoot(CString eprType);
    /// A root without declaration or namespace, in place of the present one.
    int CreateRoot(CString name);

    /// Appends an element and moves onto it. The attribute is written when both its texts are
    /// not empty. Beyond ten levels the way back is lost.
    int AddChildElement(CString name, CString attrName, CString attrValue);
    /// Appends an element that holds a text. The cursor stays.
    int AddChildTextNode(CString name, _variant_t value, CString attrName, CString attrValue);
    /// Moves back to the last remembered parent; 0 when there is none.
    int BackToParent() noexcept;
    /// Appends a parameter block: PARAM with NAME and VALUE. The cursor stays.
    int AddParam(CString name, _variant_t value);
    /// Appends a copy of the root element of an XML text. The cursor stays.
    int AddXmlFragment(_bstr_t xml);

    /// Loads a file and binds its namespaces; the default one gets the prefix P2Main.
    int LoadXml(CString path);
    /// Loads a text and moves onto its root. When "render.xsd" can be read in the current folder,
    /// in any letter case, the document must fit it. Of one that does not the result is 0: it is
    /// loaded, but the cursor stays. A schema is refused, and every document with it, when it is no
    /// XML Schema without namespace, is larger than 256 KiB, reaches for other files (by include,
    /// import or redefine) or would take too long to compile.
    int SetXml(_bstr_t xml);
    /// Binds the root's declarations for queries; the default namespace under "xmlns" +
    /// `prefixSuffix`. Throws _com_error without a document or root, and when it is out of memory.
    void ReadRoot(_bstr_t prefixSuffix);
    /// Binds prefixes for queries, from declarations separated by blanks. Returns S_OK, or E_FAIL
    /// with every binding gone. Throws _com_error without a document.
    std::int32_t SetSelectNamespace(_bstr_t decl);
    /// See CMarkupMSXML::Save.
    int SaveXml(CString path);
    /// The document as XML text.
    _bstr_t GetXml();
    /// The document, shared with this object; null until there is one.
    IXMLDOMDocumentPtr GetDocumentPtr() noexcept;

    ///@{
    /// Queries as CMarkupMSXML has them, without debugger output; empty without a document. Those
    /// for handles throw _com_error for a path that cannot be evaluated.
    _variant_t GetNodeVal(CString xpath, int bIgnoreMissing);
    CString GetNodeText(CString xpath, int bIgnoreMissing);
    CString GetNodeAttribute(CString xpath, CString attribute);
    CNQXmlParserNode GetNode(_bstr_t xpath);
    CNQXmlParserNode GetNodeList(_bstr_t xpath);
    CNQXmlParserNode FindParamNode(_bstr_t xpath, CString name);
    ///@}

protected:
    /// As NodeHandle's, from the document's root.
    int GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing);

private:
    /// Remembers ten parents and not one more: kept, hosts rely on the limit.
    struct ParentStack {
        static constexpr std::int32_t kCapacity = 10;
        std::int32_t count = 0;
        IXMLDOMNodePtr nodes[kCapacity];

        bool Push(const IXMLDOMNodePtr& node) noexcept;
        bool Pop(IXMLDOMNodePtr& node) noexcept;
    };

    void EnsureDocument();
    void StartDocument(const char* declaration, const char* rootName);
    void ReplaceRoot(const CString& name);
    /// Stands alone; the caller links it when nothing more can fail.
    nqp2::dom::Node& MakeElement(const CString& name, const CString& attrName,
                                 const CString& attrValue);
    void RequireRenderSchema();
    void BindRoot(const CString& prefixSuffix);
    std::int32_t BindPrefixes(const CString& declarations);

    CString m_strNamespaceURI;
    IXMLDOMNodePtr m_pCurrentNode;
    std::int32_t m_bReady = 0;
    IXMLDOMDocumentPtr m_pDoc;
    ParentStack m_parentStack;
    IXMLDOMNodeListPtr m_pRootAttributes;
};
