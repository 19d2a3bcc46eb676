// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/json_writer.h"

#include "console/json_text.h"
#include "NQP2ParserU/TextBytes.h"

#include <array>
#include <charconv>
#include <cmath>

namespace nqp2::tool {
namespace {

/// What comes before an element that has a line of its own.
constexpr std::string_view kElement = "\n    ";

void PutInQuotes(OutputText& out, const CString& text) {
    if (!out.PutIfPlain(text.View(), Commas::Plain)) {
        PutEscaped(out, BytesFromText(text));
    }
}

} // namespace

void JsonWriter::PutNext(std::string_view text) {
    m_out.Put(Separator(), text);
    m_isFollowing = true;
}

void JsonWriter::Put(std::int64_t number) {
    const fmt::format_int digits(number);
    PutNext({digits.data(), digits.size()});
}

void JsonWriter::Put(std::uint64_t number) {
    const fmt::format_int digits(number);
    PutNext({digits.data(), digits.size()});
}

void JsonWriter::Put(double number) {
    if (!std::isfinite(number)) {
        PutNext("null");
        return;
    }
    std::array<char, 32> digits{}; // more than the shortest form of any number takes
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    const std::string_view text(digits.data(), written.ptr);
    const bool looksWhole = text.find_first_of(".e") == std::string_view::npos;
    m_out.Put(Separator(), text, looksWhole ? ".0" : "");
    m_isFollowing = true;
}

void JsonWriter::Put(bool truth) {
    PutNext(truth ? "true" : "false");
}

void JsonWriter::Put(std::string_view text) {
    if (IsPlain(text)) {
        m_out.Put(Separator(), '"', text, '"');
    } else {
        PutNext("\"");
        PutEscaped(m_out, text);
        m_out.Put('"');
    }
    m_isFollowing = true;
}

void JsonWriter::Put(const CString& text) {
    m_out.Put(Separator(), '"');
    PutInQuotes(m_out, text);
    m_out.Put('"');
    m_isFollowing = true;
}

std::string_view JsonWriter::FormOf(const CString& text) {
    const std::string* const known = m_known.Find(text);
    if (known != nullptr) {
        return *known;
    }
    m_form.Clear();
    PutInQuotes(m_form, text);
    m_known.Remember(text, m_form.Text());
    return m_form.Text();
}

void JsonWriter::PutPair(const PairNames& names, const CString& first, const CString& second) {
    m_out.Put(Separator(), "{\"", names.first, "\":\"", FormOf(first), "\",\"", names.second,
              "\":\"");
    PutInQuotes(m_out, second);
    m_out.Put("\"}");
    m_isFollowing = true;
}

void JsonWriter::BeginRecord() {
    m_out.Put(Separator(), '{');
    m_isFollowing = false;
}

void JsonWriter::Name(std::string_view name) {
    m_out.Put(Separator(), '"', name, '"', ':');
    m_isFollowing = false;
}

void JsonWriter::EndRecord() {
    m_out.Put('}');
    m_isFollowing = true;
}

void JsonWriter::BeginList(ListOf /*kind*/) {
    m_out.Put(Separator(), '[');
    m_isFollowing = false;
}

void JsonWriter::EndList() {
    m_out.Put(']');
    m_isFollowing = true;
}

void JsonDocumentWriter::PutElement(std::string_view record) {
    m_out.Put(Separator(), kElement, record);
    m_isFollowing = true;
}

void JsonDocumentWriter::BeginRecord() {
    if (m_depth == 1 && m_listsLines) {
        m_out.Put(Separator(), kElement);
        m_isFollowing = false;
    }
    JsonWriter::BeginRecord();
    ++m_depth;
}

void JsonDocumentWriter::Name(std::string_view name) {
    if (m_depth > 1) {
        JsonWriter::Name(name);
        return;
    }
    m_out.Put(Separator(), "\n  \"", name, "\": ");
    m_isFollowing = false;
}

void JsonDocumentWriter::EndRecord() {
    --m_depth;
    m_out.Put(m_depth == 0 && m_isFollowing ? "\n" : "");
    JsonWriter::EndRecord();
    m_out.Put(m_depth == 0 ? "\n" : "");
}

void JsonDocumentWriter::BeginList(ListOf kind) {
    m_listsLines = m_listsLines || (m_depth == 1 && kind == ListOf::Records);
    JsonWriter::BeginList(kind);
}

void JsonDocumentWriter::EndList() {
    if (m_depth == 1 && m_listsLines) {
        m_out.Put(m_isFollowing ? "\n  " : "");
        m_listsLines = false;
    }
    JsonWriter::EndList();
}

/// On a line of its own as one of a document's list.
void JsonDocumentWriter::PutPair(const PairNames& names, const CString& first,
                                 const CString& second) {
    if (m_depth > 1) {
        JsonWriter::PutPair(names, first, second);
    } else {
        PutPairAsRecord(names, first, second);
    }
}

} // namespace nqp2::tool
