// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/BStr.h"
#include "platform/CString.h"
#include "platform/Export.h"
#include "platform/FixedTypes.h"
#include "platform/Variant.h"
#include "xml/DomPointers.h"
#include "xml/MSXmlParserNode.h"

#include <functional>
#include <string_view>

/// Reads XML files and texts and answers XPath questions about them. Paths name elements as they
/// are written in the document, whatever namespace stands behind the name. One object is used on
/// one thread; a copy shares the document.
class NQP2_API CMarkupMSXML {
public:
    CMarkupMSXML();
    /// Starts with the document in `szDoc`; whether it parsed is told by GetError.
    explicit CMarkupMSXML(const wchar_t* szDoc);
    CMarkupMSXML(const CMarkupMSXML& other);
    CMarkupMSXML& operator=(const CMarkupMSXML& other);
    virtual ~CMarkupMSXML();

    /// Replaces the content by the XML text; null or "" gives a fresh empty document. Returns 1, or
    /// 0 when the text is not well-formed.
    int SetDoc(const wchar_t* szDoc);
    /// Replaces the content by the file's (an interface path or a POSIX path, letter case ignored).
    /// Returns 1, or 0 when the file cannot be read or is not well-formed.
    int Load(const wchar_t* szFileName);
    /// Replaces the content by a file's bytes that the caller has read; the encoding is told by the
    /// byte-order mark or declaration. Returns 1, or 0 when they are not well-formed.
    int LoadBytes(std::string_view bytes);
    /// The same as Load: the argument is a file name. SetDoc takes text; kept: hosts rely on it.
    int LoadXml(const wchar_t* sz);
    /// Writes the document. Returns 1, or 0 with the old file untouched.
    int Save(const wchar_t* szFileName);
    /// One sentence on the last load that failed; a successful load does not clear it.
    CString GetError();

    /// Moves the cursor back before the first element of a level.
    void ResetChildPos();
    void ResetMainPos();
    void ResetPos();

    /// The text of the first node that `xpath` selects, all descendant text included; "" when there
    /// is none, which is written to the debugger output unless `bIgnoreMissing` is nonzero.
    CString GetNodeText(CString xpath, int bIgnoreMissing);
    /// The attribute with that local name of the first node that `xpath` selects; "" when either is
    /// missing. Asked for "", it gives the default namespace that the node declares.
    CString GetNodeAttribute(CString xpath, CString attribute);
    /// Handles on what `xpath` selects; empty when nothing is selected. Throw _com_error for a path
    /// that cannot be evaluated.
    CMSXmlParserNode GetNode(_bstr_t xpath);
    CMSXmlParserNode GetNodeList(_bstr_t xpath);
    /// Among the elements that `xpath` selects, the first whose child NAME has exactly that text.
    CMSXmlParserNode FindParamNode(_bstr_t xpath, CString name);

    /// Copies between the text forms.
    static _bstr_t ToBSTR(const wchar_t* text);
    static CString FromBSTR(const _bstr_t& text);
    static _variant_t ToVARIANT(const wchar_t* text);
    /// The text of a text variant; "" for every other type, numbers included.
    static CString FromVARIANT(const _variant_t& value);

    /// The document; null only when none could be created.
    [[nodiscard]] const IXMLDOMDocumentPtr& GetDoc() const { return m_pDoc; }

protected:
    HRESULT x_CreateInstance();
    int x_ParseError();
    /// Lets go of the old content, runs one load and sets cursor and error text; 1 or 0.
    int x_Replace(const std::function<bool(nqp2::dom::Document&)>& load);
    int GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing);

    /// Base64 (RFC 4648, lines of 76 characters). Text is converted one character to one byte
    /// (ISO 8859-1; "?" for what it lacks).
    CString TBase64Encode(unsigned char* data, int length);
    CString TBase64Encode(CString& text);
    /// Decodes into a new buffer that the caller releases with delete[]; returns the byte count.
    /// Characters that are not of the alphabet are skipped.
    int TBase64Decode(const CString& text, unsigned char** out);
    /// The decoded bytes up to the first zero, as text.
    CString TBase64Decode(CString& text);

    IXMLDOMDocumentPtr m_pDoc;
    IXMLDOMNodePtr m_pParentPos;
    IXMLDOMNodePtr m_pMainPos;
    IXMLDOMNodePtr m_pChildPos;
    CString m_strError;
    CString m_strDefaultNamespace;
};
