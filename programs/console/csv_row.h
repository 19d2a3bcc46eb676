// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/json_writer.h"
#include "console/output_text.h"
#include "console/value_sink.h"

#include <optional>
#include <string_view>

namespace nqp2::tool {

/// Adds a text as one cell of comma-separated values.
void PutCell(OutputText& out, std::string_view text);

/// Writes a record as a row of comma-separated values. Records in it are taken apart, as are lists
/// of texts; any other list is one cell, in JSON.
class CsvRow final : public ValueSink {
public:
    explicit CsvRow(OutputText& out) : m_out(out) {}

    void Put(std::int64_t number) override;
    void Put(std::uint64_t number) override;
    void Put(double number) override;
    void Put(bool truth) override;
    void Put(std::string_view text) override;
    void Put(const CString& text) override;
    void BeginRecord() override;
    void Name(std::string_view name) override;
    void EndRecord() override;
    void BeginList(ListOf kind) override;
    void EndList() override;

private:
    template <class Leaf>
    void PutLeaf(const Leaf& leaf);
    void Separate();

    OutputText& m_out;
    bool m_isFollowing = false;
    int m_depth = 0;                  ///< records around what comes
    int m_lists = 0;                  ///< lists around it that are written
    OutputText m_list;                ///< as one cell,
    std::optional<JsonWriter> m_json; ///< by this
};

} // namespace nqp2::tool
