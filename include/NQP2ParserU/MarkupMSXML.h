// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/BStr.h"
#include "NQP2ParserU/ComError.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/DebugOutput.h"
#include "NQP2ParserU/DomPointers.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/FixedTypes.h"
#include "NQP2ParserU/MSXmlParserNode.h"
#include "NQP2ParserU/Variant.h"

#include <concepts>
#include <string>
#include <string_view>

/// Reads XML files and texts and answers XPath questions about them. Paths name elements as they
/// are written in the document, whatever namespace the name has. One object is used on
/// one thread; a copy shares the document. Out of memory, operations give their failure value.
///
/// The cursor: a parent position, a main position among its children and a child position among
/// the main position's children. A position that is not set is before its level's first element.
/// Moves return 1, or 0 with every position where it was.
class NQP2_API CMarkupMSXML {
public:
    /// Starts with an empty document.
    CMarkupMSXML() noexcept;
    /// Starts with the document in `szDoc`; whether it parsed is told by GetError.
    explicit CMarkupMSXML(const wchar_t* szDoc) noexcept;
    ///@{
    /// Shares the document; the copy has a cursor of its own, at the same place.
    CMarkupMSXML(const CMarkupMSXML& other) noexcept;
    CMarkupMSXML& operator=(const CMarkupMSXML& other) noexcept;
    ///@}
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
    int LoadXml(const wchar_t* sz) noexcept;
    /// Writes the document. Returns 1, or 0 with the old file untouched; so for a document that
    /// could not be loaded again, one without a root included.
    int Save(const wchar_t* szFileName);
    /// Why the last failed load did fail, in one sentence; a successful load does not clear it.
    CString GetError() noexcept;

    /// Moves the child position back before the first element of its level.
    void ResetChildPos() noexcept;
    /// Moves the main position back before the first element of its level; no child position then.
    void ResetMainPos() noexcept;
    /// Moves the cursor back before the document's root.
    void ResetPos();
    /// Moves to the next element after the main position with that qualified name; null or ""
    /// fits any.
    int FindElem(const wchar_t* name = nullptr);
    /// The same among the main position's children; without a main position it first moves to the
    /// first element.
    int FindChildElem(const wchar_t* name = nullptr);
    /// Makes the main position the parent and the child position the main one.
    int IntoElem();
    /// The way back; 0 at the top.
    int OutOfElem();

    /// Qualified name; "" for a position that is not set.
    CString GetTagName() noexcept;
    /// The same of the child position.
    CString GetChildTagName() noexcept;
    /// All text below an element; the data of any other node ("target data" for an instruction).
    CString GetData() noexcept;
    /// The same of the child position.
    CString GetChildData() noexcept;
    /// The attribute of exactly that qualified name; "" when it is missing.
    CString GetAttrib(const wchar_t* name) noexcept;
    /// The same of the child position.
    CString GetChildAttrib(const wchar_t* name) noexcept;
    /// Name of the main position's attribute at `index`, from 0, declarations included; "" beyond.
    CString GetAttribName(int index);
    /// How many elements of that name the main position's level has; null or "" counts all.
    int GetElemCount(const wchar_t* name = nullptr);

