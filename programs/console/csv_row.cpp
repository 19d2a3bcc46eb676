// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/csv_row.h"

#include "console/display_text.h"
#include "NQP2ParserU/TextBytes.h"

#include <string>

namespace nqp2::tool {
namespace {

void PutOne(OutputText& out, double number) {
    out.Put(fmt::format("{}", number));
}
void PutOne(OutputText& out, bool truth) {
    out.Put(truth ? "true" : "false");
}
void PutOne(OutputText& out, std::string_view text) {
    PutCell(out, text);
}
void PutOne(OutputText& out, const CString& text) {
    if (!out.PutIfPlain(text.View(), Commas::Quoted)) {
        PutCell(out, BytesFromText(text));
    }
}
template <std::integral Number>
void PutOne(OutputText& out, Number number) {
    out.PutNumber(number);
}

} // namespace

/// A list of many events is one long cell: no copy is made only to double its quotes.
void PutCell(OutputText& out, std::string_view text) {
    if (IsPlain(text)) {
        out.Put(text);
        return;
    }
    const std::string shown = Printable(text, LineBreaks::Keep);
    if (shown.find_first_of(",\"\n") == std::string::npos) {
        out.Put(shown);
        return;
    }
    out.Put('"');
    std::string_view left = shown;
    for (std::size_t quote = left.find('"'); quote != std::string_view::npos;
         quote = left.find('"')) {
        out.Put(left.substr(0, quote + 1), '"');
        left.remove_prefix(quote + 1);
    }
    out.Put(left, '"');
}

void CsvRow::Separate() {
    m_out.Put(OutputText::Comma{m_isFollowing});
    m_isFollowing = true;
}

template <class Leaf>
void CsvRow::PutLeaf(const Leaf& leaf) {
    if (m_json) {
        m_json->Put(leaf);
        return;
    }
    Separate();
    PutOne(m_out, leaf);
}

void CsvRow::Put(std::int64_t number) {
    PutLeaf(number);
}
void CsvRow::Put(std::uint64_t number) {
    PutLeaf(number);
}
void CsvRow::Put(double number) {
    PutLeaf(number);
}
void CsvRow::Put(bool truth) {
    PutLeaf(truth);
}
void CsvRow::Put(std::string_view text) {
    PutLeaf(text);
}
void CsvRow::Put(const CString& text) {
    PutLeaf(text);
}

void CsvRow::BeginRecord() {
    if (m_json) {
        m_json->BeginRecord();
    }
    ++m_depth;
}

void CsvRow::Name(std::string_view name) {
    if (m_json) {
        m_json->Name(name);
    }
}

void CsvRow::EndRecord() {
    --m_depth;
    if (m_json) {
        m_json->EndRecord();
    } else if (m_depth == 0) {
        m_out.Put("\r\n");
        m_isFollowing = false;
    }
}

void CsvRow::BeginList(ListOf kind) {
    if (!m_json && kind == ListOf::Texts) {
        return;
    }
    if (!m_json) {
        m_json.emplace(m_list);
    }
    m_json->BeginList(kind);
    ++m_lists;
}

void CsvRow::EndList() {
    if (!m_json) {
        return;
    }
    m_json->EndList();
    if (--m_lists == 0) {
        m_json.reset();
        Separate();
        PutCell(m_out, m_list.Text());
        m_list.Clear();
    }
}

} // namespace nqp2::tool
