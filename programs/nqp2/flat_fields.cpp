// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/flat_fields.h"

#include "console/console.h"
#include "console/csv_row.h"
#include "console/table.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::tool {
namespace {

/// How deep lists are taken apart.
enum class Flatten {
    Everything,   ///< "Memos.0.Text"; as many fields as there are elements
    ListsOfTexts, ///< any other list is one field: every record gives the same names
};

/// Hands out the leaves of a record with their dotted names: "Proxy.ProxyExt", "AudioPath.0". That
/// of a list that is one field is in JSON.
class LeafSink final : public ValueSink {
public:
    LeafSink(Flatten depth, TakeNamedText take) : m_depth(depth), m_take(std::move(take)) {}

    void Put(std::int64_t number) override { PutNext(number); }
    void Put(std::uint64_t number) override { PutNext(number); }
    void Put(double number) override { PutNext(number); }
    void Put(bool truth) override { PutNext(truth); }
    void Put(std::string_view text) override { PutNext(text); }
    void Put(const CString& text) override { PutNext(text); }
    void BeginRecord() override {
        if (m_json) {
            m_json->BeginRecord();
        } else {
            Begin(false);
        }
    }
    void Name(std::string_view name) override {
        if (m_json) {
            m_json->Name(name);
        } else {
            Step(name);
        }
    }
    void EndRecord() override {
        if (m_json) {
            m_json->EndRecord();
        } else {
            m_levels.pop_back();
        }
    }
    void BeginList(ListOf kind) override {
        if (!m_json && (m_depth == Flatten::Everything || kind == ListOf::Texts)) {
            Begin(true);
            return;
        }
        if (!m_json) {
            StepToElement();
            m_json.emplace(m_list);
        }
        m_json->BeginList(kind);
        ++m_lists;
    }
    void EndList() override {
        if (!m_json) {
            m_levels.pop_back();
            return;
        }
        m_json->EndList();
        if (--m_lists == 0) {
            m_json.reset();
            m_take(m_name, std::string(m_list.Text()));
            m_list.Clear();
        }
    }

private:
    /// A record or list around what comes.
    struct Level {
        std::size_t nameLength = 0;
        bool isList = false;
        int index = 0;
    };
    void Begin(bool isList) {
        StepToElement();
        m_levels.push_back({m_name.size(), isList});
    }
    void Step(std::string_view step) {
        m_name.resize(m_levels.back().nameLength);
        m_name += m_name.empty() ? "" : ".";
        m_name += step;
    }
    void StepToElement() {
        if (!m_levels.empty() && m_levels.back().isList) {
            Step(fmt::format("{}", m_levels.back().index++));
        }
    }
    static std::string TextOf(const CString& text) { return BytesFromText(text); }
    template <class Leaf>
    static std::string TextOf(const Leaf& leaf) {
        return fmt::format("{}", leaf);
    }
    template <class Leaf>
    void PutNext(const Leaf& leaf) {
        if (m_json) {
            m_json->Put(leaf);
            return;
        }
        StepToElement();
        m_take(m_name, TextOf(leaf));
    }

    Flatten m_depth;
    TakeNamedText m_take;
    std::string m_name; ///< of what comes
    std::vector<Level> m_levels;
    int m_lists = 0;                  ///< lists around what comes that are written
    OutputText m_list;                ///< as one field,
    std::optional<JsonWriter> m_json; ///< by this
};

} // namespace

void PrintFields(Console& console, const Value& record) {
    PrintPairs(console, [&](const TakeRow& take) {
        LeafSink leaves(Flatten::Everything, [&](const std::string& name, const std::string& text) {
            take({name, text});
        });
        Put(leaves, record);
    });
}

void ForEachCell(const Value& record, const TakeNamedText& take) {
    LeafSink cells(Flatten::ListsOfTexts, take);
    Put(cells, record);
}

void PrintCsv(Console& console, const Value& fresh, const Sequence& rows) {
    OutputText out(&console);
    const char* separator = "";
    ForEachCell(fresh, [&](const std::string& name, const std::string&) {
        out.Put(separator);
        PutCell(out, name);
        separator = ",";
    });
    out.Put("\r\n");
    CsvRow row(out);
    for (std::size_t i = 0; i < rows.count; ++i) {
        rows.put(row, i);
    }
    out.Flush();
}

} // namespace nqp2::tool