    ///@{
    /// Makes an element in the default namespace, holding `value` when it is not empty, and moves
    /// to it: behind the reference position or, for the insert forms, before it; without a
    /// reference at the end of the level, or at its start. The reference is the main position, for
    /// the child forms the child position. Returns 1, or 0 without a main position at child level
    /// and for a second document element. Numbers are written as decimal text.
    int AddElem(const wchar_t* name, const wchar_t* value = nullptr) noexcept;
    int AddElem(const wchar_t* name, int value) noexcept;
    int AddElem(const wchar_t* name, __int64 value) noexcept;
    int AddElem(const wchar_t* name, double value);
    template <std::integral Number>
    int AddElem(const wchar_t* name, Number value) noexcept {
        return AddElem(name, static_cast<const wchar_t*>(nqp2::WholeText(value)));
    }
    int InsertElem(const wchar_t* name, const wchar_t* value = nullptr) noexcept;
    int InsertElem(const wchar_t* name, int value) noexcept;
    int InsertElem(const wchar_t* name, __int64 value) noexcept;
    int InsertElem(const wchar_t* name, double value);
    template <std::integral Number>
    int InsertElem(const wchar_t* name, Number value) noexcept {
        return InsertElem(name, static_cast<const wchar_t*>(nqp2::WholeText(value)));
    }
    int AddChildElem(const wchar_t* name, const wchar_t* value = nullptr) noexcept;
    int AddChildElem(const wchar_t* name, int value) noexcept;
    int AddChildElem(const wchar_t* name, __int64 value) noexcept;
    int AddChildElem(const wchar_t* name, double value);
    template <std::integral Number>
    int AddChildElem(const wchar_t* name, Number value) noexcept {
        return AddChildElem(name, static_cast<const wchar_t*>(nqp2::WholeText(value)));
    }
    int InsertChildElem(const wchar_t* name, const wchar_t* value = nullptr) noexcept;
    int InsertChildElem(const wchar_t* name, int value) noexcept;
    int InsertChildElem(const wchar_t* name, __int64 value) noexcept;
    int InsertChildElem(const wchar_t* name, double value);
    template <std::integral Number>
    int InsertChildElem(const wchar_t* name, Number value) noexcept {
        return InsertChildElem(name, static_cast<const wchar_t*>(nqp2::WholeText(value)));
    }
    ///@}
    /// Empties the document, gives it an XML declaration and adds its root element.
    int CreateMainRoot(const wchar_t* name, const wchar_t* value = nullptr);
    ///@{
    /// Gives the attribute of the main position, or of the child position, that value, whether it
    /// is new or not: add and set are the same. Returns 1, or 0 when the position is not set or the
    /// name is empty.
    int AddAttrib(const wchar_t* name, const wchar_t* value) noexcept;
    int AddAttrib(const wchar_t* name, int value) noexcept;
    int SetAttrib(const wchar_t* name, const wchar_t* value) noexcept;
    int SetAttrib(const wchar_t* name, int value) noexcept;
    int AddChildAttrib(const wchar_t* name, const wchar_t* value) noexcept;
    int AddChildAttrib(const wchar_t* name, int value) noexcept;
    int SetChildAttrib(const wchar_t* name, const wchar_t* value) noexcept;
    int SetChildAttrib(const wchar_t* name, int value) noexcept;
    ///@}
    /// The namespace of elements that are made from now on; null for none.
    void SetDefaultNamespace(const wchar_t* ns);
    ///@{
    /// Replaces what the main or child position holds by one text, or by one CDATA section when
    /// `cdata` is nonzero. An instruction takes "target data" with its own target. Returns 1, or 0.
    int SetData(const wchar_t* value, int cdata = 0) noexcept;
    int SetData(int value, int cdata = 0) noexcept;
    int SetData(__int64 value, int cdata = 0) noexcept;
    int SetData(double value, int cdata = 0);
    template <std::integral Number>
    int SetData(Number value, int cdata = 0) noexcept {
        return SetData(static_cast<const wchar_t*>(nqp2::WholeText(value)), cdata);
    }
    int SetChildData(const wchar_t* value, int cdata = 0) noexcept;
    int SetChildData(int value, int cdata = 0) noexcept;
    int SetChildData(__int64 value, int cdata = 0) noexcept;
    int SetChildData(double value, int cdata = 0);
    template <std::integral Number>
    int SetChildData(Number value, int cdata = 0) noexcept {
        return SetChildData(static_cast<const wchar_t*>(nqp2::WholeText(value)), cdata);
    }
    ///@}
    ///@{
    /// Takes the main or child position's element out of the document. The position moves to the
    /// element before it, so that the next search finds the one that followed; before the first it
    /// is no longer set.
    int RemoveElem() noexcept;
    int RemoveChildElem() noexcept;
    ///@}

    /// Kinds of nodes; they may be combined for FindNode.
    enum NodeKind : int {
        kElementNode = 1,
        kTextNode = 2,
        kCDataNode = 4,
        kInstructionNode = 8,
        kCommentNode = 16,
        kDocumentTypeNode = 32,
        kAnyNode = 63,
    };
    /// Moves the main position to the next node of one of the kinds. Returns its kind, or 0.
    int FindNode(int kinds = kAnyNode);
    /// Kind of the main position's node, or 0.
    int GetNodeType() noexcept;
    ///@{
    /// Makes a node of one kind behind or before the main position and moves to it. `text` is an
    /// element's name, an instruction's "target data", or characters. A document type cannot be
    /// made.
    int AddNode(int kind, const wchar_t* text) noexcept;
    int InsertNode(int kind, const wchar_t* text) noexcept;
    ///@}
    /// Takes the main position's node out, whatever its kind; see RemoveElem.
    int RemoveNode() noexcept;

    ///@{
    /// Adds the root element of an XML text beside or below the main position, as AddElem and its
    /// kin place an element. Returns 0 when the text is not well-formed (GetError tells why).
    int AddSubDoc(const wchar_t* xml) noexcept;
    int InsertSubDoc(const wchar_t* xml) noexcept;
    int AddChildSubDoc(const wchar_t* xml) noexcept;
    int InsertChildSubDoc(const wchar_t* xml) noexcept;
    ///@}
    ///@{
    /// The main or child position's element as XML text; "" when it is not set.
    CString GetSubDoc() noexcept;
    CString GetChildSubDoc() noexcept;
    ///@}
    /// The document as XML text.
    CString GetDoc();
    /// The main position; null before the first element.
    [[nodiscard]] const IXMLDOMNodePtr& GetMainPosPtr() const noexcept { return m_pMainPos; }
    /// Makes a node of this document the main position. Returns 0 for null and for a node that
    /// is in no document.
    int SetMainPosPtr(const IXMLDOMNodePtr& node);

