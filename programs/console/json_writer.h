// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/known_texts.h"
#include "console/output_text.h"
#include "console/value_sink.h"

namespace nqp2::tool {

/// Writes what comes as JSON in UTF-8, on one line.
class JsonWriter : public ValueSink {
public:
    explicit JsonWriter(OutputText& out) : m_out(out) {}

    /// What comes next follows nothing.
    void BeginAnew() { m_isFollowing = false; }

    void Put(std::int64_t number) override;
    void Put(std::uint64_t number) override;
    void Put(double number) override;
    void Put(bool truth) override;
    /// Bytes that are no UTF-8 become U+FFFD; control characters are escaped.
    void Put(std::string_view text) override;
    void Put(const CString& text) override;
    void BeginRecord() override;
    void Name(std::string_view name) override;
    void EndRecord() override;
    void BeginList(ListOf kind) override;
    void EndList() override;
    void PutPair(const PairNames& names, const CString& first, const CString& second) override;

protected:
    [[nodiscard]] OutputText::Comma Separator() const { return {m_isFollowing}; }
    /// Puts a text as the next value.
    void PutNext(std::string_view text);

    OutputText& m_out;
    bool m_isFollowing = false; ///< something stands before the next value of the list or record

private:
    std::string_view FormOf(const CString& text);

    KnownTexts m_known; ///< as they stand between quotes
    OutputText m_form;
};

/// The same of one document, a record: each member has a line of its own, and each element of a
/// member that is a list of records.
class JsonDocumentWriter final : public JsonWriter {
public:
    using JsonWriter::JsonWriter;

    /// Puts a record that another writer has written as an element of a member's list.
    void PutElement(std::string_view record);

    void BeginRecord() override;
    void Name(std::string_view name) override;
    void EndRecord() override;
    void BeginList(ListOf kind) override;
    void EndList() override;
    void PutPair(const PairNames& names, const CString& first, const CString& second) override;

private:
    int m_depth = 0;
    bool m_listsLines = false; ///< a member's elements are being written
};

} // namespace nqp2::tool