    /// The text of the first node that `xpath` selects, all descendant text included; "" when there
    /// is none, which is written to the debugger output unless `bIgnoreMissing` is nonzero.
    CString GetNodeText(CString xpath, int bIgnoreMissing);
    /// The attribute with that local name of the first node that `xpath` selects; "" when either is
    /// missing. Asked for "", it gives the default namespace that the node declares.
    CString GetNodeAttribute(CString xpath, CString attribute);
    ///@{
    /// A handle on what `xpath` selects; empty when nothing is selected. Throws _com_error for a
    /// path that cannot be evaluated.
    CMSXmlParserNode GetNode(_bstr_t xpath);
    CMSXmlParserNode GetNodeList(_bstr_t xpath);
    ///@}
    /// Among the elements that `xpath` selects, the first whose child NAME has exactly that text.
    CMSXmlParserNode FindParamNode(_bstr_t xpath, CString name);

    ///@{
    /// A copy of the text in another form.
    static _bstr_t ToBSTR(const wchar_t* text);
    static CString FromBSTR(const _bstr_t& text) noexcept;
    static _variant_t ToVARIANT(const wchar_t* text);
    ///@}
    /// The text of a text variant; "" for every other type, numbers included.
    static CString FromVARIANT(const _variant_t& value) noexcept;

    /// The document; null only when none could be created.
    [[nodiscard]] const IXMLDOMDocumentPtr& GetDocumentPtr() const noexcept { return m_pDoc; }

protected:
    /// Starts an empty document. What fails is also shown in a message box.
    HRESULT x_CreateInstance();
    /// Load for a path that was looked for already: a POSIX path in the file's real spelling.
    int x_LoadFile(const std::string& path) noexcept;
    /// Takes over the parser's reason as the text of GetError. Returns 0.
    int x_ParseError();
    /// Reads the text of the first node that `xpath` selects. Returns 1, also for a missing node
    /// that may be missing (`val` is then empty); else 0, which the debugger output explains.
    int GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing);

    ///@{
    /// Base64 (RFC 4648, lines of 76 characters). Text is converted one character to one byte
    /// (ISO 8859-1; "?" for what it lacks).
    CString TBase64Encode(unsigned char* data, int length);
    CString TBase64Encode(CString& text);
    ///@}
    /// Decodes into a new buffer that the caller releases with delete[]; returns the byte count.
    /// Characters that are not of the alphabet are skipped.
    int TBase64Decode(const CString& text, unsigned char** out);
    /// The decoded bytes up to the first zero, as text.
    CString TBase64Decode(CString& text);

    IXMLDOMDocumentPtr m_pDoc;     ///< shared with copies of this object
    IXMLDOMNodePtr m_pParentPos;   ///< the document itself at the top
    IXMLDOMNodePtr m_pMainPos;     ///< null before the level's first element
    IXMLDOMNodePtr m_pChildPos;    ///< null before the level's first element
    CString m_strError;            ///< see GetError
    CString m_strDefaultNamespace; ///< see SetDefaultNamespace

private:
    enum class x_Level { Main, Child };
    enum class x_Place { After, Before };

    /// Lets go of the old content, runs one load and sets cursor and error text; 1 or 0.
    template <class Operation>
    int x_Replace(const Operation& load);

    IXMLDOMNodePtr x_FindElem(const IXMLDOMNodePtr& parent, const IXMLDOMNodePtr& after,
                              const wchar_t* name) const;
    int x_AddElem(x_Level level, x_Place place, const wchar_t* name, const wchar_t* value) noexcept;
    int x_AddSubDoc(x_Level level, x_Place place, const wchar_t* xml) noexcept;
    int x_PlaceNode(x_Level level, x_Place place, IXMLDOMNodePtr node);
    int x_AddNode(x_Place place, int kind, const wchar_t* text) noexcept;
    int x_SetAttrib(const IXMLDOMNodePtr& element, const wchar_t* name,
                    const wchar_t* value) noexcept;
    int x_SetData(const IXMLDOMNodePtr& node, const wchar_t* value, int cdata) noexcept;
    int x_RemoveMain(bool elementsOnly) noexcept;
    int x_Remove(IXMLDOMNodePtr& position, bool elementsOnly) noexcept;
};
